#!/usr/bin/env bash
# Proves our duplicate sets against the truth file of a generated tree (when there is one) and against
# jdupes on the same tree, at each minimum size, and prints any set that differs.
#
# usage: bench/duplicates/compare-sets.sh TREE [MIN_SIZE…]      (minimum sizes default to 4096 and 1)
# Needs: build/velloru (or $VELLORU), jdupes, python3, and ../shared/bench/dupcount.py (or $DUPCOUNT).
# Comparable settings: regular files only, links not followed, hard links of one file counted once (by
# inode), empty files left out, the same minimum size for every tool.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
repo=$(cd "$here/../.." && pwd)
velloru=${VELLORU:-$repo/build/velloru}
dupcount=${DUPCOUNT:-$repo/../shared/bench/dupcount.py}
tree=$(realpath "$1")
shift
sizes=("$@")
((${#sizes[@]})) || sizes=(4096 1)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

status=0
compare() { # NAME_A SETS_A NAME_B SETS_B
    if cmp -s "$2" "$4"; then
        echo "  $1 = $3: identical sets"
    else
        status=1
        echo "  $1 ≠ $3: sets only in $1 (<) or only in $3 (>):"
        diff "$2" "$4" | grep '^[<>]' | head -20 | sed 's/^/    /'
    fi
}

for size in "${sizes[@]}"; do
    echo "minimum size $size bytes, tree $tree"
    "$velloru" duplicates "$tree" --min-size "$size" --json > "$work/ours.json" 2> /dev/null
    python3 "$here/sets-from-json.py" "$work/ours.json" > "$work/ours.txt"
    echo "  velloru: $(python3 "$dupcount" blank "$work/ours.txt" --sets-out "$work/ours.sets")"

    jdupes -r -q -X "size+=:$size" "$tree" > "$work/jdupes.txt" 2> /dev/null || true
    echo "  jdupes:  $(python3 "$dupcount" blank "$work/jdupes.txt" --sets-out "$work/jdupes.sets")"
    compare velloru "$work/ours.sets" jdupes "$work/jdupes.sets"

    if [[ -f "$tree.truth" ]]; then
        python3 "$here/filter-truth.py" "$tree.truth" "$size" > "$work/truth.txt"
        echo "  truth:   $(python3 "$dupcount" truth "$work/truth.txt" --sets-out "$work/truth.sets")"
        compare velloru "$work/ours.sets" truth "$work/truth.sets"
    fi
done
exit $status
