#!/usr/bin/env bash
# Starts or stops a private knxd for the live-bus tests: the dummy bus driver, a unix socket in a
# fresh temporary directory, no network. STATE is a file that keeps the directory's name
# between the start and the stop (the socket is "local:DIR/knx").
# Usage: knxd-fixture.sh start|stop|stop-keep|restart STATE
set -euo pipefail
action="$1"
state="$2"
# shellcheck source=fixture-process.sh
source "$(dirname "$0")/fixture-process.sh"

start_daemon() {
  local dir="$1"
  rm -f "$dir/knx"
  # -e: the daemon's own address; -E: addresses for its clients (each tool connection takes one).
  knxd -e 0.0.1 -E 0.0.2:50 -u "$dir/knx" -p "$dir/pid" -d"$dir/log" -b dummy:
  for _ in $(seq 1 100); do
    if [ -S "$dir/knx" ] && [ -s "$dir/pid" ]; then
      return 0
    fi
    sleep 0.05
  done
  echo "knxd did not come up; its log:" >&2
  cat "$dir/log" >&2 || true
  return 1
}

stop_daemon() {
  stop_pid_file "$1"
}

case "$action" in
  start)
    command -v knxd >/dev/null || { echo "knxd is not installed (make deps installs it)" >&2; exit 1; }
    dir="$(mktemp -d /tmp/tav-knxd.XXXXXX)"
    echo "$dir" >"$state"
    start_daemon "$dir"
    ;;
  restart)
    dir="$(cat "$state")"
    stop_daemon "$dir"
    start_daemon "$dir"
    ;;
  stop-keep)
    # The daemon goes away, the directory stays for a restart.
    stop_daemon "$(cat "$state")"
    ;;
  stop)
    [ -f "$state" ] || exit 0
    dir="$(cat "$state")"
    stop_daemon "$dir"
    rm -rf "$dir" "$state"
    ;;
  *)
    echo "usage: knxd-fixture.sh start|stop|stop-keep|restart STATE" >&2
    exit 2
    ;;
esac
