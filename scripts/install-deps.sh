#!/usr/bin/env bash
# Installs everything a fresh Debian 12 machine needs to build and test the plug-in.
# Run as root. Idempotent: packages already present are not downloaded again.
set -euo pipefail

packages=(
  g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev   # cross compiler, Windows headers and libraries
  cmake ninja-build                                  # build
  wine                                               # runs the DLL and the tests (64-bit loader)
  googletest                                         # test framework sources, cross-built by the project
  xvfb xauth x11-apps imagemagick                    # property sheets on a virtual display, screenshots
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if ((${#missing[@]})); then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
