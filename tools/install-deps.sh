#!/bin/sh
# Installs the Debian 12 packages this project needs, when any is missing, through
# apt-get (with sudo unless already root).
#   tools/install-deps.sh         what building and running need: the compiler and
#                                 CMake, libsystemd, libedit, and dbus-daemon (fmhost
#                                 starts a private bus with it when there is none)
#   tools/install-deps.sh --dev   and what the tests, fuzz targets and packaging need:
#                                 GoogleTest, clang with libFuzzer, the 32-bit libraries,
#                                 busctl, python3-dbus, dpkg-shlibdeps
set -e
packages="cmake g++ make pkg-config libsystemd-dev libedit-dev dbus-daemon"
case ${1:-} in
"") ;;
--dev) packages="$packages libgtest-dev clang libclang-rt-14-dev gcc-multilib g++-multilib
 systemd python3-dbus python3-gi dpkg-dev file" ;;
*) echo "usage: tools/install-deps.sh [--dev]" >&2; exit 2 ;;
esac
missing=""
for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "Installing:$missing"
if [ "$(id -u)" -eq 0 ]; then sudo=""; else sudo="sudo"; fi
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends $missing
