#!/usr/bin/env bash
# Installs the Debian packages Velloru needs (only the missing ones), then configures and builds.
# Usage: scripts/setup.sh [BUILD_DIR [extra cmake arguments…]]
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-svg-dev qt6-qpa-plugins
    libgtest-dev libbenchmark-dev
    libssl-dev
    sqlite3
)
# The tests also check what Velloru writes with tools nobody here wrote (trash-cli, gio through gvfs on a
# private session bus) and run Velloru as another user (setpriv); the window is tried under a real X server
# (Xvfb) and photographed with imagemagick's import.
if [[ "${VELLORU_TEST_TOOLS:-0}" == 1 ]]; then
    packages+=(trash-cli libglib2.0-bin gvfs dbus util-linux e2fsprogs xvfb xauth imagemagick)
fi

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$package")
done

if ((${#missing[@]})); then
    echo "velloru setup: installing ${missing[*]}" >&2
    sudo=()
    if [[ $(id -u) -ne 0 ]]; then
        command -v sudo >/dev/null || { echo "velloru setup: these packages are missing and sudo is not available — install them as root: ${missing[*]}" >&2; exit 1; }
        sudo=(sudo)
    fi
    "${sudo[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

build_dir=${1:-build}
shift || true
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$build_dir"
