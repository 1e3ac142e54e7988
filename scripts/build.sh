#!/usr/bin/env bash
# scripts/build.sh <dir> [cmake options...]: configures <dir> (once) and builds it, all targets
# or only $KELO_TARGET when set. $KELO_JOBS parallel jobs (2 by default).
set -euo pipefail
cd "$(dirname "$0")/.."
dir=$1
shift
if [ ! -f "$dir/build.ninja" ]; then
  cmake -S . -B "$dir" -G Ninja "$@"
fi
cmake --build "$dir" -j"${KELO_JOBS:-2}" ${KELO_TARGET:+--target "$KELO_TARGET"}
