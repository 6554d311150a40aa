#!/usr/bin/env bash
# Installs the Debian packages with apt-get (so that their Depends are resolved), builds the
# consumer example against the installed files only (CMake package and pkg-config file), runs
# it and the installed tavknx, then removes the packages again, also when a check fails.
# Runs as root (or with sudo) on the machine the packages were built for.
# Usage: deb-install-test.sh PACKAGE-DIR CONSUMER-SOURCE-DIR
set -euo pipefail
dir="$(cd "$1" && pwd)"
consumer="$(cd "$2" && pwd)"
packages=(libtavobjectmodel1 libtavobjectmodel-dev tavknx)
multiarch="$(dpkg-architecture -qDEB_HOST_MULTIARCH)"
libdir="/usr/lib/$multiarch"

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# Another apt or dpkg run on the machine holds the lock for a while: wait for it.
apt_get=($sudo apt-get -y -qq -o DPkg::Lock::Timeout=600)

installed() {
  for p in "${packages[@]}"; do
    if [ "$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)" = "install ok installed" ]; then echo "$p"; fi
  done
}
remove() {
  mapfile -t present < <(installed)
  if [ ${#present[@]} -gt 0 ]; then
    "${apt_get[@]}" purge "${present[@]}" >/dev/null 2>&1
  fi
}

tmp="$(mktemp -d)"
cleanup() {
  local status=$?
  remove || status=1
  rm -rf "$tmp"
  if [ -n "$(installed)" ]; then
    echo "deb-install-test: packages left installed: $(installed | tr '\n' ' ')" >&2
    status=1
  fi
  exit $status
}
trap cleanup EXIT

# Left over from an interrupted run: a package of the same version would not be replaced.
remove
if ! "${apt_get[@]}" install --no-install-recommends "${dir}"/*.deb >"$tmp/apt.log" 2>&1; then
  cat "$tmp/apt.log" >&2
  exit 1
fi
now="$(installed)"
for p in "${packages[@]}"; do
  grep -qx "$p" <<<"$now" || { echo "deb-install-test: $p did not install" >&2; exit 1; }
done

# Nothing of a build tree may be found: only the default search paths.
clean_env=(env -u LD_LIBRARY_PATH -u CMAKE_PREFIX_PATH -u PKG_CONFIG_PATH -u CPATH -u LIBRARY_PATH
  -u CMAKE_MODULE_PATH)

"${clean_env[@]}" cmake -S "$consumer" -B "$tmp/consumer" -DCMAKE_BUILD_TYPE=Release >/dev/null
found="$(sed -n 's/^TavObjectModel_DIR:PATH=//p' "$tmp/consumer/CMakeCache.txt")"
if [ "$found" != "$libdir/cmake/TavObjectModel" ]; then
  echo "deb-install-test: the consumer found TavObjectModel in '$found'" >&2
  exit 1
fi
"${clean_env[@]}" cmake --build "$tmp/consumer" >/dev/null
# The program loads the installed libraries, and nothing it loads lies outside the system.
loaded="$("${clean_env[@]}" ldd "$tmp/consumer/tavconsumer")"
# (/lib is /usr/lib on a merged-/usr system.)
if ! grep -qE "libtavobjectmodel\\.so\\.1 => (/usr)?/lib/$multiarch/libtavobjectmodel\\.so\\.1" <<<"$loaded" ||
  grep -qE "not found|=> /(work|home|tmp|opt)/" <<<"$loaded"; then
  echo "deb-install-test: the consumer loads:" >&2
  echo "$loaded" >&2
  exit 1
fi
"${clean_env[@]}" "$tmp/consumer/tavconsumer"
for example in tavtableconversion tavswitchcodec tavdevicerequest; do
  "${clean_env[@]}" "$tmp/consumer/$example" >/dev/null
done

# The same program built with the flags of the pkg-config file.
read -r -a pc_flags <<<"$("${clean_env[@]}" pkg-config --cflags --libs tavobjectmodel)"
"${clean_env[@]}" c++ -std=c++17 -o "$tmp/tavconsumer-pc" "$consumer/main.cpp" "${pc_flags[@]}"
"${clean_env[@]}" "$tmp/tavconsumer-pc" >/dev/null

# The installed tool, with its installed sample telegrams.
tavknx=/usr/bin/tavknx
"${clean_env[@]}" "$tavknx" --help >/dev/null
test "$("${clean_env[@]}" "$tavknx" decode 9.001 0c1a)" = "9.001 DPT_Value_Temp: 21.00 °C = Float 21 [ivt 3, sub-type 0]"
"${clean_env[@]}" "$tavknx" demo >"$tmp/demo.txt" 2>/dev/null
grep -qF "from /usr/share/tavobjectmodel/telegrams.txt" "$tmp/demo.txt"
echo "deb-install-test: installed ${packages[*]}; consumer (CMake and pkg-config) and tavknx ran"
