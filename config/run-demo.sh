#!/usr/bin/env bash
# config/run-demo.sh [build dir] [tavel-sim options...]: starts the simulated transmitter with the
# plug-in from the repository's root; further options go to tavel-sim (e.g. auto login for this
# machine, --fixture config/fixtures/autologin.json, or a pre-made session, --session ID=USER).
# tavel-sim prints the demo users and their passwords at start; nothing else shows a password.
# Makes a self-signed certificate and key on first run (never committed).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
shift || true

mkdir -p certificates logs
# Uploads go under demo-storage/ (config.json's "storage-root"), never to /data or /mnt; the
# folder demo-storage/mnt/USB stands for a plugged-in stick.
mkdir -p demo-storage/data/halvor/files demo-storage/mnt/USB
if [ ! -f certificates/server.crt ] || [ ! -f certificates/server.key ]; then
  echo "demo: making a self-signed certificate in certificates/"
  openssl req -x509 -newkey rsa:2048 -nodes -days 3650 -subj "/CN=localhost" \
    -addext "subjectAltName=DNS:localhost,IP:127.0.0.1" \
    -keyout certificates/server.key -out certificates/server.crt 2>/dev/null
  chmod 600 certificates/server.key
fi

# GET /metrics answers only with the bearer token of config/config.json ("metrics-token").
token=$(sed -n 's/^ *"metrics-token": *"\([^"]*\)".*/\1/p' config/config.json)
if [ -n "$token" ]; then
  echo "demo: metrics at http://127.0.0.1:7000/metrics with \"Authorization: Bearer $token\""
fi

exec "$build/sim/tavel-sim" \
  --plugin "$build/src/libkelo.so" \
  --log-config config/log.conf \
  --config config/config.json \
  --web-config config/drogon-config.json \
  --fixture config/fixtures/demo.json --fixture config/fixtures/storage.json "$@"
