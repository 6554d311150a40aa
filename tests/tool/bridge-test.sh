#!/usr/bin/env bash
# End-to-end tests of `tavknx bridge` between a private knxd and a private mosquitto (both
# started by CTest fixtures: knxd-fixture.sh, mosquitto-fixture.sh).
# Usage: bridge-test.sh GROUP TAVKNX APDU-SENDER KNXD-STATE MOSQUITTO-STATE
set -u
group="$1"
tavknx="$2"
sender="$3"
knxd_state="$4"
mqtt_state="$5"
here="$(cd "$(dirname "$0")" && pwd)"
read -r -a runner <<<"${TAV_TEST_RUNNER:-}"
url="local:$(cat "$knxd_state")/knx"
port="$(cat "$(cat "$mqtt_state")/port")"
tmp="$(mktemp -d)"
failures=0
bridge_pid=""
sub_pid=""
cleanup() {
  [ -n "$bridge_pid" ] && kill "$bridge_pid" 2>/dev/null
  [ -n "$sub_pid" ] && kill "$sub_pid" 2>/dev/null
  rm -rf "$tmp"
}
trap cleanup EXIT

fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

cat >"$tmp/map.txt" <<MAP
1/0/1;1.001
1/0/2;5.001
1/0/3;9.001
1/0/4;10.001
1/0/5;11.001
1/0/6;14.056
1/0/7;16.000
MAP

# Starts the bridge (stderr $tmp/bridge.err) and waits until it is connected to the broker.
start_bridge() {
  rm -f "$tmp/bridge.err"
  "${runner[@]}" "$tavknx" bridge --url "$url" --mqtt "mqtt://127.0.0.1:$port" --client-id "test-$group" \
    --log-level info "$@" 2>"$tmp/bridge.err" &
  bridge_pid=$!
  for _ in $(seq 1 200); do
    grep -qs "connected to the MQTT broker" "$tmp/bridge.err" && return 0
    kill -0 "$bridge_pid" 2>/dev/null || break
    sleep 0.05
  done
  fail "the bridge did not connect: $(cat "$tmp/bridge.err")"
  return 1
}

stop_bridge() {
  kill -INT "$bridge_pid"
  wait "$bridge_pid"
  bridge_code=$?
  bridge_pid=""
  # Ctrl-C is a clean end: exit 0 (a sanitizer's report would change it).
  [ "$bridge_code" = 0 ] || fail "the bridge ended with exit $bridge_code: $(tail -5 "$tmp/bridge.err")"
}

# Subscribes to the filters in the background, for COUNT messages ("topic payload" lines, or
# mosquitto_sub's -F form). A probe on its own topic says when the subscription stands.
subscribe() {
  sub_count="$1"
  shift
  rm -f "$tmp/sub.raw" "$tmp/sub.out"
  # -R: no retained messages of earlier groups, only what comes now.
  mosquitto_sub -h 127.0.0.1 -p "$port" -v -R "$@" -t tav-test/probe >"$tmp/sub.raw" &
  sub_pid=$!
  for _ in $(seq 1 200); do
    mosquitto_pub -h 127.0.0.1 -p "$port" -t tav-test/probe -m probe
    sleep 0.05
    grep -qs ' probe$' "$tmp/sub.raw" && return 0
  done
  fail "the subscription did not start"
}

# Waits (at most 120 s) for the COUNT messages, then ends the subscriber; they are in sub.out.
wait_sub() {
  for _ in $(seq 1 2400); do
    [ "$(grep -vc ' probe$' "$tmp/sub.raw")" -ge "$sub_count" ] && break
    sleep 0.05
  done
  # A moment more, so that a message too many shows.
  sleep 0.2
  kill "$sub_pid" 2>/dev/null
  wait "$sub_pid" 2>/dev/null
  sub_pid=""
  grep -v ' probe$' "$tmp/sub.raw" >"$tmp/sub.out"
}

# Watches the bus: the monitor's JSON lines in $tmp/mon.out.
start_monitor() {
  rm -f "$tmp/mon.out" "$tmp/mon.err"
  "${runner[@]}" "$tavknx" monitor --url "$url" --log-level info --json "$@" >"$tmp/mon.out" 2>"$tmp/mon.err" &
  monitor_pid=$!
  for _ in $(seq 1 200); do
    grep -qs "listening to knxd" "$tmp/mon.err" && return 0
    sleep 0.05
  done
  fail "the monitor did not start"
}

# Time and source vary from run to run.
normalise() {
  sed -E 's/"source":"[0-9.]+","time":"[0-9T:.Z-]+"/"source":S,"time":T/'
}

publish() {
  mosquitto_pub -h 127.0.0.1 -p "$port" -q 1 "$@"
}

case "$group" in
  bus-to-mqtt)
    start_bridge --map "$tmp/map.txt" || exit 1
    subscribe 8 -t 'knx/1/0/+/state' -t 'knx/raw/#'
    "${runner[@]}" "$sender" "$url" 1 1/0/1 0081 1/0/2 008080 1/0/3 00800c1a 1/0/4 00802c1e00 1/0/5 00801e0418 \
      1/0/6 008042c80000 1/0/7 008048656c6c6f000000000000000000 2/0/1 00800c >/dev/null || fail "ApduSender failed"
    wait_sub
    normalise <"$tmp/sub.out" >"$tmp/got.txt"
    cat >"$tmp/want.txt" <<'WANT'
knx/1/0/1/state {"ok":true,"value":true,"dpt":"1.1","ivt":2,"type":"Bool","hex":"01","source":S,"time":T}
knx/1/0/2/state {"ok":true,"value":128,"dpt":"5.1","ivt":6,"type":"Byte","hex":"80","source":S,"time":T}
knx/1/0/3/state {"ok":true,"value":21.0,"dpt":"9.1","ivt":3,"type":"Float","hex":"0c1a","source":S,"time":T}
knx/1/0/4/state {"ok":true,"value":"12:30:00","weekday":1,"dpt":"10.1","ivt":15,"type":"DayTime","hex":"2c1e00","source":S,"time":T}
knx/1/0/5/state {"ok":true,"value":"2024-04-30","dpt":"11.1","ivt":11,"type":"Date","hex":"1e0418","source":S,"time":T}
knx/1/0/6/state {"ok":true,"value":1e+02,"dpt":"14.56","ivt":3,"type":"Float","hex":"42c80000","source":S,"time":T}
knx/1/0/7/state {"ok":true,"value":"Hello","dpt":"16.0","ivt":10,"type":"String","hex":"48656c6c6f000000000000000000","source":S,"time":T}
knx/raw/2/0/1 {"kind":"write","hex":"0c","source":S,"time":T}
WANT
    diff "$tmp/want.txt" "$tmp/got.txt" >&2 || fail "bus to MQTT: the payloads differ"
    # Retained: a late subscriber gets the last state.
    got=$(mosquitto_sub -h 127.0.0.1 -p "$port" -t knx/1/0/3/state -C 1 -W 5 | normalise)
    [ "$got" = '{"ok":true,"value":21.0,"dpt":"9.1","ivt":3,"type":"Float","hex":"0c1a","source":S,"time":T}' ] \
      || fail "retained state: $got"
    stop_bridge
    got=$(mosquitto_sub -h 127.0.0.1 -p "$port" -t knx/status -C 1 -W 5)
    [ "$got" = offline ] || fail "status after Ctrl-C: '$got', expected offline"
    ;;
  mqtt-to-bus)
    start_bridge --map "$tmp/map.txt" || exit 1
    start_monitor --count 9 --timeout 30
    # The bridge's own writes come back from the bus to its state topics.
    subscribe 8 -t 'knx/1/0/+/state'
    publish -t knx/1/0/1/set -m true
    publish -t knx/1/0/2/set -m '{"value":128}'
    publish -t knx/1/0/3/set -m 21.5
    publish -t knx/1/0/4/set -m '"12:30:00/1"'
    publish -t knx/1/0/5/set -m 'date:2024-04-30'
    publish -t knx/1/0/6/set -m 100
    publish -t knx/1/0/7/set -m '"Hello"'
    publish -t knx/1/0/3/read -n
    publish -t knx/1/0/1/set -m false
    wait "$monitor_pid"
    sed -E 's/^\{"time":"[^"]*","source":"[^"]*",//; s/,"bits".*//' "$tmp/mon.out" >"$tmp/got.txt"
    cat >"$tmp/want.txt" <<'WANT'
"ga":"1/0/1","kind":"write","hex":"01"
"ga":"1/0/2","kind":"write","hex":"80"
"ga":"1/0/3","kind":"write","hex":"0c33"
"ga":"1/0/4","kind":"write","hex":"2c1e00"
"ga":"1/0/5","kind":"write","hex":"1e0418"
"ga":"1/0/6","kind":"write","hex":"42c80000"
"ga":"1/0/7","kind":"write","hex":"48656c6c6f000000000000000000"
"ga":"1/0/3","kind":"read","hex":""
"ga":"1/0/1","kind":"write","hex":"00"
WANT
    diff "$tmp/want.txt" "$tmp/got.txt" >&2 || fail "MQTT to bus: the telegrams differ"
    wait_sub
    normalise <"$tmp/sub.out" >"$tmp/got.txt"
    cat >"$tmp/want.txt" <<'WANT'
knx/1/0/1/state {"ok":true,"value":true,"dpt":"1.1","ivt":2,"type":"Bool","hex":"01","source":S,"time":T}
knx/1/0/2/state {"ok":true,"value":128,"dpt":"5.1","ivt":6,"type":"Byte","hex":"80","source":S,"time":T}
knx/1/0/3/state {"ok":true,"value":21.5,"dpt":"9.1","ivt":3,"type":"Float","hex":"0c33","source":S,"time":T}
knx/1/0/4/state {"ok":true,"value":"12:30:00","weekday":1,"dpt":"10.1","ivt":15,"type":"DayTime","hex":"2c1e00","source":S,"time":T}
knx/1/0/5/state {"ok":true,"value":"2024-04-30","dpt":"11.1","ivt":11,"type":"Date","hex":"1e0418","source":S,"time":T}
knx/1/0/6/state {"ok":true,"value":1e+02,"dpt":"14.56","ivt":3,"type":"Float","hex":"42c80000","source":S,"time":T}
knx/1/0/7/state {"ok":true,"value":"Hello","dpt":"16.0","ivt":10,"type":"String","hex":"48656c6c6f000000000000000000","source":S,"time":T}
knx/1/0/1/state {"ok":true,"value":false,"dpt":"1.1","ivt":2,"type":"Bool","hex":"00","source":S,"time":T}
WANT
    diff "$tmp/want.txt" "$tmp/got.txt" >&2 || fail "MQTT to bus: the states of the bridge's own writes differ"
    stop_bridge
    ;;
  misfit)
    start_bridge --map "$tmp/map.txt" || exit 1
    start_monitor --timeout 2
    subscribe 2 -t 'knx/+/+/+/error'
    publish -t knx/1/0/3/set -m warm
    publish -t knx/9/0/9/set -m 1
    wait_sub
    wait "$monitor_pid"
    cat >"$tmp/want.txt" <<'WANT'
knx/1/0/3/error {"topic":"knx/1/0/3/set","payload":"warm","error":"VALUE: expected TYPE:TEXT (for example float:21.5), got 'warm'"}
knx/9/0/9/error {"topic":"knx/9/0/9/set","payload":"1","error":"9/0/9 has no DPT in the map"}
WANT
    diff "$tmp/want.txt" "$tmp/sub.out" >&2 || fail "misfit: the error messages differ"
    grep -q "^WARN  Bridge.cpp:161 Refuse - 'knx/1/0/3/set' 'warm' not sent: VALUE: expected TYPE:TEXT (for example float:21.5), got 'warm'$" \
      "$tmp/bridge.err" || fail "misfit: no log line: $(cat "$tmp/bridge.err")"
    [ ! -s "$tmp/mon.out" ] || fail "misfit: the bus saw $(cat "$tmp/mon.out")"
    got=$(mosquitto_sub -h 127.0.0.1 -p "$port" -t knx/status -C 1 -W 5)
    [ "$got" = online ] || fail "status while running: '$got', expected online"
    # Killed without a word: the broker publishes the last will.
    kill -KILL "$bridge_pid"
    wait "$bridge_pid" 2>/dev/null
    bridge_pid=""
    got=$(mosquitto_sub -h 127.0.0.1 -p "$port" -t knx/status -C 1 -W 5)
    [ "$got" = offline ] || fail "last will: '$got', expected offline"
    ;;
  discovery)
    fixture="${TAV_KNXPROJ_FIXTURE:?}"
    "${runner[@]}" "$fixture" "$tmp/project.knxproj" 20 >/dev/null || { fail "no project fixture"; exit 1; }
    start_bridge --map "$tmp/project.knxproj" --discovery homeassistant || exit 1
    count=$(sed -nE 's/.* ([0-9]+) discovery configs$/\1/p' "$tmp/bridge.err")
    [ -n "$count" ] && [ "$count" -gt 0 ] || fail "discovery: no configs announced: $(cat "$tmp/bridge.err")"
    mosquitto_sub -h 127.0.0.1 -p "$port" -v -t 'homeassistant/#' -C "${count:-1}" -W 10 >"$tmp/sub.out"
    [ "$(wc -l <"$tmp/sub.out")" = "$count" ] || fail "discovery: $(wc -l <"$tmp/sub.out") configs of $count"
    diff "$here/data/bridge-discovery.txt" "$tmp/sub.out" >&2 || fail "discovery: the configs differ"
    stop_bridge
    # A second run announces the same entities under the same unique ids.
    start_bridge --map "$tmp/project.knxproj" --discovery homeassistant || exit 1
    mosquitto_sub -h 127.0.0.1 -p "$port" -v -t 'homeassistant/#' -C "${count:-1}" -W 10 >"$tmp/again.out"
    diff "$tmp/sub.out" "$tmp/again.out" >&2 || fail "discovery: the second run's configs differ"
    stop_bridge
    ;;
  broker-restart)
    start_bridge --map "$tmp/map.txt" || exit 1
    start_monitor --count 1 --timeout 60
    bash "$here/mosquitto-fixture.sh" stop-keep "$mqtt_state"
    for _ in $(seq 1 100); do
      grep -qs "lost the MQTT broker" "$tmp/bridge.err" && break
      sleep 0.05
    done
    grep -qs "lost the MQTT broker" "$tmp/bridge.err" || fail "broker restart: the bridge did not notice"
    bash "$here/mosquitto-fixture.sh" restart "$mqtt_state"
    # The bridge is still waiting for its next attempt: the broker keeps this for its session.
    publish -t knx/1/0/3/set -m 21.5
    wait "$monitor_pid"
    sleep 1
    lines=$(grep -c '"ga":"1/0/3","kind":"write","hex":"0c33"' "$tmp/mon.out")
    [ "$lines" = 1 ] || fail "broker restart: the command came $lines times: $(cat "$tmp/mon.out")"
    [ "$(grep -c "connected to the MQTT broker" "$tmp/bridge.err")" = 2 ] || fail "broker restart: not reconnected"
    stop_bridge
    ;;
  late-broker)
    # The broker is not there at the start: the bridge keeps trying, and what the bus said in
    # the meantime is published once it is there. An earlier group's state is cleared first.
    mosquitto_pub -h 127.0.0.1 -p "$port" -r -n -t knx/1/0/3/state
    bash "$here/mosquitto-fixture.sh" stop-keep "$mqtt_state"
    "${runner[@]}" "$tavknx" bridge --url "$url" --mqtt "mqtt://127.0.0.1:$port" --client-id test-late --map "$tmp/map.txt" \
      --log-level info 2>"$tmp/bridge.err" &
    bridge_pid=$!
    for _ in $(seq 1 200); do
      grep -qs "bridging knxd" "$tmp/bridge.err" && break
      sleep 0.05
    done
    "${runner[@]}" "$sender" "$url" 1 1/0/3 00800c1a >/dev/null || fail "ApduSender failed"
    bash "$here/mosquitto-fixture.sh" restart "$mqtt_state"
    got=$(mosquitto_sub -h 127.0.0.1 -p "$port" -t knx/1/0/3/state -C 1 -W 30 | normalise)
    [ "$got" = '{"ok":true,"value":21.0,"dpt":"9.1","ivt":3,"type":"Float","hex":"0c1a","source":S,"time":T}' ] \
      || fail "late broker: '$got'"
    grep -q "^WARN  MqttSession.cpp:140 Start - cannot reach the MQTT broker at 127.0.0.1:$port: Connection refused; trying again, at most every 10 s$" \
      "$tmp/bridge.err" || fail "late broker: no WARN line: $(cat "$tmp/bridge.err")"
    stop_bridge
    ;;
  knxd-restart)
    start_bridge --map "$tmp/map.txt" || exit 1
    bash "$here/knxd-fixture.sh" restart "$knxd_state"
    for _ in $(seq 1 200); do
      grep -qs "connected to knxd at '$url' again" "$tmp/bridge.err" && break
      sleep 0.05
    done
    grep -qs "connected to knxd at '$url' again" "$tmp/bridge.err" || fail "knxd restart: not reconnected: $(cat "$tmp/bridge.err")"
    subscribe 1 -t knx/1/0/3/state
    "${runner[@]}" "$sender" "$url" 1 1/0/3 00800c1a >/dev/null
    wait_sub
    grep -q '"value":21.0' "$tmp/sub.out" || fail "knxd restart: no state after it: $(cat "$tmp/sub.out")"
    stop_bridge
    ;;
  usage)
    # Bad options: exit 2 and one line naming the option; a CA file that cannot be used: exit 1.
    expect_usage() {
      local want="$1"
      shift
      "${runner[@]}" "$tavknx" bridge "$@" >"$tmp/out" 2>"$tmp/err"
      local code=$?
      [ "$code" = 2 ] || fail "bridge $*: exit $code, expected 2"
      [ "$(head -1 "$tmp/err")" = "tavknx bridge: $want" ] || fail "bridge $*: '$(head -1 "$tmp/err")', expected '$want'"
      [ ! -s "$tmp/out" ] || fail "bridge $*: stdout '$(cat "$tmp/out")'"
    }
    expect_usage "--map: the bridge needs a map file or an ETS project (.knxproj)"
    expect_usage "--mqtt: expected mqtt://HOST[:PORT] or mqtts://HOST[:PORT], got 'http://x'" --map "$tmp/map.txt" --mqtt http://x
    expect_usage "--mqtt port: expected 1-65535, got '0'" --map "$tmp/map.txt" --mqtt mqtt://h:0
    expect_usage "--prefix: expected topic levels without wildcards or empty levels (for example knx), got 'knx/#'" \
      --map "$tmp/map.txt" --prefix 'knx/#'
    expect_usage "--discovery: expected topic levels without wildcards or empty levels (for example knx), got '/ha'" \
      --map "$tmp/map.txt" --discovery /ha
    expect_usage "--password-file: needs --username" --map "$tmp/map.txt" --password-file "$tmp/map.txt"
    expect_usage "--password-file: cannot read '$tmp/none'" --map "$tmp/map.txt" --username u --password-file "$tmp/none"
    expect_usage "expected no arguments, got 1 argument (first extra: 'extra')" extra --map "$tmp/map.txt"
    "${runner[@]}" "$tavknx" bridge --map "$tmp/map.txt" --url "$url" --mqtt "mqtt://127.0.0.1:$port" --tls "$tmp/none.pem" \
      >"$tmp/out" 2>"$tmp/err"
    code=$?
    [ "$code" = 1 ] || fail "--tls without a CA file: exit $code, expected 1"
    grep -qx "tavknx bridge: MQTT TLS with CA file '$tmp/none.pem': Invalid function arguments provided." "$tmp/err" \
      || fail "--tls without a CA file: '$(cat "$tmp/err")'"
    ;;
  login)
    # A broker of its own that lets in only user "bridge": the password from --password-file.
    touch "$tmp/passwd"
    mosquitto_passwd -b "$tmp/passwd" bridge 'Geheim 1' || { fail "mosquitto_passwd failed"; exit 1; }
    chmod 600 "$tmp/passwd"
    MOSQUITTO_PASSWORD_FILE="$tmp/passwd" bash "$here/mosquitto-fixture.sh" start "$tmp/login.state" || exit 1
    login_port="$(cat "$(cat "$tmp/login.state")/port")"
    printf 'Geheim 1\n' >"$tmp/right"
    printf 'wrong\n' >"$tmp/wrong"
    port="$login_port" start_bridge --map "$tmp/map.txt" --username bridge --password-file "$tmp/right"
    got=$(mosquitto_sub -h 127.0.0.1 -p "$login_port" -u bridge -P 'Geheim 1' -t knx/status -C 1 -W 5)
    [ "$got" = online ] || fail "login: status '$got', expected online"
    stop_bridge
    "${runner[@]}" "$tavknx" bridge --url "$url" --mqtt "mqtt://127.0.0.1:$login_port" --client-id test-login-wrong \
      --map "$tmp/map.txt" --username bridge --password-file "$tmp/wrong" 2>"$tmp/bridge.err" &
    bridge_pid=$!
    for _ in $(seq 1 100); do
      grep -qs "refused the connection" "$tmp/bridge.err" && break
      sleep 0.05
    done
    grep -q "^WARN  MqttSession.cpp:205 OnConnect - the MQTT broker at 127.0.0.1:$login_port refused the connection: Connection Refused: not authorised.$" \
      "$tmp/bridge.err" || fail "login: wrong password not reported: $(cat "$tmp/bridge.err")"
    stop_bridge
    bash "$here/mosquitto-fixture.sh" stop "$tmp/login.state"
    ;;
  tls)
    # A broker of its own that speaks TLS only, with a certificate made here for 127.0.0.1.
    make_cert() {
      openssl req -x509 -newkey rsa:2048 -nodes -keyout "$tmp/$1.key" -out "$tmp/$1.pem" -subj /CN=localhost \
        -days 2 -addext "subjectAltName=IP:127.0.0.1" 2>/dev/null || fail "openssl could not make a certificate"
    }
    make_cert broker
    make_cert other
    MOSQUITTO_CERT="$tmp/broker.pem" MOSQUITTO_KEY="$tmp/broker.key" \
      bash "$here/mosquitto-fixture.sh" start "$tmp/tls.state" || exit 1
    tls_port="$(cat "$(cat "$tmp/tls.state")/port")"
    "${runner[@]}" "$tavknx" bridge --url "$url" --mqtt "mqtts://127.0.0.1:$tls_port" --tls "$tmp/broker.pem" \
      --client-id test-tls --map "$tmp/map.txt" --log-level info 2>"$tmp/bridge.err" &
    bridge_pid=$!
    got=$(mosquitto_sub -h 127.0.0.1 -p "$tls_port" --cafile "$tmp/broker.pem" -t knx/status -C 1 -W 10)
    [ "$got" = online ] || fail "tls: status '$got', expected online: $(cat "$tmp/bridge.err")"
    stop_bridge
    # A broker whose certificate the CA file does not vouch for is not trusted.
    "${runner[@]}" "$tavknx" bridge --url "$url" --mqtt "mqtts://127.0.0.1:$tls_port" --tls "$tmp/other.pem" \
      --client-id test-tls-other --map "$tmp/map.txt" --log-level info 2>"$tmp/bridge.err" &
    bridge_pid=$!
    # The handshake fails in this thread (the connect call says so) or in libmosquitto's (its own
    # error line says so), as the timing falls.
    sync="WARN  MqttSession.cpp:140 Start - cannot reach the MQTT broker at 127.0.0.1:$tls_port: A TLS error occurred.; trying again, at most every 10 s"
    async="^WARN  MqttSession.cpp:240 OnLog - libmosquitto: OpenSSL Error\\[0\\]: error:[0-9A-F]*:SSL routines::certificate verify failed$"
    reported() { grep -qxF "$sync" "$tmp/bridge.err" || grep -q "$async" "$tmp/bridge.err"; }
    for _ in $(seq 1 200); do
      reported && break
      sleep 0.05
    done
    reported || fail "tls: the wrong CA file not reported: $(cat "$tmp/bridge.err")"
    grep -q "connected to the MQTT broker" "$tmp/bridge.err" && fail "tls: connected with the wrong CA file"
    stop_bridge
    bash "$here/mosquitto-fixture.sh" stop "$tmp/tls.state"
    ;;
  load)
    rounds="${TAV_BRIDGE_LOAD_ROUNDS:-5000}"
    total=$((rounds * 2))
    start_bridge --map "$tmp/map.txt" || exit 1
    subscribe "$total" -t 'knx/1/0/+/state' -F '%U %p'
    start=$(date +%s.%N)
    "${runner[@]}" "$sender" "$url" "$rounds" 1/0/3 00800c1a 1/0/1 0081 >/dev/null || fail "ApduSender failed"
    wait_sub
    # The end: when the subscriber had the last one.
    end=$(awk 'BEGIN { last = 0 } $1 > last { last = $1 } END { printf "%.6f", last }' "$tmp/sub.out")
    got=$(wc -l <"$tmp/sub.out")
    [ "$got" = "$total" ] || fail "load: $got of $total telegrams published"
    # Latency: from the bridge taking the telegram from knxd ("time") to the subscriber.
    # Both clocks in UTC seconds of the day ("time" has milliseconds, %U nanoseconds).
    awk '{ match($0, /"time":"[^"]*"/); t = substr($0, RSTART + 19, 12); split(t, f, ":");
           bridge = f[1] * 3600 + f[2] * 60 + f[3]; delivered = $1 % 86400;
           d = delivered - bridge; if (d < -43200) d += 86400; print d * 1000 }' "$tmp/sub.out" | sort -n >"$tmp/lat.txt"
    echo "load: $got of $total telegrams published, $(awk -v n="$got" -v s="$start" -v e="$end" 'BEGIN { printf "%.0f telegrams/s from the first sent to the last delivered", n / (e - s) }')," \
      "median telegram-to-publish latency $(awk '{ a[NR] = $1 } END { printf "%.1f ms", a[int((NR + 1) / 2)] }' "$tmp/lat.txt")"
    stop_bridge
    ;;
  *)
    echo "unknown group $group" >&2
    exit 2
    ;;
esac
[ "$failures" = 0 ]
