#!/usr/bin/env bash
# Installs, from Debian's packages, whatever the build and the tests need and
# this machine lacks. Does nothing when everything is there. Extra package
# names given as arguments are installed as well (the benchmarks use this).
set -euo pipefail

need=()
have_pkg() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"; }
for pkg in cmake ninja-build g++ libgtest-dev clang libclang-rt-14-dev iproute2 "$@"; do
  have_pkg "$pkg" || need+=("$pkg")
done
if ((${#need[@]} == 0)); then exit 0; fi

echo "install-deps: installing ${need[*]}"
SUDO=""
if [[ $(id -u) -ne 0 ]]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
