#!/bin/bash
# Times `velloru startup list --json` on a home with 300 autostart entries and 300 user units (plus this
# machine's own system units) beside `systemctl list-unit-files` over the same units, or `find` over the same
# folders when no systemd runs, in the same run.
# Goals: the whole scan under 150 ms, and no more than 2× the peer.
#
#   bench/startup/run.sh [path/to/velloru]
set -euo pipefail

velloru=$(realpath "${1:-build/velloru}")
runs=7
work=$(mktemp -d /tmp/velloru-startup-bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
home=$work/home
mkdir -p "$home/.config/autostart" "$home/.config/systemd/user/default.target.wants"
for i in $(seq 1 300); do
    printf '[Desktop Entry]\nType=Application\nName=App %s\nExec=/usr/bin/app%s --tray\n' "$i" "$i" \
        > "$home/.config/autostart/app$i.desktop"
    printf '[Unit]\nDescription=Agent %s\n\n[Service]\nExecStart=/usr/bin/agent%s\n\n[Install]\nWantedBy=default.target\n' \
        "$i" "$i" > "$home/.config/systemd/user/agent$i.service"
    if (( i % 2 )); then
        ln -s "$home/.config/systemd/user/agent$i.service" "$home/.config/systemd/user/default.target.wants/"
    fi
done

export HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share XDG_CACHE_HOME=$home/.cache
export XDG_STATE_HOME=$home/.local/state

# The best of `runs` wall-clock times of a command, in milliseconds.
best() {
    local best=999999 start end ms
    for _ in $(seq 1 $runs); do
        start=$(date +%s%N)
        "$@" > /dev/null 2>&1 || true
        end=$(date +%s%N)
        ms=$(( (end - start) / 1000000 ))
        (( ms < best )) && best=$ms
    done
    echo "$best"
}

items=$("$velloru" startup list --json 2>/dev/null | grep -c '"id"')
ours=$(best "$velloru" startup list --json)
if systemctl --user --no-pager list-unit-files > /dev/null 2>&1; then
    peer_name="systemctl --user list-unit-files + list-unit-files (system)"
    peer=$(best sh -c 'systemctl --user --no-pager list-unit-files; systemctl --no-pager list-unit-files')
else
    peer_name="find over the same folders"
    peer=$(best find "$home/.config/autostart" "$home/.config/systemd/user" /etc/xdg/autostart /etc/systemd/user \
        /usr/lib/systemd/user /etc/systemd/system /lib/systemd/system -maxdepth 2)
fi
echo "items listed: $items"
echo "velloru startup list --json: ${ours} ms (goal < 150 ms)"
echo "$peer_name: ${peer} ms"
awk -v o="$ours" -v p="$peer" 'BEGIN { r = (p > 0 ? o / p : 0); printf "ratio: %.2f× (goal ≤ 2×)\n", r }'
