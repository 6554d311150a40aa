#!/usr/bin/env bash
# Installs what the 32-bit ARM build needs, only what is missing: the cross compiler and
# qemu-user-static on the host, and the armhf builds of the libraries in a sysroot,
# ARMHF_SYSROOT (default /opt/tav-armhf-sysroot), that cmake/toolchain-armhf.cmake builds
# against and qemu-arm-static loads the test programs from.
#
# The armhf packages are downloaded and unpacked (apt-get download, dpkg -x) rather than
# installed beside the host's: multiarch needs every shared package at the same version on
# both architectures, and a host whose packages came from the security archive is often ahead
# of the armhf index (seen here: linux-libc-dev and libssl3), so apt refuses the install.
# A sysroot works whatever the host has installed and leaves the host's packages alone.
set -euo pipefail

sysroot="${ARMHF_SYSROOT:-/opt/tav-armhf-sysroot}"

host_packages=(g++-arm-linux-gnueabihf qemu-user-static)
armhf_packages=(
  libboost-thread-dev libboost-date-time-dev libboost-timer-dev libboost-filesystem-dev
  libboost-system-dev libboost-program-options-dev liblog4cplus-dev libgtest-dev libgmock-dev
  libc6-dev libstdc++-12-dev knxd-dev libzip-dev libssl-dev libmosquitto-dev
)
# Header-only, architecture-independent.
all_packages=(librapidxml-dev libutfcpp-dev nlohmann-json3-dev)

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive

bash "$(dirname "$0")/install-deps.sh" "${host_packages[@]}"

# The stamp names what the sysroot holds, so a changed package list rebuilds it.
wanted="${armhf_packages[*]} ${all_packages[*]}"
if [ -f "$sysroot/.complete" ] && [ "$(cat "$sysroot/.complete")" = "$wanted" ]; then
  exit 0
fi

if ! dpkg --print-foreign-architectures | grep -qx armhf; then
  echo "Adding the armhf architecture"
  $sudo dpkg --add-architecture armhf
fi
# A mirror in mid-sync fails one index (seen on the armhf security index); the download below
# says clearly when a package is really missing, so go on with the indexes apt has.
$sudo apt-get update -qq || echo "apt-get update failed for some indexes; going on with the others"

# The packages and every armhf package they depend on, by name.
mapfile -t closure < <(
  apt-cache depends --recurse --no-recommends --no-suggests --no-conflicts --no-breaks \
    --no-replaces --no-enhances "${armhf_packages[@]/%/:armhf}" |
    sed -n 's/^\([a-z0-9][a-z0-9.+-]*:armhf\)$/\1/p' | sort -u)
echo "Unpacking ${#closure[@]} armhf packages into $sysroot"
work="$(mktemp -d)"
# apt downloads as its own user where it may
if id _apt >/dev/null 2>&1; then $sudo chown _apt "$work"; fi
trap 'rm -rf "$work"' EXIT
(cd "$work" && apt-get download -qq "${closure[@]}" "${all_packages[@]}")
$sudo rm -rf "$sysroot"
$sudo mkdir -p "$sysroot"
for deb in "$work"/*.deb; do
  $sudo dpkg -x "$deb" "$sysroot"
done
echo "$wanted" | $sudo tee "$sysroot/.complete" >/dev/null
