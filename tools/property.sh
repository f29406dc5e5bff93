#!/usr/bin/env bash
# Runs the editing property test for longer than CI does: random edit
# sequences on random documents, checked against the record invariants and
# a fresh parse after every step. Usage: tools/property.sh [seeds] [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
seeds=${1:-50000}
dir=${2:-build}
tools/install-deps.sh
cmake -S . -B "$dir" -G Ninja >/dev/null
cmake --build "$dir" --target vetra_xml_tests | tail -n 1
VETRA_PROPERTY_SEEDS=$seeds "$dir/tests/vetra_xml_tests" --gtest_filter='EditProperty.*'
