#!/usr/bin/env bash
# Builds vetra, installs it (library, headers, CMake and pkg-config files,
# the vetra command) under PREFIX (default ~/.local), and runs the command
# on a document that ships with Debian (the iso-codes package).
# Usage: tools/quickstart.sh [PREFIX]
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh iso-codes
prefix=${1:-$HOME/.local}
cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release -DVETRA_BUILD_TESTS=OFF \
  -DVETRA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build-release -j"$(nproc)" | tail -n 1
cmake --install build-release --prefix "$prefix" | grep -E "Installing: .*(bin/vetra|libvetra.so)$"
export PATH=$prefix/bin:$PATH
doc=/usr/share/xml/iso-codes/iso_4217.xml
echo "\$ vetra xml check $doc"
vetra xml check "$doc"
echo "\$ vetra xml get $doc iso_4217_entries/iso_4217_entry @currency_name | head -n 5"
vetra xml get "$doc" iso_4217_entries/iso_4217_entry @currency_name | head -n 5
echo "(vetra is in $prefix/bin; vetra --help lists every command)"
