#!/usr/bin/env bash
# Live-bus tests of `tavknx get`, `set` and `device` against a private knxd (started by the
# CTest fixture, see tests/tool/knxd-fixture.sh).
# Usage: devicestack-tool-test.sh GROUP TAVKNX STATE
set -u
group="$1"
tavknx="$2"
state="$3"
# The emulator, when cross-built (set by CTest).
read -r -a runner <<<"${TAV_TEST_RUNNER:-}"
url="local:$(cat "$state")/knx"
tmp="$(mktemp -d)"
failures=0
background=()
cleanup() {
  for pid in "${background[@]}"; do
    kill "$pid" 2>/dev/null
  done
  rm -rf "$tmp"
}
trap cleanup EXIT

fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

tavknx() {
  "${runner[@]}" "$tavknx" "$@"
}

# expect WHAT EXPECTED ACTUAL
expect() {
  [ "$2" = "$3" ] || fail "$1: expected
$2
got
$3"
}

# Waits until FILE holds a line matching PATTERN.
wait_for() {
  for _ in $(seq 1 200); do
    grep -qs -- "$2" "$1" && return 0
    sleep 0.05
  done
  fail "no line '$2' in $1: $(cat "$1")"
  return 1
}

objects="$tmp/objects.txt"
cat >"$objects" <<'EOF'
# The controller's objects
1;1/2/3;9.001;CRWTU;Living room temperature
2;1/2/4,1/2/5;1.001;CRWTU;Light
3;1/2/6;5.001;CRWTU;Nobody holds this
EOF

# Runs `tavknx device` in the background (stdout $tmp/device.out) until it is on the bus.
start_device() {
  tavknx device --url "$url" --objects "$objects" --log-level info --timeout 60 "$@" \
    >"$tmp/device.out" 2>"$tmp/device.err" &
  background+=($!)
  wait_for "$tmp/device.err" "objects on the bus"
}

case "$group" in
  two-processes)
    # One process holds the values, another writes one, a third reads it back from the bus.
    start_device --json || exit 1
    out="$(tavknx set --url "$url" --objects "$objects" 1 float:21.5 --json)"
    expect "set's exit" 0 $?
    expect "set's output" '{"ok":true,"co":1,"id":100101,"ga":"1/2/3","dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.5}' "$out"
    wait_for "$tmp/device.out" '"co":1'
    expect "the device's change" '{"co":1,"id":100101,"ga":"1/2/3","dpt":"9.1","source":"write","ivt":3,"type":"Float","subType":0,"value":21.5}' "$(cat "$tmp/device.out")"
    out="$(tavknx get --url "$url" --objects "$objects" 1 --json)"
    expect "get's exit" 0 $?
    expect "get's output" '{"ok":true,"co":1,"id":100101,"ga":"1/2/3","dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.5}' "$out"
    # The group address stands for the object it sends on; text for people.
    out="$(tavknx set --url "$url" --objects "$objects" 1/2/4 bool:true)"
    expect "set by group address" "CO 2 Light (1/2/4 1.001 DPT_Switch): on = Bool true [ivt 2, sub-type 0]" "$out"
    out="$(tavknx get --url "$url" --objects "$objects" 1/2/4)"
    expect "get by group address" "CO 2 Light (1/2/4 1.001 DPT_Switch): on = Bool true [ivt 2, sub-type 0]" "$out"
    ;;
  knxtool)
    # A value written with the daemon's own tool, held by the device, then read.
    start_device || exit 1
    knxtool groupwrite "$url" 1/2/3 0c 1a >/dev/null || fail "knxtool groupwrite"
    wait_for "$tmp/device.out" "CO 1"
    expect "the device's change" "CO 1 Living room temperature (1/2/3 9.001 DPT_Value_Temp) write: 21.00 °C = Float 21 [ivt 3, sub-type 0]" "$(cat "$tmp/device.out")"
    out="$(tavknx get --url "$url" --objects "$objects" 1 --json)"
    expect "get's output" '{"ok":true,"co":1,"id":100101,"ga":"1/2/3","dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.0}' "$out"
    # A write to the object's second, listening address.
    knxtool groupswrite "$url" 1/2/5 1 >/dev/null || fail "knxtool groupswrite"
    wait_for "$tmp/device.out" "CO 2"
    out="$(tavknx get --url "$url" --objects "$objects" 2)"
    expect "get after a listening address's write" "CO 2 Light (1/2/4 1.001 DPT_Switch): on = Bool true [ivt 2, sub-type 0]" "$out"
    ;;
  monitor)
    # The bytes a set puts on the bus, as the monitor sees them.
    tavknx monitor --url "$url" --log-level info --count 1 --timeout 20 --json >"$tmp/mon.out" 2>"$tmp/mon.err" &
    monitor=$!
    background+=($monitor)
    wait_for "$tmp/mon.err" "listening to knxd" || exit 1
    tavknx set --url "$url" --objects "$objects" 1 float:21.5 >/dev/null || fail "set: exit $?"
    wait "$monitor"
    expect "the monitor's exit" 0 $?
    expect "the monitor's line" '{"time":"T","source":"S","ga":"1/2/3","kind":"write","hex":"0c33","bits":16}' \
      "$(sed -E 's/"time":"[^"]*","source":"[^"]*"/"time":"T","source":"S"/' "$tmp/mon.out")"
    ;;
  unanswered)
    # Nobody holds the value: the messenger's time-out and retry lines, exit 1.
    out="$(tavknx get --url "$url" --objects "$objects" --timeout 0.3 --retries 1 3 --json 2>"$tmp/err")"
    expect "get's exit" 1 $?
    expect "get's output" '{"ok":false,"co":3,"error":"no answer"}' "$out"
    expect "get's log" "WARN  DscAsyncRequestMessenger.cpp:305 WaitForAnswer - Timeout (00:00:00.300000) occured for request ID 'knxd-1'
WARN  DscAsyncRequestMessenger.cpp:305 WaitForAnswer - Timeout (00:00:00.300000) occured for request ID 'knxd-2'
WARN  DscAsyncRequestMessenger.cpp:253 SynchronizeRequest - Maximum number of retries (1) reached." "$(cat "$tmp/err")"
    out="$(tavknx get --url "$url" --objects "$objects" --timeout 0.2 --retries 0 3 2>"$tmp/err")"
    expect "get's exit in text" 1 $?
    expect "get's output in text" "CO 3 Nobody holds this (1/2/6 5.001 DPT_Scaling): failed: no answer" "$out"
    ;;
  refused)
    # The stack refuses: its error as the docket's, the messenger's error lines on stderr.
    out="$(tavknx set --url "$url" --objects "$objects" 1 bool:true --json 2>"$tmp/err")"
    expect "set's exit" 1 $?
    expect "set's output" '{"ok":false,"co":1,"error":"value refused: DPT 9.1 of CO 1 cannot carry Bool true"}' "$out"
    grep -q "^ERROR DscAsyncRequestMessenger.cpp:321 OnSetValue - LDS error for request knxd-1: 3; value refused; DPT 9.1 of CO 1 cannot carry Bool true; id: 100101; urn: Living room temperature; value: " "$tmp/err" \
      || fail "no OnSetValue error line: $(cat "$tmp/err")"
    grep -q "^ERROR DscAsyncRequestMessenger.cpp:[0-9]* UpdateDocketList - Request knxd-1: Error 'value refused: DPT 9.1 of CO 1 cannot carry Bool true'" "$tmp/err" \
      || fail "no UpdateDocketList error line: $(cat "$tmp/err")"
    # Not reachable: answered at once with an error, no waiting.
    out="$(tavknx get --url "local:$tmp/none" --objects "$objects" --timeout 5 1 --json 2>/dev/null)"
    expect "get without knxd" 1 $?
    expect "get without knxd's output" "{\"ok\":false,\"co\":1,\"error\":\"not connected: knxd at 'local:$tmp/none' is not reachable\"}" "$out"
    out="$(tavknx get --url "$url" --objects "$objects" 9 2>&1)"
    expect "get of an unknown CO" 2 $?
    grep -q "CO: no object has number 9" <<<"$out" || fail "unknown CO: $out"
    out="$(tavknx get --url "$url" --objects "$objects" --timeout 0 1 2>&1)"
    expect "get with --timeout 0" 2 $?
    ;;
  objects)
    # Malformed lines are skipped with their numbers; the rest works.
    printf '1;1/2/3;9.001;CRWTU;Temperature\n2;1/9/3;1.001;CWT;Bad address\nnonsense\n' >"$tmp/bad.txt"
    out="$(tavknx set --url "$url" --objects "$tmp/bad.txt" 1 float:20.5 2>"$tmp/err")"
    expect "set's exit" 0 $?
    expect "set's output" "CO 1 Temperature (1/2/3 9.001 DPT_Value_Temp): 20.50 °C = Float 20.5 [ivt 3, sub-type 0]" "$out"
    expect "set's warnings" "WARN  DeviceStackCommands.cpp:219 LoadObjects - objects '$tmp/bad.txt' line 2 skipped: GA: expected a group address, got '1/9/3'
WARN  DeviceStackCommands.cpp:219 LoadObjects - objects '$tmp/bad.txt' line 3 skipped: expected CO;GA[,GA...];DPT;FLAGS;NAME, got 'nonsense'" \
      "$(sed -E 's/DeviceStackCommands.cpp:[0-9]+/DeviceStackCommands.cpp:219/' "$tmp/err")"
    printf 'nonsense\n' >"$tmp/none.txt"
    tavknx get --url "$url" --objects "$tmp/none.txt" 1 >/dev/null 2>"$tmp/err"
    expect "get without objects" 1 $?
    grep -q "^tavknx get: no objects in '$tmp/none.txt'$" "$tmp/err" || fail "no objects: $(cat "$tmp/err")"
    tavknx get --url "$url" --objects "$tmp/missing.txt" 1 >/dev/null 2>"$tmp/err"
    expect "get with a missing file" 2 $?
    tavknx get --url "$url" --objects "$objects" --project x.knxproj --device 1.1.1 1 >/dev/null 2>"$tmp/err"
    expect "get with two sources" 2 $?
    ;;
  project)
    # The objects of a device in an ETS project.
    "${runner[@]}" "$TAV_KNXPROJ_FIXTURE" "$tmp/p.knxproj" 21 || { fail "KnxprojFixture"; exit 1; }
    tavknx monitor --url "$url" --log-level info --count 1 --timeout 20 --json >"$tmp/mon.out" 2>"$tmp/mon.err" &
    monitor=$!
    background+=($monitor)
    wait_for "$tmp/mon.err" "listening to knxd" || exit 1
    out="$(tavknx set --url "$url" --project "$tmp/p.knxproj" --device 1.1.2 3 float:21.5 --json 2>/dev/null)"
    expect "set's exit" 0 $?
    expect "set's output" '{"ok":true,"co":3,"id":100301,"ga":"2/2/0","dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.5}' "$out"
    wait "$monitor"
    expect "the monitor's line" '{"time":"T","source":"S","ga":"2/2/0","kind":"write","hex":"0c33","bits":16}' \
      "$(sed -E 's/"time":"[^"]*","source":"[^"]*"/"time":"T","source":"S"/' "$tmp/mon.out")"
    # CO 0 has no value id: skipped with a warning.
    tavknx get --url "$url" --project "$tmp/p.knxproj" --device 1.1.5 --timeout 0.1 --retries 0 1 >/dev/null 2>"$tmp/err"
    grep -q "LoadObjects - project '$tmp/p.knxproj' CO 0: no value id for this number: skipped" "$tmp/err" \
      || fail "no warning for CO 0: $(cat "$tmp/err")"
    tavknx get --url "$url" --project "$tmp/p.knxproj" --device 1.1.9 1 >/dev/null 2>"$tmp/err"
    expect "a device the project lacks" 1 $?
    grep -q "^tavknx get: --project: the project has no device 1.1.9$" "$tmp/err" || fail "no device: $(cat "$tmp/err")"
    ;;
  usage)
    # Help with examples; arguments that are missing or wrong are usage errors (exit 2).
    for command in get set device; do
      tavknx "$command" --help >"$tmp/out" 2>&1
      expect "$command --help's exit" 0 $?
      grep -q "^Usage: tavknx $command" "$tmp/out" && grep -q "Examples" "$tmp/out" || fail "$command --help: $(cat "$tmp/out")"
    done
    tavknx get --url "$url" --objects "$objects" >/dev/null 2>&1
    expect "get without CO" 2 $?
    tavknx set --url "$url" --objects "$objects" 1 >/dev/null 2>&1
    expect "set without VALUE" 2 $?
    tavknx set --url "$url" --objects "$objects" 1 warm >/dev/null 2>&1
    expect "set with a bad VALUE" 2 $?
    tavknx get --url "$url" 1 >"$tmp/out" 2>&1
    expect "get without objects" 2 $?
    grep -q "give the objects with --objects FILE or with --project FILE --device IA" "$tmp/out" || fail "no source: $(cat "$tmp/out")"
    tavknx get --url "$url" --project x.knxproj 1 >"$tmp/out" 2>&1
    expect "--project without --device" 2 $?
    tavknx get --url "$url" --objects "$objects" --retries x 1 >/dev/null 2>&1
    expect "get with bad --retries" 2 $?
    tavknx get --url "$url" --objects "$objects" --timeout 1.2345 1 >"$tmp/out" 2>&1
    expect "get with four decimals" 2 $?
    grep -q -- "--timeout: expected seconds from 0.001 to 86400, got '1.2345'" "$tmp/out" || fail "timeout: $(cat "$tmp/out")"
    tavknx get --url "$url" --objects "$objects" 7/7/7 >"$tmp/out" 2>&1
    expect "get of a group address no object sends on" 2 $?
    grep -q "CO: 7/7/7 is the sending address of no object" "$tmp/out" || fail "GA: $(cat "$tmp/out")"
    tavknx device --url "$url" --objects "$objects" extra >/dev/null 2>&1
    expect "device with an argument" 2 $?
    tavknx device --url "local:$tmp/none" --objects "$objects" --timeout 1 >/dev/null 2>"$tmp/out"
    expect "device without knxd" 1 $?
    grep -q "^tavknx device: cannot reach knxd at 'local:$tmp/none'$" "$tmp/out" || fail "device without knxd: $(cat "$tmp/out")"
    ;;
  *)
    echo "unknown group $group" >&2
    exit 2
    ;;
esac

if [ "$failures" -ne 0 ]; then
  echo "$failures failure(s)" >&2
  exit 1
fi
echo "devicestack $group: ok"
