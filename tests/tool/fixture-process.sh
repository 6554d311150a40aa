# Sourced by the daemon fixtures (knxd, mosquitto): the one way they end a daemon they started.
# stop_pid_file DIR: ends the process whose id DIR/pid holds (TERM, up to 5 s, then KILL) and
# removes the file; nothing when there is none.
stop_pid_file() {
  local dir="$1"
  if [ -s "$dir/pid" ]; then
    local pid
    pid="$(cat "$dir/pid")"
    kill "$pid" 2>/dev/null || true
    for _ in $(seq 1 100); do
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.05
    done
    kill -9 "$pid" 2>/dev/null || true
    rm -f "$dir/pid"
  fi
}
