#!/usr/bin/env bash
# Installs what is missing, builds, and starts the simulated transmitter with the plug-in:
# HTTP on 7000, HTTPS on 8000. Ctrl-C stops it. Options go to tavel-sim (config/run-demo.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh build/release -DCMAKE_BUILD_TYPE=Release
exec config/run-demo.sh build/release "$@"
