#!/usr/bin/env bash
# Builds vetra.dll and its tests for 64-bit Windows with mingw-w64 and runs the
# suite under Wine, then the cross-checks between the Windows build and a Linux
# build (version resource, documents in every code page).
# Usage: tools/test-windows.sh [build-dir [ctest arguments...]]
# The GoogleTest build goes to <build-dir>-gtest, the Linux build of the
# cross-checks to <build-dir>x (or $VETRA_LINUX_BUILD), the Wine prefix to
# <build-dir>-wine (or $WINEPREFIX). Extra CMake settings for the Windows
# build can come through VETRA_CMAKE_ARGS.
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
# test programs wait on Wine's background processes starting up. It is shut
# down at the end, so that no Wine process outlives the script.
wineserver -p 2>/dev/null || true # fails when one is already running
trap 'wineserver -k 2>/dev/null || true' EXIT
timeout 120 wine cmd /c exit >/dev/null 2>&1 || true

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

# Cross-checks with a Linux build of the same source: VETRA_LINUX_BUILD names one that
# exists already (CI's), else <build-dir>x is made.
linux=${VETRA_LINUX_BUILD:-${dir}x}
if [[ ! -f $linux/CMakeCache.txt ]]; then
  cmake -S . -B "$linux" -G Ninja -DVETRA_WERROR=ON -DVETRA_BUILD_CLI=OFF \
    -DVETRA_BUILD_EXAMPLES=OFF >/dev/null
fi
cmake --build "$linux" -j"$jobs" --target vetra_cross_check
lin=$linux/tests/cross/vetra_cross_check
win() { wine "$dir/tests/cross/vetra_cross_check.exe" "$@" | tr -d '\r'; }
failed=0

# The version resource: Linux's own PE reader against the system's version service.
dll=$dir/src/vetra.dll
IFS=. read -r major minor patch < <(sed -n 's/^project(vetra VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
want=$(printf '%08x %08x' $((major << 16 | minor)) $((patch << 16)))
from_linux=$("$lin" version "$dll")
from_windows=$(win version "$dll")
echo "version of vetra.dll: Linux reader $from_linux, Windows $from_windows, project $want"
[[ $from_linux == "$want" && $from_windows == "$want" ]] || failed=1

# Documents in every code page of the encoding-name table: each build saves the same text,
# the files must match byte for byte, and each build must read both files to the same text.
# Known differences, each a difference between the two systems' converters:
#   708    Wine writes U+00A0 as 0xFF, glibc's ISO-8859-6 as 0xA0 (so the texts differ too)
#   65000  UTF-7 encoders may end a base64 run with '-' or not; both read either the same
declare -A bytes_differ=([708]=1 [65000]=1) text_differs=([708]=1)
pages=$(mktemp -d)
mkdir "$pages/L" "$pages/W"
"$lin" save tests/data/codepages "$pages/L" | sort >"$pages/L.saved"
win save tests/data/codepages "$pages/W" | sort >"$pages/W.saved"
for side in L W; do
  "$lin" load "$pages/$side" >"$pages/$side.by-linux"
  win load "$pages/$side" >"$pages/$side.by-windows"
done
both=$(comm -12 "$pages/L.saved" "$pages/W.saved" | sort -n)
for cp in $both; do
  if ! cmp -s "$pages/L/$cp.xml" "$pages/W/$cp.xml" && [[ -z ${bytes_differ[$cp]:-} ]]; then
    echo "code page $cp: the two builds save different bytes"
    failed=1
  fi
  for side in L W; do
    if [[ $(grep "^$cp " "$pages/$side.by-linux") != $(grep "^$cp " "$pages/$side.by-windows") &&
      -z ${text_differs[$cp]:-} ]]; then
      echo "code page $cp: the two builds read the file saved by $side to different texts"
      failed=1
    fi
  done
done
echo "code pages saved by both builds and compared: $(echo $both | wc -w)"
echo "  saved by the Linux build only: $(comm -23 "$pages/L.saved" "$pages/W.saved" | sort -n | xargs)"
echo "  saved by the Windows build only: $(comm -13 "$pages/L.saved" "$pages/W.saved" | sort -n | xargs)"
rm -rf "$pages"
if ((failed)); then
  echo "test-windows: cross-checks FAILED"
  exit 1
fi
echo "test-windows: cross-checks passed"
