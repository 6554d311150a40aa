#!/usr/bin/env bash
# Runs tavknx end to end and compares stdout, stderr and exit codes.
# Usage: tavknx-test.sh PATH-TO-TAVKNX GROUP
set -u
tavknx="$1"
group="$2"
failures=0
# The emulator, when cross-built (set by CTest).
read -r -a runner <<<"${TAV_TEST_RUNNER:-}"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT

run() {
  "${runner[@]}" "$tavknx" "$@" >"$tmp/out" 2>"$tmp/err"
  code=$?
}

fail() {
  echo "FAIL: tavknx $*" >&2
  echo "  exit $code" >&2
  echo "  stdout: $(cat "$tmp/out")" >&2
  echo "  stderr: $(cat "$tmp/err")" >&2
  failures=$((failures + 1))
}

# expect CODE STDOUT ARGS...: exact exit code and stdout.
expect() {
  local want_code="$1" want_out="$2"
  shift 2
  run "$@"
  if [ "$code" != "$want_code" ] || [ "$(cat "$tmp/out")" != "$want_out" ]; then
    echo "  expected exit $want_code, stdout: $want_out" >&2
    fail "$@"
  fi
}

# expect_err CODE STDERR-SUBSTRING ARGS...: exact exit code, stderr contains the text.
expect_err() {
  local want_code="$1" want_err="$2"
  shift 2
  run "$@"
  if [ "$code" != "$want_code" ] || ! grep -qF -- "$want_err" "$tmp/err"; then
    echo "  expected exit $want_code, stderr containing: $want_err" >&2
    fail "$@"
  fi
}

# expect_usage STDERR-SUBSTRING ARGS...: exit 2, nothing on stdout, the message on stderr.
expect_usage() {
  local want_err="$1"
  shift
  expect_err 2 "$want_err" "$@"
  if [ -s "$tmp/out" ]; then
    fail "$@"
  fi
}

# no_crash ARGS...: any of the tool's exit codes, never a signal.
no_crash() {
  run "$@"
  if [ "$code" -gt 3 ]; then
    fail "$@"
  fi
}

case "$group" in
decode)
  expect 0 '9.001 DPT_Value_Temp: 21.00 °C = Float 21 [ivt 3, sub-type 0]' decode 9.001 0c1a
  # Every DPT form integrators paste; JSON keeps the short form scripts read.
  for dpt in 9.001 9.1 9,001 DPST-9-1 dpst-9-1 DPT9.001 DPT-9.001; do
    expect 0 '{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.0,"name":"DPT_Value_Temp","unit":"°C"}' decode "$dpt" 0c1a --json
  done
  expect 0 '9.000: Float 21 [ivt 3, sub-type 0]' decode DPT-9 0c1a
  # Bytes as bus monitors and log lines print them.
  for hex in 0c1a '0C 1A' 0c:1a 0x0c1a; do
    expect 0 '{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.0,"name":"DPT_Value_Temp","unit":"°C"}' decode 9.001 "$hex" --json
  done
  expect 0 '{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.0,"name":"DPT_Value_Temp","unit":"°C"}' decode 9.001 0c1a --json
  expect 0 '{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":-0.5,"name":"DPT_Value_Temp","unit":"°C"}' --json decode 9.1 87ce
  expect 0 '{"ok":true,"dpt":"1.1","ivt":2,"type":"Bool","subType":0,"value":true,"name":"DPT_Switch"}' decode 1.001 01 --json
  expect 0 '{"ok":true,"dpt":"7.1","ivt":7,"type":"Word","subType":0,"value":4660,"name":"DPT_Value_2_Ucount","unit":"pulses"}' decode 7.001 1234 --json
  expect 0 '{"ok":true,"dpt":"8.1","ivt":4,"type":"Integer","subType":0,"value":-100,"name":"DPT_Value_2_Count","unit":"pulses"}' decode 8.001 ff9c --json
  expect 0 '{"ok":true,"dpt":"10.1","ivt":15,"type":"DayTime","subType":0,"value":"12:30:00","weekday":1,"name":"DPT_TimeOfDay"}' \
    decode 10.001 2c1e00 --json
  expect 0 '{"ok":true,"dpt":"11.1","ivt":11,"type":"Date","subType":0,"value":"2024-04-30","name":"DPT_Date"}' decode 11.001 1e0418 --json
  expect 0 '{"ok":true,"dpt":"16.1","ivt":10,"type":"String","subType":0,"value":"Hello","name":"DPT_String_8859_1"}' \
    decode 16.001 48656c6c6f000000000000000000 --json
  # Refusals: exit 1, {"ok":false}, the reason in the log on stderr.
  expect 1 '{"ok":false}' decode 9.001 0c --json
  expect_err 1 'ERROR GroupValueOkaValue.cpp' decode 9.001 0c
  expect_err 1 'No valid TimeOfDay (10.001)!' decode 10.001 391e00
  expect_err 1 'Unsupported DPT: 99.1' decode 99.1 1234
  # 31 April passes the validity check and reaches the calendar: its exception leaves the library.
  expect_err 3 'tavknx: exception: Day of month is not valid for year' decode 11.001 1f0418
  expect 3 '' decode 11.001 1f0418 --json
  # The shipped log4cplus example logs to stderr and writes no file.
  (cd "$tmp" && "${runner[@]}" "$tavknx" --log-config "$OLDPWD/../../examples/log4cplus.properties" decode 9.001 0c \
    >"$tmp/out" 2>"$tmp/err")
  code=$?
  if [ "$code" != 1 ] || ! grep -qF 'ERROR GroupValueOkaValue.cpp' "$tmp/err" ||
    grep -v '^#' ../../examples/log4cplus.properties | grep -q 'FileAppender'; then
    fail --log-config examples/log4cplus.properties
  fi
  # --log-level off silences the log, the result stays.
  run decode 9.001 0c --log-level off
  if [ "$code" != 1 ] || [ -s "$tmp/err" ]; then fail decode 9.001 0c --log-level off; fi
  ;;
check)
  expect 0 '9.001 DPT_Value_Temp: valid' check 9.001 0c1a
  expect 0 '{"ok":true,"dpt":"9.1"}' check 9.001 0c1a --json
  expect 1 '{"ok":false}' check 10.001 391e00 --json
  expect 1 '9.001 DPT_Value_Temp: refused (the log lines on stderr say why)' check 9.001 0c
  # --bits: a 1-byte DPT 5 value declared as 16 bits is refused by the bit size check.
  expect_err 1 'unexpected bit size: 16, expected: 8' check 5.001 80 --bits 16
  ;;
encode)
  expect 0 '9.001 DPT_Value_Temp: 0c33 (16 bits)' encode 9.001 float:21.5
  expect 0 '{"ok":true,"dpt":"9.1","hex":"0c33","bits":16,"name":"DPT_Value_Temp","unit":"°C"}' encode 9.001 float:21.5 --json
  expect 0 '{"ok":true,"dpt":"1.1","hex":"01","bits":1,"name":"DPT_Switch"}' encode 1.001 BOOL:true --json
  expect 0 '{"ok":true,"dpt":"7.1","hex":"1234","bits":16,"name":"DPT_Value_2_Ucount","unit":"pulses"}' encode 7.001 word:4660 --json
  expect 0 '{"ok":true,"dpt":"11.1","hex":"1e0418","bits":24,"name":"DPT_Date"}' encode 11.001 date:2024-04-30 --json
  # A bare value is read as the DPT's value type; TYPE:TEXT stays.
  expect 0 '9.001 DPT_Value_Temp: 0c33 (16 bits)' encode 9.001 21.5
  expect 0 '1.001 DPT_Switch: 01 (1 bit)' encode 1.001 on
  expect 0 '1.001 DPT_Switch: 00 (1 bit)' encode 1.001 OFF
  expect 0 '7.001 DPT_Value_2_Ucount: 1234 (16 bits)' encode 7.001 4660
  expect 0 '11.001 DPT_Date: 1e0418 (24 bits)' encode 11.001 2024-04-30
  expect 0 '16.001 DPT_String_8859_1: 48656c6c6f000000000000000000 (112 bits)' encode 16.001 Hello
  expect 0 '16.001 DPT_String_8859_1: 31323a3330000000000000000000 (112 bits)' encode 16.001 12:30
  expect 0 '9.001 DPT_Value_Temp: 0c33 (16 bits)' encode 9.001 3:21.5
  # Times: the weekday by name or the value model's number (1 = Monday), none = no day (0 on the bus).
  expect 0 '10.001 DPT_TimeOfDay: 2c1e00 (24 bits)' encode 10.001 12:30:00/Mon
  expect 0 '10.001 DPT_TimeOfDay: 2c1e00 (24 bits)' encode 10.001 daytime:12:30:00/1
  expect 0 '10.001 DPT_TimeOfDay: ec1e00 (24 bits)' encode 10.001 12:30:00/sun
  expect 0 '10.001 DPT_TimeOfDay: 080f1e (24 bits)' encode 10.001 daytime:08:15:30
  expect 0 '10.001 DPT_TimeOfDay: 080f1e (24 bits)' encode 10.001 08:15:30
  # Negative bare values are values, not options.
  expect 0 '{"ok":true,"dpt":"8.1","hex":"fffb","bits":16,"name":"DPT_Value_2_Count","unit":"pulses"}' encode 8.001 -5 --json
  # What the codec changes is said: a WARN on stderr, "clamped":true; --strict refuses instead.
  expect 0 '9.001 DPT_Value_Temp: 7ffe (16 bits)' encode 9.001 700000
  expect_err 0 'WARN  CodecWarning.cpp:40 CheckCodec - 9.001 DPT_Value_Temp: the codec clamps 700000 to 7ffe, which reads back as 670433.28 (--strict refuses such values)' \
    encode 9.001 700000
  expect 0 '{"ok":true,"dpt":"9.1","hex":"7fff","bits":16,"name":"DPT_Value_Temp","unit":"°C","clamped":true}' encode 9.001 float:32767 --json
  expect_err 0 'WARN  CodecWarning.cpp:40 CheckCodec - 9.001 DPT_Value_Temp: the codec writes 7fff, the KNX invalid code (no value), for 32767 (--strict refuses such values)' \
    encode 9.001 float:32767
  expect_err 0 "WARN  CodecWarning.cpp:40 CheckCodec - 9.001 DPT_Value_Temp: the codec writes -300 as a0ad, which it refuses to read back: outside the DPT's range (--strict refuses such values)" \
    encode 9.001 -300
  expect_err 0 'WARN  CodecWarning.cpp:40 CheckCodec - 8.001 DPT_Value_2_Count: the codec clamps 100000 to 7fff, which reads back as 32767' \
    encode 8.001 100000
  expect_err 0 'WARN  CodecWarning.cpp:40 CheckCodec - 16.001 DPT_String_8859_1: the codec clamps "Hello world, how are you" to 48656c6c6f20776f726c642c2068, which reads back as "Hello world, h"' \
    encode 16.001 'Hello world, how are you'
  expect 1 '9.001 DPT_Value_Temp: refused (the codec clamps 700000 to 7ffe, which reads back as 670433.28; --strict refuses it)' \
    encode 9.001 700000 --strict
  expect_err 1 'tavknx encode: 9.001 DPT_Value_Temp: the codec clamps 700000 to 7ffe, which reads back as 670433.28; --strict refuses it' \
    encode 9.001 700000 --strict
  expect 1 '{"ok":false}' encode 9.001 float:32767 --strict --json
  # Names, units and the value in KNX terms, beside the library's value.
  expect 0 '5.001 DPT_Scaling: 50.2 % = Byte 128 [ivt 6, sub-type 0]' decode 5.001 80
  expect 0 '1.001 DPT_Switch: on = Bool true [ivt 2, sub-type 0]' decode 1.001 01
  expect 0 '1.009 DPT_OpenClose: open = Bool false [ivt 2, sub-type 0]' decode 1.009 00
  expect 0 '7.013 DPT_Brightness: 500 lx = Word 500 [ivt 7, sub-type 0]' decode 7.013 01f4
  expect 0 '7.003 DPT_TimePeriod10MSec: 50 ms = Word 5 [ivt 7, sub-type 0]' decode 7.003 0005
  expect 0 '8.010 DPT_Percent_V16: 12.34 % = Integer 1234 [ivt 4, sub-type 0]' decode 8.010 04d2
  expect 0 '9.001 DPT_Value_Temp: no value (the invalid code) = Float nan [ivt 3, sub-type 0]' decode 9.001 7fff
  expect 0 '14.068 DPT_Value_Common_Temperature: 21.5 °C = Float 21.5 [ivt 3, sub-type 0]' from-knx 14.068 41ac0000
  expect 0 '17.001 DPT_SceneNumber: Byte 5 [ivt 6, sub-type 0]' decode 17.001 05
  expect 0 '{"ok":true,"dpt":"5.1","ivt":6,"type":"Byte","subType":0,"value":128,"name":"DPT_Scaling","unit":"%"}' \
    decode 5.001 80 --json
  # Weekdays by name, the value model's number said: 0 = Sunday, 7 = no day.
  expect 0 '10.001 DPT_TimeOfDay: Mon 12:30:00 = DayTime 12:30:00 Mon (value model weekday 1, 0 = Sunday) [ivt 15, sub-type 0]' \
    decode 10.001 2c1e00
  expect 0 '10.001 DPT_TimeOfDay: Sun 12:30:00 = DayTime 12:30:00 Sun (value model weekday 0, 0 = Sunday) [ivt 15, sub-type 0]' \
    decode 10.001 ec1e00
  expect 0 '10.001 DPT_TimeOfDay: 12:30:00, no day = DayTime 12:30:00 no day (value model weekday 7) [ivt 15, sub-type 0]' \
    decode 10.001 0c1e00
  # NaN asks for the invalid code; rounding within the DPT's resolution is no clamping.
  run encode 9.001 nan
  if [ "$code" != 0 ] || [ -s "$tmp/err" ]; then fail encode 9.001 nan; fi
  for value in 21.555 0.004 -273 670760; do
    run encode 9.001 "$value" --strict
    if [ "$code" != 0 ] || [ -s "$tmp/err" ]; then fail encode 9.001 "$value" --strict; fi
  done
  # The value type must be exactly the DPT's: a float on DPT 1 is refused.
  expect 1 '{"ok":false}' encode 1.001 float:1 --json
  ;;
from-knx)
  expect 0 '{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.0,"name":"DPT_Value_Temp","unit":"°C"}' from-knx 9.001 0c1a --json
  # DPT 0.0: the front picks the default DPT for the size and reports it.
  expect 0 '{"ok":true,"dpt":"9.0","ivt":3,"type":"Float","subType":0,"value":21.0}' from-knx 0.0 0c1a --json
  expect 0 '{"ok":true,"dpt":"9.1","ivt":0,"type":"Invalid","subType":0,"value":null,"name":"DPT_Value_Temp","unit":"°C"}' from-knx 9.001 7fff --json
  expect 0 '{"ok":true,"dpt":"1.1","ivt":2,"type":"Bool","subType":0,"value":false,"name":"DPT_Switch"}' from-knx 1.001 00 --json
  expect 0 '9.001 DPT_Value_Temp: 21.00 °C = Float 21 [ivt 3, sub-type 0]' from-knx 9.1 0c1a
  # A DPT without map entry is accepted with an empty value.
  expect 0 '{"ok":true,"dpt":"99.1","ivt":1,"type":"Empty","subType":0,"value":null}' from-knx 99.1 1234 --json
  expect_err 1 'unexpected bit size: 8, expected: 16' from-knx 9.001 0c
  expect_usage 'more than a DPT' from-knx 16.001 "$(printf '00%.0s' $(seq 40))"
  ;;
to-knx)
  expect 0 '{"ok":true,"dpt":"9.1","hex":"0c33","bits":16,"name":"DPT_Value_Temp","unit":"°C"}' to-knx 9.001 float:21.5 --json
  expect 0 '9.001 DPT_Value_Temp: 0c33 (16 bits)' to-knx DPST-9-1 float:21.5
  expect 0 '{"ok":true,"dpt":"1.1","hex":"01","bits":1,"name":"DPT_Switch"}' to-knx 0.0 bool:true --json
  # A DPT without entry leaves the group value untouched.
  expect 0 '{"ok":true,"dpt":"99.1","hex":"","bits":0}' to-knx 99.1 float:1 --json
  expect_err 1 'Convert to KNX value failed for DPT = 9.1 val = Float nan' to-knx 9.001 float:nan
  expect 1 '{"ok":false}' to-knx 9.001 float:nan --json
  ;;
dpts)
  run dpts
  if [ "$code" != 0 ] || ! grep -qxE '9\.001 +16 +Float \(3\) +PhysicalQuantity \(3003\) +DPT_Value_Temp °C' "$tmp/out" ||
    ! grep -qxE '1\.xxx +1 +Bool \(2\) +Generic \(0\)' "$tmp/out"; then fail dpts; fi
  run dpts --names
  if [ "$code" != 0 ] || ! grep -qxE '9\.001 +DPT_Value_Temp +°C' "$tmp/out" ||
    ! grep -qxE '1\.001 +DPT_Switch +\(0 off, 1 on\)' "$tmp/out" || ! grep -qxE '5\.001 +DPT_Scaling +%' "$tmp/out"; then
    fail dpts --names
  fi
  run dpts --json
  if ! grep -qxF '{"dpt":"9.1","bits":16,"ivt":3,"type":"Float","subType":3003,"subTypeName":"PhysicalQuantity","name":"DPT_Value_Temp","unit":"°C"}' "$tmp/out"; then
    fail dpts --json name
  fi
  run dpts --names --json
  if ! grep -qxF '{"dpt":"1.1","name":"DPT_Switch","unit":"","zero":"off","one":"on"}' "$tmp/out"; then fail dpts --names --json; fi
  run dpts --json
  if [ "$code" != 0 ] || ! grep -qF '{"dpt":"1.x","bits":1,"ivt":2,"type":"Bool","subType":0,' "$tmp/out"; then
    fail dpts --json
  fi
  ;;
ids)
  expect 0 'co 1 ld 1 id: 100101' ids co-value 1 1
  expect 0 '{"ok":true,"co":5,"ld":2,"id":200500}' ids co-channel 5 2 --json
  expect 0 '{"ok":true,"n":3,"ld":2,"parameterType":"number","channel":261030,"value":261031}' \
    ids parameter 3 2 number --json
  expect 1 '{"ok":false}' ids co-value 521 1 --json
  # The library logs nothing here: the tool says why, on stdout and stderr, at any log level.
  expect 1 'co 521 ld 1: refused (no object-model id: CO numbers go up to 520)' ids co-value 521 1 --log-level off
  expect_err 1 'tavknx ids: co 521 ld 1: no object-model id: CO numbers go up to 520' ids co-value 521 1 --log-level off
  expect_err 1 'tavknx ids: parameter 51 ld 1 ip: no object-model id: parameter numbers go up to 50' \
    ids parameter 51 1 ip --json
  expect 1 '{"ok":false}' ids parameter 51 1 ip --json
  expect 0 '100101: value of CO 1 of logical device 1' ids describe 100101
  expect 0 '{"ok":true,"id":261031,"ld":2,"n":3,"parameterType":"number","kind":"parameter-value"}' \
    ids describe 261031 --json
  expect 0 '{"ok":true,"id":100021,"ld":1,"kind":"app-control-state"}' ids describe 100021 --json
  expect 0 '{"ok":true,"id":1000,"kind":"device"}' ids describe 1000 --json
  expect 0 '{"ok":true,"id":300100,"kind":"unknown"}' ids describe 300100 --json
  expect 0 '{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":"Generic","default":"3/2:0","defaultInternal":"3.7/2:0"}' \
    ids dpt 9.001 --json
  expect_usage 'LD: expected the logical device, 1 or 2' ids co-value 1 3
  expect_usage 'TYPE: expected ip, number or text' ids parameter 1 1 bogus
  expect_usage 'unknown subcommand' ids bogus
  expect_usage 'ID: expected a whole number from 0 to 4294967295' ids describe 4294967296
  ;;
config)
  printf '<?xml version="1.0"?>\n<tavapphostconfig><AppDebugMode>true</AppDebugMode></tavapphostconfig>\n' >"$tmp/c.xml"
  run config "$tmp/c.xml" --json
  if [ "$code" != 0 ] || ! grep -qF '"found":true,"loaded":true,' "$tmp/out"; then fail config; fi
  # A file that exists but is no configuration: said in the result, at any log level.
  printf 'root:x:0:0:root:/root:/bin/bash\n' >"$tmp/passwd"
  run config "$tmp/passwd" --json --log-level off
  if [ "$code" != 0 ] || ! grep -qF "{\"ok\":true,\"file\":\"$tmp/passwd\",\"found\":true,\"loaded\":false,\"appDebugMode\":false," "$tmp/out" ||
    [ -s "$tmp/err" ]; then
    fail config passwd --json
  fi
  run config "$tmp/passwd"
  if [ "$code" != 0 ] || [ "$(head -1 "$tmp/out")" != "file: $tmp/passwd (cannot be read as the configuration: standard settings)" ] ||
    ! grep -qF 'ERROR AppHostConfig.cpp:94 [tavknx] LoadConfigurationFile - Falling back to standard configuration.' "$tmp/err"; then
    fail config passwd
  fi
  run config "$tmp/missing.xml"
  if [ "$(head -1 "$tmp/out")" != "file: $tmp/missing.xml (not found: standard settings)" ]; then fail config missing text; fi
  run config "$tmp/missing.xml" --json
  if [ "$code" != 0 ] || ! grep -qF '"found":false,"loaded":false,"appDebugMode":false' "$tmp/out" ||
    ! grep -qF 'cannot be read' "$tmp/err"; then
    fail config missing
  fi
  ;;
demo)
  start=$(date +%s)
  run demo --telegrams ../../examples/telegrams.txt
  if [ "$code" != 0 ] || ! grep -qF 'SetValue docket: answered yes, valid yes, reply "21"' "$tmp/out" ||
    ! grep -qF 'timed out after 300 ms and was sent again' "$tmp/out" ||
    ! grep -qF "WaitForAnswer - Timeout (00:00:00.300000) occured for request ID '1'" "$tmp/err" ||
    ! grep -qF 'exception: Day of month is not valid for year  Date 2024-04-31 (11/0)' "$tmp/out" ||
    ! grep -qF 'Byte 11 (6/0)                             Float 5.4e-323 (3/0)' "$tmp/out" ||
    ! grep -qF "dimming: up, step code 3 (table-driven: the 4 bits kept in the float's raw bytes, read as 5.4e-323)" "$tmp/out"; then
    fail demo
  fi
  if [ $(($(date +%s) - start)) -gt 5 ]; then fail demo took too long; fi
  run demo --json --telegrams ../../examples/telegrams.txt
  if [ "$code" != 0 ] || ! grep -qF '"switch":{"ok":true,"dpt":"9.1","ivt":3,"type":"Float","subType":0,"value":21.0}' "$tmp/out"; then
    fail demo --json
  fi
  printf '9.001 0c1a\n9.001 zz # broken\n' >"$tmp/bad.txt"
  expect_usage 'bad.txt:2: HEX: expected hex digits' demo --telegrams "$tmp/bad.txt"
  expect_usage 'cannot read' demo --telegrams "$tmp/none.txt"
  ;;
usage)
  expect_usage 'expected a COMMAND' 
  expect_usage "unknown command 'bogus'" bogus
  expect_usage 'expected DPT HEX, got 1 argument' decode 9.1
  expect_usage 'HEX: expected an even number of hex digits' decode 9.1 0c1
  expect_usage 'HEX: expected hex digits' decode 9.1 0g
  expect_usage "HEX: expected an even number of hex digits (two per byte, for example 0c1a), got 3 digits '0C 1'" \
    decode 9.1 '0C 1'
  expect_usage "HEX: expected two hex digits per byte between separators (for example 0c 1a), got '0 c1a'" \
    decode 9.1 '0 c1a' 
  expect_usage 'DPT: expected MAIN.SUB' decode x.1 00
  expect_usage 'DPT main number: expected a whole number from 0 to 65535' decode 65536.1 00
  expect_usage 'DPT sub number: expected a whole number from 0 to 65535' check 9.99999999999999999999 00
  expect_usage '--bits: expected a whole number from 0 to 255' from-knx 9.1 0c1a --bits 256
  expect_usage '--bits: expected a whole number from 0 to 255' decode 9.1 0c1a --bits -1
  expect_usage 'expected DPT VALUE' encode 9.1
  expect_usage "VALUE: DPT 99.001 has no value type to read '21.5' as; give TYPE:TEXT (for example float:21.5)" \
    encode 99.1 21.5
  expect_usage "VALUE: DPT 0.000 has no value type to read 'true' as" to-knx 0.0 true
  expect_usage "VALUE float: expected a decimal number, nan, inf or -inf, got 'warm'" encode 9.001 warm
  expect_usage "VALUE daytime: the weekday after '/' must be Mon, Tue, Wed, Thu, Fri, Sat, Sun or the value model's number 0-6 (0 = Sunday, 1 = Monday), got '12:00:00/Xyz'" \
    encode 10.001 12:00:00/Xyz
  expect_usage 'VALUE: unknown type' to-knx 9.1 real:1
  expect_usage 'VALUE float: expected a decimal number' encode 9.1 float:abc
  expect_usage 'VALUE byte: expected a whole number from 0 to 255' encode 5.1 byte:256
  expect_usage 'VALUE integer: expected a whole number from -2147483648 to 2147483647' encode 6.1 integer:2147483648
  expect_usage 'VALUE date: expected YYYY-MM-DD' encode 11.1 date:2024-4-30
  expect_usage 'VALUE time: the weekday after' encode 10.1 time:12:00:00/7
  expect_usage "VALUE bool: expected true, false, on, off, 1 or 0, got 'yes'" encode 1.1 bool:yes
  expect_usage "VALUE bool: expected true, false, on, off, 1 or 0, got 'yes'" encode 1.1 yes
  expect_usage "VALUE: unknown type 'Celsius'" encode 9.001 Celsius:21
  expect_usage '--log-level: expected trace, debug, info, warn, error or off' decode 9.1 0c1a --log-level loud
  expect_usage 'unrecognised option' decode 9.1 0c1a --frobnicate
  expect_usage 'GA: expected a group address MAIN/MIDDLE/SUB' send 1/2/3/4 9.1 float:1
  expect_usage "--count: expected a whole number" monitor --count -1
  expect_usage 'expected no arguments' dpts extra
  ;;
garbage)
  big=$(printf 'f%.0s' $(seq 5000))
  for args in "decode" "decode ''" "decode 9.1 ''" "decode '' ''" "decode . ." "decode 9. 00" "decode .1 00" \
    "decode 0.0 00" "decode 0.0 ''" "check 0.0 ''" "from-knx 0.0 ''" "from-knx 10.1 00" "decode 10.1 00" \
    "decode 19.1 00" "decode 16.1 ff" "decode 232.600 ff" "decode 4.1 ff" "decode 11.1 000000" "decode 11.1 ffffff" \
    "decode 19.1 ffffffffffffffff" "decode 14.1 7fc00000" "decode 2.1 03" "decode 25.1 00" "decode 99999999999999999999.1 00" \
    "encode 19.1 datetime:9999-99-99T99:99:99" "encode 11.1 date:0000-00-00" "encode 10.1 time:99:99:99" \
    "to-knx 10.1 daytime:23:59:59/6" "encode 9.1 float:1e308" "to-knx 9.1 float:-inf" "encode 0.0 empty" \
    "to-knx 0.0 invalid" "encode 9.1 3:21.5" "to-knx 9.1 1039:21.5" "encode 9.1 99999999999:1" \
    "to-knx 5.1 byte:-1" "ids describe 0" "ids describe 4294967295" "ids co-value 65535 1" "ids co-value 99999 1" \
    "ids parameter 0 1 2" "ids dpt 65535.65535" "config /" "config /dev/null" "--json" "--log-level" "decode --bits"; do
    eval "no_crash $args"
  done
  no_crash decode 9.1 "$big"
  no_crash decode "$big" 00
  no_crash encode 16.1 "string:$big"
  no_crash to-knx 16.1 "string:$big"
  no_crash decode $'\xff\xfe' $'\xc3\x28'
  no_crash encode 16.001 $'string:\xff\xfe\x00'
  no_crash to-knx 4.001 $'string:\xc3\xa9'
  no_crash $'\xff' $'\x80'
  no_crash ids describe $'\xff'
  ;;
project)
  # The fixture installation of the project reader's tests, written by KnxprojFixture.
  unset TAVKNX_PROJECT_PASSWORD
  fixture() { "${runner[@]}" "$TAV_KNXPROJ_FIXTURE" "$@" || { echo "KnxprojFixture $* failed" >&2; exit 1; }; }
  fixture "$tmp/ets5.knxproj" 20
  fixture "$tmp/ets5-protected.knxproj" 20 'Geheim 1'
  fixture "$tmp/ets4-protected.knxproj" 11 'Geheim 1'
  fixture "$tmp/ets6-protected.knxproj" 22 'Geheim 1'
  expect 0 'project P-0242: Haus & Hof
  schema 20, tool 5.7.1093.38570, group address style ThreeLevel, last modified 2023-05-04T10:11:12.123Z
group addresses: 5
  0/0/1  -      Unused
  1/0/0  1.001  Kitchen light
  1/0/1  1.001  Kitchen light central
  1/0/2  1      Kitchen light status
  2/2/0  9.001  Living temperature (data secure)
devices: 2
  1.1.2  Temperature Sensor, order number TS-1.01, manufacturer MDT technologies
    3  Temperature  Measure  9.001  CRT  2/2/0
  1.1.5  Kitchen actuator, order number AKS-1216.01, manufacturer MDT technologies
    0  Channel A  Switch on/off  1.001  CWU  1/0/0  1/0/1
    1  Kitchen status  Status  1.011  CRT  1/0/2' project "$tmp/ets5.knxproj"
  # The application program of 1.1.2 is not in the archive: its objects come from the instance.
  expect_err 0 'WARN  ProjectXmlReader.cpp:111 ReadProject - device 1.1.2: application program M-0083_A-0099-10-AAAA is missing' \
    project "$tmp/ets5.knxproj"
  expect 0 '{"info":{"projectId":"P-0242","name":"Haus & Hof","schemaVersion":20,"toolVersion":"5.7.1093.38570","groupAddressStyle":"ThreeLevel","lastModified":"2023-05-04T10:11:12.123Z"},"groupAddresses":[{"address":"0/0/1","raw":1,"name":"Unused","description":"","dpt":null,"dataSecure":false},{"address":"1/0/0","raw":2048,"name":"Kitchen light","description":"ceiling","dpt":{"main":1,"sub":1},"dataSecure":false},{"address":"1/0/1","raw":2049,"name":"Kitchen light central","description":"","dpt":{"main":1,"sub":1},"dataSecure":false},{"address":"1/0/2","raw":2050,"name":"Kitchen light status","description":"","dpt":{"main":1,"sub":null},"dataSecure":false},{"address":"2/2/0","raw":4608,"name":"Living temperature","description":"","dpt":{"main":9,"sub":1},"dataSecure":true}],"devices":[{"address":"1.1.2","name":"Temperature Sensor","orderNumber":"TS-1.01","manufacturer":"MDT technologies","communicationObjects":[{"number":3,"name":"Temperature","function":"Measure","dpt":{"main":9,"sub":1},"flags":"CRT","groupAddresses":["2/2/0"]}]},{"address":"1.1.5","name":"Kitchen actuator","orderNumber":"AKS-1216.01","manufacturer":"MDT technologies","communicationObjects":[{"number":0,"name":"Channel A","function":"Switch on/off","dpt":{"main":1,"sub":1},"flags":"CWU","groupAddresses":["1/0/0","1/0/1"]},{"number":1,"name":"Kitchen status","function":"Status","dpt":{"main":1,"sub":11},"flags":"CRT","groupAddresses":["1/0/2"]}]}]}' \
    project "$tmp/ets5.knxproj" --json
  map='# Group address map of ETS project P-0242 (Haus & Hof)
# 0/0/1;?  # Unused
1/0/0;1.001  # Kitchen light
1/0/1;1.001  # Kitchen light central
1/0/2;1  # Kitchen light status
2/2/0;9.001  # Living temperature'
  expect 0 "$map" project "$tmp/ets5.knxproj" --format map
  expect 0 "$map" project --format map "$tmp/ets5.knxproj" --password-file /dev/null

  # Passwords: the first line of --password-file (line end and CR dropped), else the
  # environment; the file wins over the environment.
  printf 'Geheim 1\n' >"$tmp/password"
  printf 'Geheim 1\r\nsecond line\n' >"$tmp/password-crlf"
  printf 'geheim 1' >"$tmp/password-wrong"
  for project in ets4-protected ets5-protected ets6-protected; do
    expect 0 "$map" project "$tmp/$project.knxproj" --format map --password-file "$tmp/password"
    expect 0 "$map" project "$tmp/$project.knxproj" --format map --password-file "$tmp/password-crlf"
    TAVKNX_PROJECT_PASSWORD='Geheim 1' expect 0 "$map" project "$tmp/$project.knxproj" --format map
    TAVKNX_PROJECT_PASSWORD=wrong expect 0 "$map" project "$tmp/$project.knxproj" --format map \
      --password-file "$tmp/password"
    expect_err 1 'tavknx project: project is password-protected: give --password-file or TAVKNX_PROJECT_PASSWORD' \
      project "$tmp/$project.knxproj"
    [ -s "$tmp/out" ] && fail project "$tmp/$project.knxproj" "(stdout not empty)"
    expect_err 1 'tavknx project: wrong project password' project "$tmp/$project.knxproj" \
      --password-file "$tmp/password-wrong"
    TAVKNX_PROJECT_PASSWORD='geheim 1' expect_err 1 'tavknx project: wrong project password' \
      project "$tmp/$project.knxproj" --json
    [ -s "$tmp/out" ] && fail project "$tmp/$project.knxproj" --json "(stdout not empty)"
  done

  # Files that are no project: exit 1, the file and the reason on stderr.
  printf 'Address;DatapointType\n' >"$tmp/text.knxproj"
  head -c 300 "$tmp/ets5.knxproj" >"$tmp/truncated.knxproj"
  : >"$tmp/empty.knxproj"
  expect_err 1 "tavknx project: $tmp/text.knxproj: not a zip archive" project "$tmp/text.knxproj"
  expect_err 1 "tavknx project: $tmp/truncated.knxproj: not a zip archive" project "$tmp/truncated.knxproj"
  expect_err 1 "tavknx project: $tmp/empty.knxproj:" project "$tmp/empty.knxproj"
  expect_err 1 "tavknx project: $tmp/missing.knxproj: cannot read" project "$tmp/missing.knxproj"
  expect_err 1 "tavknx project: $tmp:" project "$tmp"

  expect_usage 'tavknx project: expected FILE, got 0 arguments' project
  expect_usage 'tavknx project: expected FILE, got 2 arguments' project a b
  expect_usage "tavknx project: --format: expected 'text' or 'map', got 'xml'" project "$tmp/ets5.knxproj" --format xml
  expect_usage 'tavknx project: --format map and --json: give one of them' project "$tmp/ets5.knxproj" --format map --json
  expect_usage "tavknx project: --password-file: cannot read '$tmp/missing'" \
    project "$tmp/ets5-protected.knxproj" --password-file "$tmp/missing"
  # Never a password on the command line.
  expect_usage "tavknx project: unrecognised option '--password'" project "$tmp/ets5-protected.knxproj" --password x
  # send takes the DPT from a project map; without one the group address needs a DPT argument.
  expect_usage 'GA: 0/0/1 has no DPT in the map; give one: send GA DPT VALUE' \
    send --url local:/nonexistent --map "$tmp/ets5.knxproj" 0/0/1 bool:true
  expect_usage 'GA: 5/5/5 has no DPT in the map; give one: send GA DPT VALUE' \
    send --url local:/nonexistent --map "$tmp/ets5.knxproj" 5/5/5 bool:true
  expect_usage 'GA: 4/1024 has no DPT in the map; give one: send GA DPT VALUE' \
    send --url local:/nonexistent --map "$tmp/ets5.knxproj" 4/1024 bool:true
  expect_usage 'tavknx send: expected GA DPT VALUE, got 2 arguments' send 1/0/0 bool:true
  expect_err 1 'tavknx send: --map: project is password-protected: give --password-file or TAVKNX_PROJECT_PASSWORD' \
    send --url local:/nonexistent --map "$tmp/ets5-protected.knxproj" 1/0/0 bool:true
  # The DPT found (1.001), the value encoded; then knxd is not there: exit 1.
  expect_err 1 'local:/nonexistent' send --url local:/nonexistent --map "$tmp/ets5.knxproj" 1/0/0 bool:true
  ;;
help)
  for command in "" decode check encode from-knx to-knx dpts ids config demo monitor send project; do
    run $command --help
    if [ "$code" != 0 ] || ! grep -q '^Usage: tavknx' "$tmp/out" || ! grep -q 'Examples' "$tmp/out"; then
      fail $command --help
    fi
    # No heading over nothing: an "Options of" line is followed by an option.
    if grep -A1 '^Options of' "$tmp/out" | grep -qx ''; then fail $command --help "(empty Options heading)"; fi
  done
  ;;
examples)
  # Every example of the --help pages runs: exit 0, or 1 where its comment says "refused".
  # Live-bus and project examples need knxd or a project file: knxd-test.sh runs those.
  cp ../../examples/telegrams.txt "$tmp/my-telegrams.txt"
  printf '<?xml version="1.0"?>\n<tavapphostconfig><AppDebugMode>true</AppDebugMode></tavapphostconfig>\n' \
    >"$tmp/tavapphostconfig.xml"
  tavknx_dir="$(cd "$(dirname "$tavknx")" && pwd)/$(basename "$tavknx")"
  tavknx="$tavknx_dir"
  examples=0
  for command in "" decode check encode from-knx to-knx dpts ids config demo; do
    run $command --help
    sed -n '/^Examples/,$p' "$tmp/out" | grep '^  tavknx ' >"$tmp/examples"
    while IFS= read -r line; do
      # "  tavknx ARGS   comment": the comment starts after two blanks or more.
      args="$(sed -E 's/^  tavknx //; s/ {2,}.*$//' <<<"$line")"
      case "$args" in monitor* | send* | project*) continue ;; esac
      want=0
      grep -q 'refused' <<<"$line" && want=1
      (cd "$tmp" && eval "\"\${runner[@]}\" \"\$tavknx\" $args" >"$tmp/out" 2>"$tmp/err")
      code=$?
      examples=$((examples + 1))
      if [ "$code" != "$want" ] || [ ! -s "$tmp/out" ]; then
        echo "  help example of '${command:-tavknx}': expected exit $want and a result" >&2
        fail $args
      fi
    done <"$tmp/examples"
  done
  echo "$examples help examples run"
  [ "$examples" -ge 30 ] || { echo "only $examples help examples found" >&2; failures=$((failures + 1)); }
  ;;
*)
  echo "unknown group $group" >&2
  exit 2
  ;;
esac

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed in group $group" >&2
  exit 1
fi
echo "group $group: all checks passed"
