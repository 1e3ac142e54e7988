# Shared by the wire tests, sourced after their arguments are read: a scratch folder whose server
# ($server_pid) is stopped at exit, and the counted checks that each script reports at its end.
python=/usr/bin/python3

work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ] && kill -0 "$server_pid" 2>/dev/null; then
    kill -TERM "$server_pid"
    wait "$server_pid" 2>/dev/null
  fi
  rm -rf "$work"
}
trap cleanup EXIT

failures=0
checks=0
pass() { checks=$((checks + 1)); printf 'ok   %s\n' "$1"; }
fail() { checks=$((checks + 1)); failures=$((failures + 1)); printf 'FAIL %s\n' "$1"; }
expect_eq() {  # name expected actual
  if [ "$2" == "$3" ]; then pass "$1"; else fail "$1: expected [$2], got [$3]"; fi
}
expect_contains() {  # name needle haystack
  if [[ "$3" == *"$2"* ]]; then pass "$1"; else fail "$1: [$2] not in [$3]"; fi
}
