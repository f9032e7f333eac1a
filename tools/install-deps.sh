#!/bin/sh
# Installs the Debian packages Lorvane builds and tests with, and only those missing.
# Safe to run again: with everything present it installs nothing and prints nothing.
set -e
packages="clang cmake make python3 libgtest-dev libbenchmark-dev gobjc gnustep-make
libgnustep-base-dev libgnustep-gui-dev libicu-dev libxml2-dev libx11-dev gnustep-back0.29 xvfb xauth imagemagick
python3-matplotlib libclang-rt-dev
$LORVANE_EXTRA_PACKAGES"

missing=""
for p in $packages; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $p"
    fi
done
[ -z "$missing" ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "Installing:$missing"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends $missing
