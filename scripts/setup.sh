#!/usr/bin/env bash
# Installs every Debian package that the build, the tests, the fuzzers, the benchmarks and the
# demo need. Idempotent: packages already present are skipped and apt is not touched at all when
# nothing is missing.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build ccache pkg-config git
  libboost-dev libboost-thread-dev libboost-filesystem-dev libboost-system-dev
  libboost-exception-dev
  libprotobuf-dev protobuf-compiler
  libjsoncpp-dev libssl-dev openssl libeasyloggingpp-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev llvm
  curl wrk python3 python3-websocket python3-protobuf python3-yaml python3-jsonschema
  procps util-linux valgrind
  slowhttptest
  prometheus-cpp-dev prometheus
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all packages present"
  exit 0
fi

echo "setup: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
