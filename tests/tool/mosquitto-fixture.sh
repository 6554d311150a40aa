#!/usr/bin/env bash
# Starts or stops a private MQTT broker (mosquitto) for the bridge's tests: a free port on
# 127.0.0.1, its configuration, persistence and log in a fresh temporary directory. STATE keeps
# the directory between the start and the stop; DIR/port holds the port.
# Usage: mosquitto-fixture.sh start|stop|stop-keep|restart STATE
# MOSQUITTO_PASSWORD_FILE: a broker that lets in only the users of that file.
# MOSQUITTO_CERT, MOSQUITTO_KEY: a broker that speaks TLS only, with this certificate and key.
set -euo pipefail
action="$1"
state="$2"
# shellcheck source=fixture-process.sh
source "$(dirname "$0")/fixture-process.sh"

start_broker() {
  local dir="$1"
  local port
  port="$(cat "$dir/port" 2>/dev/null || true)"
  for _ in $(seq 1 20); do
    # A restart keeps its port: the bridge under test reconnects to it.
    [ -n "$port" ] || port=$((20000 + RANDOM % 40000))
    cat >"$dir/mosquitto.conf" <<CONF
listener $port 127.0.0.1
$(if [ -n "${MOSQUITTO_CERT:-}" ]; then printf 'certfile %s\nkeyfile %s\n' "$MOSQUITTO_CERT" "$MOSQUITTO_KEY"; fi)
$(if [ -n "${MOSQUITTO_PASSWORD_FILE:-}" ]; then
    printf 'allow_anonymous false\npassword_file %s\n' "$MOSQUITTO_PASSWORD_FILE"
  else
    echo "allow_anonymous true"
  fi)
persistence true
persistence_location $dir/
autosave_interval 1
pid_file $dir/pid
log_dest file $dir/log
user $(id -un)
CONF
    rm -f "$dir/pid"
    mosquitto -c "$dir/mosquitto.conf" -d || true
    for _ in $(seq 1 100); do
      if [ -s "$dir/pid" ] && grep -q "listen socket on port $port" "$dir/log" 2>/dev/null; then
        echo "$port" >"$dir/port"
        return 0
      fi
      [ -s "$dir/pid" ] && ! kill -0 "$(cat "$dir/pid")" 2>/dev/null && break
      sleep 0.05
    done
    stop_broker "$dir"
    if [ -f "$dir/port" ]; then
      # A restart cannot move elsewhere; the port may still be held for a moment.
      sleep 0.2
    else
      port=""
    fi
  done
  echo "mosquitto did not come up; its log:" >&2
  cat "$dir/log" >&2 || true
  return 1
}

stop_broker() {
  stop_pid_file "$1"
}

case "$action" in
  start)
    command -v mosquitto >/dev/null || { echo "mosquitto is not installed (make deps installs it)" >&2; exit 1; }
    dir="$(mktemp -d /tmp/tav-mosquitto.XXXXXX)"
    echo "$dir" >"$state"
    start_broker "$dir"
    ;;
  restart)
    dir="$(cat "$state")"
    stop_broker "$dir"
    start_broker "$dir"
    ;;
  stop-keep)
    stop_broker "$(cat "$state")"
    ;;
  stop)
    [ -f "$state" ] || exit 0
    dir="$(cat "$state")"
    stop_broker "$dir"
    rm -rf "$dir" "$state"
    ;;
  *)
    echo "usage: mosquitto-fixture.sh start|stop|stop-keep|restart STATE" >&2
    exit 2
    ;;
esac
