#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need, only those that are missing,
# so that a warm machine starts at once.
set -euo pipefail

packages=(
  libboost-thread-dev libboost-date-time-dev libboost-timer-dev libboost-filesystem-dev
  libboost-system-dev libboost-program-options-dev liblog4cplus-dev librapidxml-dev
  libutfcpp-dev libgtest-dev libgmock-dev libbenchmark-dev cmake g++ make pkg-config
  knxd knxd-tools knxd-dev  # the live-bus commands of tavknx and their tests
  dpkg-dev file  # the Debian packages: their dependencies (dpkg-shlibdeps) and checks
  libzip-dev libssl-dev nlohmann-json3-dev  # the ETS project reader (tavproject)
  libmosquitto-dev mosquitto mosquitto-clients openssl  # tavknx bridge (MQTT) and its tests
)
packages+=("$@")

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
# One index failing (a mirror in mid-sync, a foreign architecture's index) need not stop the
# install: apt-get install says clearly when a package is really missing.
$sudo apt-get update -qq || echo "apt-get update failed for some indexes; going on with the others"
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
