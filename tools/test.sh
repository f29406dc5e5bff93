#!/usr/bin/env bash
# Builds vetra and runs its whole test suite.
# Usage: tools/test.sh [build-dir [ctest arguments...]]
# Extra CMake settings can come through VETRA_CMAKE_ARGS.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
dir=${1:-build}
shift || true
# shellcheck disable=SC2086
cmake -S . -B "$dir" -G Ninja -DVETRA_WERROR=ON ${VETRA_CMAKE_ARGS:-} >/dev/null
cmake --build "$dir" -j"$(nproc)"
ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" "$@"
