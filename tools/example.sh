#!/usr/bin/env bash
# Builds vetra and runs the example program: a document built with the API,
# and an ill-formed text together with what the parser made of it.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build -j"$(nproc)" --target xml_tour
build/examples/xml_tour
