#!/usr/bin/env bash
# Times `velloru duplicates` beside jdupes, rdfind and fdupes on the same trees, warm page cache, at the
# same minimum sizes, and prints wall time and peak memory (medians of RUNS runs) side by side.
# Ours is timed twice: with an empty hash cache ("first run") and again over unchanged files ("second
# run"), which must read no sample bytes. The tools take turns, one run each per round, so a slow spell
# of the machine falls on all of them rather than on whichever was running.
#
# usage: bench/duplicates/run-peers.sh TREE… (env: RUNS=3, SIZES="4096 1", VELLORU=build/velloru)
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
repo=$(cd "$here/../.." && pwd)
velloru=${VELLORU:-$repo/build/velloru}
runs=${RUNS:-3}
read -r -a sizes <<< "${SIZES:-4096 1}"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Our hash cache goes to a folder of the benchmark's own, so the user's cache is left alone.
export XDG_CACHE_HOME=$work/cache
tools=(velloru-first velloru-second jdupes rdfind fdupes)

# Appends "SECONDS KILOBYTES" for one run of the command to the file $1.
measure() {
    local into=$1
    shift
    /usr/bin/time -f '%e %M' -o "$work/time" "$@" > "$work/out" 2> /dev/null || true
    cat "$work/time" >> "$into"
}

# "S.SS s  M.M MiB": the median wall time and the median peak memory in the file $1.
medians() {
    local seconds kilobytes
    seconds=$(cut -d' ' -f1 "$1" | sort -n | sed -n "$(((runs + 1) / 2))p")
    kilobytes=$(cut -d' ' -f2 "$1" | sort -n | sed -n "$(((runs + 1) / 2))p")
    printf '%.2f s %5.1f MiB' "$seconds" "$(awk -v k="$kilobytes" 'BEGIN {print k / 1024}')"
}

printf '%-28s %-6s' tree min
printf ' %-22s' "${tools[@]}"
printf '\n'
for tree in "$@"; do
    tree=$(realpath "$tree")
    find "$tree" -type f -exec cat {} + > /dev/null 2>&1 || true # warm the page cache
    for size in "${sizes[@]}"; do
        for tool in "${tools[@]}"; do : > "$work/$tool"; done
        for ((i = 0; i < runs; i++)); do
            rm -rf "$XDG_CACHE_HOME"
            measure "$work/velloru-first" "$velloru" duplicates "$tree" --min-size "$size" --json
            measure "$work/velloru-second" "$velloru" duplicates "$tree" --min-size "$size" --json
            sampled=$(python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["stats"]["prehashBytesRead"])' "$work/out")
            measure "$work/jdupes" jdupes -r -q -X "size+=:$size" "$tree"
            measure "$work/rdfind" rdfind -dryrun true -minsize "$size" -outputname "$work/rdfind.txt" "$tree"
            measure "$work/fdupes" fdupes -r -q -n -G "$size" "$tree"
        done
        printf '%-28s %-6s' "$(basename "$tree")" "$size"
        for tool in "${tools[@]}"; do printf ' %-22s' "$(medians "$work/$tool")"; done
        printf '\n'
        echo "    second run sampled $sampled bytes (0 = every sample from the hash cache)"
    done
done
