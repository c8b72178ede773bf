#!/usr/bin/env bash
# Installs the Debian 12 packages that building, playing and testing need.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive
pkgs=(
  cmake g++ make pkg-config
  libsdl1.2-compat-dev libglew-dev libglu1-mesa-dev libgl1-mesa-dri libpng-dev libmpg123-dev
  libfreetype-dev fonts-dejavu-core lame
  ffmpeg
  libgtest-dev googletest
  xvfb xauth xdotool
  clang libclang-rt-14-dev
)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
