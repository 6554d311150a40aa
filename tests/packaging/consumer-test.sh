#!/usr/bin/env bash
# Installs the build into a temporary prefix, then configures, builds and runs the consumer
# examples against it (one of them without LD_LIBRARY_PATH); also checks the installed
# libraries' SONAME and the pkg-config file.
# Usage: consumer-test.sh BUILD-DIR CONSUMER-SOURCE-DIR
set -euo pipefail
build="$1"
consumer="$2"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
prefix="$tmp/prefix"
# Cross-built (set by CTest): the consumer is built with the same toolchain against the prefix
# as a staging area, and the programs run under the emulator. Built with sanitizers: the
# consumer too, since their runtime must come first in the program.
read -r -a runner <<<"${TAV_TEST_RUNNER:-}"
consumer_args=()
if [ -n "${TAV_TOOLCHAIN_FILE:-}" ]; then
  consumer_args+=(-DCMAKE_TOOLCHAIN_FILE="$TAV_TOOLCHAIN_FILE" -DCMAKE_STAGING_PREFIX="$prefix")
fi
if [ -n "${TAV_SANITIZE:-}" ]; then
  consumer_args+=(-DCMAKE_CXX_FLAGS="-fsanitize=$TAV_SANITIZE"
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=$TAV_SANITIZE")
fi

cmake --install "$build" --prefix "$prefix" >/dev/null
libdir="$(dirname "$(find "$prefix" -name 'libtavobjectmodel.so' | head -1)")"
for lib in tavobjectmodel tavplatform; do
  soname="$(objdump -p "$libdir/lib$lib.so" | awk '/SONAME/ {print $2}')"
  if [ "$soname" != "lib$lib.so.1" ]; then
    echo "lib$lib.so has SONAME '$soname', expected lib$lib.so.1" >&2
    exit 1
  fi
done
test -f "$prefix/include/TavObjectModel/GroupValueOkaValue.h"
test -f "$prefix/include/platform/GroupValue.h"
test -f "$prefix/include/Tav/MeasureDuration.h"
test -f "$prefix/share/tavobjectmodel/telegrams.txt"
test "$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --modversion tavobjectmodel)" = "1.0.0"

# The consumers find libtavobjectmodel.so.1 through their own run path to the prefix, as a
# program built against a custom prefix does (CMake adds that path itself on the host, not when
# cross-building); libtavplatform.so.1 is then the library's to find.
consumer_args+=(-DCMAKE_BUILD_RPATH="$libdir")
cmake -S "$consumer" -B "$tmp/consumer" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
  "${consumer_args[@]}" >/dev/null
cmake --build "$tmp/consumer" >/dev/null
LD_LIBRARY_PATH="$libdir" "${runner[@]}" "$tmp/consumer/tavconsumer"
# One program per use, built against the installed files only, with their exact output.
test "$(LD_LIBRARY_PATH="$libdir" "${runner[@]}" "$tmp/consumer/tavtableconversion")" = "21.5 on 9.001 -> 0c33 (16 bits)
and back -> Float 21.5"
test "$(LD_LIBRARY_PATH="$libdir" "${runner[@]}" "$tmp/consumer/tavswitchcodec")" = "on for 1.001 -> 01 (1 bit)
and back -> Bool true"
test "$(LD_LIBRARY_PATH="$libdir" "${runner[@]}" "$tmp/consumer/tavdevicerequest")" = "SetValue 100101: answered yes, reply '21.5'
GetValue 100101: answered yes, reply '21.5'"

# A pkg-config build in the custom prefix: the flags from the installed tavobjectmodel.pc, and a
# run path to the prefix's library directory, so that the program starts without
# LD_LIBRARY_PATH (as the README shows).
if [ -z "${TAV_TOOLCHAIN_FILE:-}" ] && [ -z "${TAV_SANITIZE:-}" ]; then
  read -r -a pc_flags <<<"$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --define-variable=prefix="$prefix" \
    --cflags --libs tavobjectmodel)"
  c++ -std=c++17 -o "$tmp/tavtableconversion-pc" "$consumer/table_conversion.cpp" "${pc_flags[@]}" \
    -Wl,-rpath,"$libdir"
  env -u LD_LIBRARY_PATH "$tmp/tavtableconversion-pc" >/dev/null
fi

# A program that needs only libtavobjectmodel's symbols does not list libtavplatform.so.1 (it is
# linked as-needed); it starts from the custom prefix without LD_LIBRARY_PATH only because the
# installed library finds libtavplatform.so.1 beside itself.
if objdump -p "$tmp/consumer/tavversion" | grep -q 'NEEDED.*libtavplatform'; then
  echo "tavversion lists libtavplatform.so.1 itself: it no longer tests the libraries' run path" >&2
  exit 1
fi
env -u LD_LIBRARY_PATH "${runner[@]}" "$tmp/consumer/tavversion"

# The installed tool runs from its prefix and finds its installed sample telegrams.
test "$("${runner[@]}" "$prefix/bin/tavknx" decode 9.001 0c1a)" = "9.001 DPT_Value_Temp: 21.00 °C = Float 21 [ivt 3, sub-type 0]"
"${runner[@]}" "$prefix/bin/tavknx" demo >"$tmp/demo.txt" 2>/dev/null
grep -qF "from $prefix/share/tavobjectmodel/telegrams.txt" "$tmp/demo.txt"
