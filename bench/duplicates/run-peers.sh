#!/usr/bin/env bash
# Times `velloru duplicates` beside jdupes, rdfind and fdupes on the same trees, warm page cache, at the
# same minimum sizes, and prints wall time and peak memory (medians of RUNS runs) side by side.
# Ours is timed twice: with an empty hash cache ("first run") and again over unchanged files ("second
# run"), which must read no sample bytes.
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

# Prints "SECONDS KILOBYTES" for one run of the command.
measure() {
    /usr/bin/time -f '%e %M' -o "$work/time" "$@" > "$work/out" 2> /dev/null || true
    cat "$work/time"
}

# Median wall time and median peak memory of RUNS runs; $1 is run before each run.
median_of_runs() {
    local before=$1
    shift
    for ((i = 0; i < runs; i++)); do
        eval "$before"
        measure "$@"
    done > "$work/runs"
    local seconds kilobytes
    seconds=$(cut -d' ' -f1 "$work/runs" | sort -n | sed -n "$(((runs + 1) / 2))p")
    kilobytes=$(cut -d' ' -f2 "$work/runs" | sort -n | sed -n "$(((runs + 1) / 2))p")
    printf '%.2f s %5.1f MiB' "$seconds" "$(awk -v k="$kilobytes" 'BEGIN {print k / 1024}')"
}

printf '%-28s %-6s %-22s %-22s %-22s %-22s %-22s\n' tree min velloru-first velloru-second jdupes rdfind fdupes
for tree in "$@"; do
    tree=$(realpath "$tree")
    find "$tree" -type f -exec cat {} + > /dev/null 2>&1 || true # warm the page cache
    for size in "${sizes[@]}"; do
        first=$(median_of_runs 'rm -rf "$XDG_CACHE_HOME"' "$velloru" duplicates "$tree" --min-size "$size" --json)
        second=$(median_of_runs '' "$velloru" duplicates "$tree" --min-size "$size" --json)
        sampled=$(python3 -c 'import json,sys; print(json.load(open(sys.argv[1]))["stats"]["prehashBytesRead"])' "$work/out")
        jdupes=$(median_of_runs '' jdupes -r -q -X "size+=:$size" "$tree")
        rdfind=$(median_of_runs '' rdfind -dryrun true -minsize "$size" -outputname "$work/rdfind.txt" "$tree")
        fdupes=$(median_of_runs '' fdupes -r -q -n -G "$size" "$tree")
        printf '%-28s %-6s %-22s %-22s %-22s %-22s %-22s\n' "$(basename "$tree")" "$size" "$first" "$second" "$jdupes" "$rdfind" "$fdupes"
        echo "    second run sampled $sampled bytes (0 = every sample from the hash cache)"
    done
done
