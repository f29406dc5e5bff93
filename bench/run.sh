#!/usr/bin/env bash
# Benchmarks vetra against pugixml, rapidxml, TinyXML-2 and libxml2: installs what
# is missing (Debian packages), builds a Release tree, generates the corpus, runs
# every (library, work, corpus) in a process of its own, prints the table and
# writes bench/results/{results.csv,chart.png,machine.txt,edit_bench.txt,codec_bench.txt,
# ops_bench.txt,table.txt}; then the services' benchmarks (memory, monitor, network)
# into bench/results/{memory_bench,monitor_bench,net_bench}.txt.
# Usage: bench/run.sh [--quick] [--runs N] [--rounds N] [--size SIZE] [--build DIR]
# Every process runs N times in turn (--rounds, default 3), so that a disturbed
# spell of the machine falls on all libraries alike; each row is the median of
# all its warm runs.
set -euo pipefail
export PYTHONDONTWRITEBYTECODE=1
cd "$(dirname "$0")/.."

quick=0 runs=5 rounds=3 size=64M items=500000 build=build-bench
while [ $# -gt 0 ]; do
  case "$1" in
    --quick) quick=1 runs=2 rounds=1 size=4M items=50000 ;; # results in BUILD/results-quick
    --runs) runs=$2; shift ;;
    --rounds) rounds=$2; shift ;;
    --size) size=$2; shift ;;
    --build) build=$2; shift ;;
    *) echo "usage: bench/run.sh [--quick] [--runs N] [--rounds N] [--size SIZE] [--build DIR]" >&2; exit 2 ;;
  esac
  shift
done
# A quick run is a smoke test: its figures stay out of bench/results.
results=bench/results out=$build/bench-out
[ $quick = 1 ] && results=$build/results-quick out=$build/bench-out-quick
corpus_dir=$build/corpus

# --- what the benchmark needs, from Debian's packages -----------------------
packages="cmake ninja-build g++ pkg-config python3 libbenchmark-dev
  libpugixml-dev librapidxml-dev libtinyxml2-dev libxml2-dev gnuplot-nox
  shared-mime-info iso-codes"
missing=$(for p in $packages; do dpkg-query -W -f='${Status}\n' "$p" 2>/dev/null |
  grep -q "install ok installed" || echo "$p"; done)
if [ -n "$missing" ]; then
  echo "== installing:" $missing
  sudo=""; [ "$(id -u)" -eq 0 ] || sudo=sudo
  $sudo apt-get update -qq
  # shellcheck disable=SC2086
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq $missing >/dev/null
fi

# --- the machine ------------------------------------------------------------
mkdir -p "$results" "$out" "$corpus_dir"
{
  echo "date:     $(date -u '+%Y-%m-%d %H:%M UTC')"
  echo "cpu:      $(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')"
  echo "cores:    $(nproc) online, $(grep -c ^processor /proc/cpuinfo) listed"
  echo "memory:   $(awk '/MemTotal/ {printf "%.1f GiB", $2 / 1048576}' /proc/meminfo)"
  echo "kernel:   $(uname -sr)"
  echo "compiler: $(g++ --version | head -1), -O2 for vetra, the bench and rapidxml"
  echo "peers:    $(for p in libpugixml-dev librapidxml-dev libtinyxml2-dev libxml2-dev; do
    echo "$p $(dpkg-query -W -f='${Version}' "$p")"; done | paste -sd ';' | sed 's/;/; /g')"
  echo "mode:     runs=$runs rounds=$rounds corpus=$size build-items=$items$([ $quick = 1 ] && echo ' (quick)')"
  echo "load:     $(cut -d' ' -f1-3 /proc/loadavg) at the start (others' work skews wall times)"
} | tee "$results/machine.txt"

# --- build --------------------------------------------------------------------
echo "== building in $build"
cmake -S . -B "$build" -G Ninja -DVETRA_BUILD_BENCH=ON -DVETRA_BUILD_TESTS=OFF \
  -DVETRA_BUILD_EXAMPLES=OFF -DCMAKE_BUILD_TYPE=Release -DVETRA_LTO=ON \
  "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG" >/dev/null
cmake --build "$build" -j"${VETRA_BENCH_JOBS:-2}" --target xml_bench edit_bench codec_bench ops_bench \
  memory_bench monitor_bench perf_counter_bench net_bench
bin=$build/bench
"$bin/xml_bench" --check
python3 bench/test_tools.py 2>&1 | tail -1

# --- corpora ----------------------------------------------------------------
catalog=$corpus_dir/catalog.xml
if [ "$(cat "$catalog.size" 2>/dev/null)" != "$size" ]; then
  python3 bench/gen_corpus.py "$catalog" "$size"
  echo "$size" > "$catalog.size"
fi
# The same catalog in two legacy encodings, for loading through a converter.
encoded=()
for pair in 1252:windows-1252 sjis:Shift_JIS; do
  enc=${pair#*:} file=$corpus_dir/catalog_${pair%%:*}.xml
  if [ "$(cat "$file.size" 2>/dev/null)" != "$size" ]; then
    python3 bench/gen_corpus.py "$file" "$size" "$enc"
    echo "$size" > "$file.size"
  fi
  encoded+=("$file")
done
corpora=("$catalog")
for real in /usr/share/mime/packages/freedesktop.org.xml /usr/share/xml/iso-codes/iso_639-3.xml; do
  if [ -r "$real" ]; then corpora+=("$real"); else echo "skipped (not present): $real"; fi
done

# --- runs: one process per library, work and corpus ----------------------------
raw=$out/raw.csv
: > "$raw"
# Each process stays on the last core: a move between cores mid-run, on this
# kind of machine, costs more than the differences being measured.
pin=()
if command -v taskset >/dev/null; then pin=(taskset -c "$(($(nproc) - 1))"); fi
run() {
  printf '   %-10s %-8s %s\n' "$1" "$2" "${3:-}" >&2
  "${pin[@]}" "$bin/xml_bench" "$@" --runs "$runs" >> "$raw"
}
echo "== xml_bench"
for round in $(seq "$rounds"); do
  echo "   round $round of $rounds" >&2
  for corpus in "${corpora[@]}"; do
    for lib in vetra vetra-utf8 pugixml rapidxml tinyxml2 libxml2; do run "$lib" parse "$corpus"; done
    for lib in vetra pugixml rapidxml tinyxml2 libxml2; do run "$lib" walk "$corpus"; done
  done
  for lib in vetra pugixml rapidxml tinyxml2 libxml2; do run "$lib" build --items "$items"; done
  for lib in vetra pugixml libxml2; do run "$lib" load "$catalog"; run "$lib" save "$catalog"; done
  for file in "${encoded[@]}"; do
    for lib in vetra libxml2; do run "$lib" load "$file"; done
  done
done
for lib in vetra pugixml; do run "$lib" scaling "$catalog"; done

echo "== edit_bench"
min_time=0.5; [ $quick = 1 ] && min_time=0.02
"${pin[@]}" "$bin/edit_bench" --benchmark_min_time=$min_time --benchmark_counters_tabular=true \
  | tee "$results/edit_bench.txt"

echo "== codec_bench"
"${pin[@]}" "$bin/codec_bench" --benchmark_min_time=$min_time | tee "$results/codec_bench.txt"

echo "== ops_bench"
# The median of 5 repetitions: single reads take nanoseconds, and one slow
# spell would move a lone figure.
"${pin[@]}" "$bin/ops_bench/ops_bench" --benchmark_min_time=$min_time --benchmark_repetitions=5 \
  --benchmark_report_aggregates_only=true | grep -v -e '_mean' -e '_stddev' -e '_cv' \
  | tee "$results/ops_bench.txt"

# --- the services ---------------------------------------------------------------
echo "== memory_bench"
python3 bench/memory_bench/rounds.py "$bin/memory_bench/memory_bench" "$rounds" \
  "$(($(nproc) - 1))" | tee "$results/memory_bench.txt"
echo "== monitor_bench"
{ "${pin[@]}" "$bin/monitor_bench/monitor_bench" --benchmark_min_time=$min_time
  "${pin[@]}" "$bin/monitor_bench/perf_counter_bench" --benchmark_min_time=$min_time \
    --benchmark_repetitions=5 --benchmark_report_aggregates_only=true | grep -v -e '_mean' -e '_stddev' -e '_cv'
} | tee "$results/monitor_bench.txt"
echo "== net_bench"
"${pin[@]}" "$bin/net_bench/net_bench" --benchmark_min_time=$min_time --benchmark_repetitions=5 \
  --benchmark_report_aggregates_only=true | grep -v -e '_mean' -e '_stddev' -e '_cv' \
  | tee "$results/net_bench.txt"

echo "load:     $(cut -d' ' -f1-3 /proc/loadavg) at the end" | tee -a "$results/machine.txt"
echo "== results"
status=0
python3 bench/summarize.py "$raw" "$results" | tee "$results/table.txt" || status=$?
gnuplot -e "data='$results/chart.dat'; out='$results/chart.png'" bench/chart.gp
rm -f "$results/chart.dat"
echo "wrote $results/results.csv, $results/chart.png, $results/machine.txt"
exit $status
