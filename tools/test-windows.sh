#!/usr/bin/env bash
# Builds vetra.dll and its tests for 64-bit Windows with mingw-w64 and runs the
# suite under Wine, then the cross-checks between the Windows build and a Linux
# build (version resource, documents in every code page).
# Usage: tools/test-windows.sh [build-dir [ctest arguments...]]
# The GoogleTest build goes to <build-dir>-gtest, the Linux build of the
# cross-checks to <build-dir>x, the Wine prefix to <build-dir>-wine (or
# $WINEPREFIX). Extra CMake settings can come through VETRA_CMAKE_ARGS.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-win}
shift || true
jobs=$(nproc)

# mingw-w64 (posix threads), Wine, and GoogleTest's sources to cross-build.
tools/install-deps.sh g++-mingw-w64-x86-64-posix wine64 wine googletest

export WINEPREFIX=${WINEPREFIX:-$PWD/$dir-wine}
export WINEDEBUG=${WINEDEBUG:--all}
# No Mono or Gecko prompts: nothing here needs .NET or HTML.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
if [[ ! -f $WINEPREFIX/system.reg ]]; then
  echo "test-windows: making the Wine prefix $WINEPREFIX"
  WINEARCH=win64 wineboot -i >/dev/null 2>&1
fi
# A persistent server, warmed by one trivial program: without it the first
# test programs wait on Wine's background processes starting up.
wineserver -p
wine cmd /c exit >/dev/null 2>&1 || true

toolchain=$PWD/cmake/mingw-w64-x86_64.cmake
gtest=$PWD/$dir-gtest
if [[ ! -f $gtest/install/lib/cmake/GTest/GTestConfig.cmake ]]; then
  echo "test-windows: cross-building GoogleTest"
  cmake -S /usr/src/googletest -B "$gtest" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DCMAKE_BUILD_TYPE=Release -DBUILD_GMOCK=OFF -Dgtest_disable_pthreads=OFF \
    -DCMAKE_INSTALL_PREFIX="$gtest/install" >/dev/null
  cmake --build "$gtest" -j"$jobs" --target install >/dev/null
fi

# shellcheck disable=SC2086
cmake -S . -B "$dir" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DVETRA_WERROR=ON \
  -DCMAKE_PREFIX_PATH="$gtest/install" -DVETRA_BUILD_CLI=OFF -DVETRA_BUILD_EXAMPLES=OFF \
  ${VETRA_CMAKE_ARGS:-} >/dev/null
cmake --build "$dir" -j"$jobs"
ctest --test-dir "$dir" --output-on-failure -j"$jobs" "$@"
