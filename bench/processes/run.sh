#!/bin/bash
# The cost of reading the process table: one full sample by Velloru beside `ps -eo pid,user,rss,pcpu,ni,comm`
# and `top -b -n 1`, with 1,000 extra sleeping processes, in one run; CPU time per sample from each process's
# own accounting. Then the CPU the open Memory Usage section uses over a minute at its 2 s interval.
# Goals: a sample costs less CPU than ps for the same table; the open section under 1% of one core.
#
#   bench/processes/run.sh [BUILD_DIR] [EXTRA_PROCESSES]
set -euo pipefail

build=$(realpath "${1:-build}")
extra=${2:-1000}
runs=5

pids=()
cleanup() { ((${#pids[@]})) && kill "${pids[@]}" 2>/dev/null; wait 2>/dev/null || true; }
trap cleanup EXIT
for ((i = 0; i < extra; i++)); do
    sleep 600 &
    pids+=($!)
done
echo "processes on the machine: $(ls -d /proc/[0-9]* | wc -l) (${extra} of them sleepers started here)"

# Median CPU milliseconds (user + system) of `runs` runs of a command, from bash's own accounting of its child.
cpu_ms() {
    local times=()
    for ((run = 0; run < runs; run++)); do
        local TIMEFORMAT='%3U %3S'
        local used
        used=$({ time "$@" > /dev/null 2>&1; } 2>&1)
        times+=("$(awk '{printf "%.1f", ($1 + $2) * 1000}' <<< "$used")")
    done
    printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}'
}

echo "ps       $(cpu_ms ps -eo pid,user,rss,pcpu,ni,comm) ms CPU per run (median of $runs, start-up included)"
echo "top      $(cpu_ms top -b -n 1) ms CPU per run (median of $runs, start-up included)"
"$build/bench/bench_process_sample" 20
echo "velloru  $(cpu_ms "$build/velloru" processes --all) ms CPU for the whole command (start-up, app list, two samples)"

echo -n "with the ${extra} sleepers: "
QT_QPA_PLATFORM=offscreen "$build/bench/bench_memory_section" 60 2>/dev/null
cleanup
pids=()
echo -n "without them: "
QT_QPA_PLATFORM=offscreen "$build/bench/bench_memory_section" 60 2>/dev/null
