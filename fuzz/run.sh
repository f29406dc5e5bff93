#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer (with address and
# undefined sanitizers) and runs each one. Usage: fuzz/run.sh [build-dir]
# [seconds per target]. Crashers land in the build dir; copy each one to
# tests/data/fuzz/<target>/ so that the replay test keeps it fixed.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
dir=${1:-build-fuzz}
seconds=${2:-600}
CXX=clang++ cmake -S . -B "$dir" -G Ninja -DVETRA_BUILD_FUZZ=ON -DVETRA_BUILD_TESTS=ON \
  -DVETRA_BUILD_EXAMPLES=OFF -DVETRA_SANITIZE=address,undefined >/dev/null
targets=$(sed -n 's/^vetra_fuzz_target(\(.*\))$/\1/p' fuzz/CMakeLists.txt)
# shellcheck disable=SC2086
cmake --build "$dir" -j"$(nproc)" --target $targets | tail -n 1
status=0
for t in $targets; do
  work="$dir/corpus-$t"
  log="$dir/fuzz-$t.log"
  mkdir -p "$work" "$dir/artifacts-$t"
  seeds=(fuzz/corpus/"${t%_fuzz}")
  [[ -d tests/data/fuzz/$t ]] && seeds+=("tests/data/fuzz/$t")
  # The XML targets share one dictionary; any other may bring fuzz/<target>.dict.
  case $t in
    parse_fuzz | edit_fuzz) dict=fuzz/xml16.dict ;;
    *) dict=fuzz/$t.dict ;;
  esac
  dict_arg=()
  [[ -f $dict ]] && dict_arg=(-dict="$dict")
  echo "fuzz: $t for ${seconds}s"
  rc=0
  "$dir/fuzz/$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    "${dict_arg[@]}" -artifact_prefix="$dir/artifacts-$t/" -print_final_stats=1 \
    "$work" "${seeds[@]}" >"$log" 2>&1 || rc=$?
  grep -E "^(Done|stat::number_of_executed)" "$log" || true
  if ((rc != 0)); then
    echo "fuzz: $t FAILED (exit $rc); the end of its log:"
    tail -n 40 "$log"
    status=1
  fi
done
exit $status
