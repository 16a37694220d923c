#!/bin/sh
# Installs the Debian 12 packages this project builds and tests with, when any is
# missing. Runs apt-get through sudo unless already root.
set -e
packages="cmake g++ make pkg-config libsystemd-dev libedit-dev libgtest-dev
 dbus-daemon dbus-bin clang libclang-rt-14-dev gcc-multilib g++-multilib"
missing=""
for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "Installing:$missing"
if [ "$(id -u)" -eq 0 ]; then sudo=""; else sudo="sudo"; fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq $missing
