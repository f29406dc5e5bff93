#!/usr/bin/env python3
"""Runs memory_bench in rounds, pinned to one core, and prints each variant's
median time per piece and the ratios the goals are stated in, each the median
of the ratios within a round (where both variants ran seconds apart).

Usage: bench/memory_bench/rounds.py BINARY [ROUNDS] [CORE]
"""
import json
import statistics
import subprocess
import sys

binary = sys.argv[1]
rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
core = sys.argv[3] if len(sys.argv) > 3 else "1"

runs = []
for r in range(rounds):
    out = subprocess.run(
        ["taskset", "-c", core, binary, "--benchmark_format=json", "--benchmark_min_time=0.3"],
        check=True, capture_output=True, text=True).stdout
    runs.append({b["name"]: b["per_piece"] * 1e9 for b in json.loads(out)["benchmarks"]})
    print(f"round {r + 1} of {rounds}", file=sys.stderr)

print(f"{'variant':44} ns/piece (median of {rounds}, min..max)")
for name in runs[0]:
    values = [run[name] for run in runs]
    print(f"{name:44} {statistics.median(values):6.2f}  ({min(values):.2f}..{max(values):.2f})")


def ratio(a, b):
    return statistics.median(run[a] / run[b] for run in runs)


block = "BM_BlockBuffer"
print()
print(f"GetBuffer / monotonic (align 16):   {ratio(block, 'BM_MonotonicBuffer/16'):.2f}  goal <= 1")
print(f"GetBuffer / monotonic (align 1):    {ratio(block, 'BM_MonotonicBuffer/1'):.2f}")
print(f"malloc+free / GetBuffer:            {ratio('BM_MallocFree', block):.2f}  goal >= 5")
print(f"pool / GetBuffer:                   {ratio('BM_UnsynchronizedPool', block):.2f}")
print(f"vtmem locked / unlocked:            "
      f"{ratio('BM_VtmemBlockAllocator/1', 'BM_VtmemBlockAllocator/0'):.2f}  goal <= 2")
print(f"vtmem unlocked / GetBuffer:         {ratio('BM_VtmemBlockAllocator/0', block):.2f}")
