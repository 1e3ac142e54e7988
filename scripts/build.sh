#!/usr/bin/env bash
# scripts/build.sh <dir> [cmake options...]: configures (once) and builds one configuration.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=$1
shift
if [ ! -f "$dir/build.ninja" ]; then
  cmake -S . -B "$dir" -G Ninja "$@"
fi
cmake --build "$dir" -j"${KELO_JOBS:-2}"
