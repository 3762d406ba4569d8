#!/usr/bin/env bash
# Sets everything up on a fresh machine, builds, and runs the main job on your own files.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh build
exec build/velloru scan "$@"
