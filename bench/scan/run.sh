#!/bin/bash
# Times `velloru scan` against `du -s` over the same folders of a synthetic home with 100,000 files under
# the locations Smart Scan reads, in the same run, and reports Velloru's peak memory.
# Goals: the scan within 1.5× of du's time, peak memory under 100 MB.
#
#   bench/scan/run.sh [path/to/velloru] [files]
set -euo pipefail

velloru=$(realpath "${1:-build/velloru}")
files=${2:-100000}
runs=5
work=$(mktemp -d /tmp/velloru-scan-bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
home=$work/home

# The home: 60 app caches of ~1,200 files each in folders four levels deep, 40 Flatpak app caches,
# logs, session states, a few broken links, and desktop entries so that caches are claimed and graded.
python3 - "$home" "$work/share" "$files" <<'PY'
import os, sys
home, share, total = sys.argv[1], sys.argv[2], int(sys.argv[3])
apps = os.path.join(share, "applications")
os.makedirs(apps)
folders = [os.path.join(home, ".cache", f"app{i}") for i in range(60)]
folders += [os.path.join(home, ".var/app", f"org.example.App{i}", "cache") for i in range(40)]
for i in range(60):
    with open(os.path.join(apps, f"app{i}.desktop"), "w") as f:
        f.write(f"[Desktop Entry]\nType=Application\nName=App {i}\nExec=app{i}\n")
logs = [os.path.join(home, ".local/state", f"tool{i}.log") for i in range(200)]
states = [os.path.join(home, ".config/session", f"app{i}_{i:08x}") for i in range(100)]
written = 0
for path in logs + states:
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(b"x" * 2048)
    written += 1
per_folder = (total - written) // len(folders)
for n, folder in enumerate(folders):
    for i in range(per_folder if n else total - written - per_folder * (len(folders) - 1)):
        sub = os.path.join(folder, f"d{i % 7}", f"e{i % 5}", f"f{i % 3}")
        os.makedirs(sub, exist_ok=True)
        with open(os.path.join(sub, f"blob{i}"), "wb") as f:
            f.write(b"x" * (512 + i % 4096))
for i in range(5):
    os.symlink(f"/nowhere/{i}", os.path.join(home, f"dangling{i}"))
PY

folders=("$home/.cache" "$home/.var/app" "$home/.local/state" "$home/.config/session")
count=$(find "${folders[@]}" -type f | wc -l)
echo "synthetic home: $count files under ${folders[*]#$home/}"

export HOME="$home" XDG_CACHE_HOME="$home/.cache" XDG_CONFIG_HOME="$home/.config" \
    XDG_DATA_HOME="$home/.local/share" XDG_STATE_HOME="$home/.local/state" XDG_DATA_DIRS="$work/share"

# Seconds and peak kilobytes of one run, from /usr/bin/time -v.
measure() {
    /usr/bin/time -v "$@" > /dev/null 2> "$work/time.txt"
    local elapsed peak
    elapsed=$(awk -F': ' '/Elapsed \(wall clock\)/ {print $2}' "$work/time.txt")
    peak=$(awk -F': ' '/Maximum resident set size/ {print $2}' "$work/time.txt")
    python3 -c "import sys; p=sys.argv[1].split(':'); print(sum(float(x)*60**i for i,x in enumerate(reversed(p))), sys.argv[2])" "$elapsed" "$peak"
}

# Warm the page cache once, then alternate the two so both see the same machine state.
du -s "${folders[@]}" > /dev/null
"$velloru" scan --json > /dev/null 2>&1
du_times=() scan_times=() peaks=()
for ((run = 0; run < runs; run++)); do
    read -r seconds _ < <(measure du -s "${folders[@]}")
    du_times+=("$seconds")
    read -r seconds peak < <(measure "$velloru" scan --json)
    scan_times+=("$seconds")
    peaks+=("$peak")
done

python3 - "${du_times[*]}" "${scan_times[*]}" "${peaks[*]}" <<'PY'
import statistics, sys
du = [float(x) for x in sys.argv[1].split()]
scan = [float(x) for x in sys.argv[2].split()]
peak = max(int(x) for x in sys.argv[3].split()) / 1024
du_m, scan_m = statistics.median(du), statistics.median(scan)
ratio = scan_m / du_m if du_m > 0 else float("inf")
print(f"du -s          median {du_m:.3f} s   runs {' '.join(f'{x:.2f}' for x in du)}")
print(f"velloru scan   median {scan_m:.3f} s   runs {' '.join(f'{x:.2f}' for x in scan)}")
print(f"ratio          {ratio:.2f}× du (goal ≤ 1.5×)")
print(f"peak memory    {peak:.1f} MB (goal < 100 MB)")
sys.exit(0 if ratio <= 1.5 and peak < 100 else 1)
PY
