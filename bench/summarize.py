#!/usr/bin/env python3
"""Turns xml_bench's raw rows into the comparison table, results.csv and chart data.

Each (library, work, corpus) becomes one row: the median CPU time over its warm runs
(run 0, the cold one, is shown apart; wall times go to the CSV only), the throughput,
the ratio of its time to pugixml's for the same work and corpus, and the peak memory.
The ratio is the median over the rounds of the ratio within each round: a library's
process and pugixml's ran seconds apart there, so a slow spell of the machine that
lasts a round or two moves both.
Walks must report the same counts for every library, or this fails.
Usage: summarize.py RAW_CSV RESULTS_DIR
"""
import csv
import statistics
import sys
from collections import OrderedDict

FIELDS = ("lib", "work", "corpus", "bytes", "run", "seconds", "elements", "attributes",
          "chars", "peak_kib", "base_kib", "wall")
LIBS = ("vetra", "vetra-utf8", "pugixml", "rapidxml", "tinyxml2", "libxml2")
WORKS = ("parse", "walk", "build", "load", "save")  # then the scaling works, as they came


def load(path):
    groups = OrderedDict()
    with open(path, newline="") as raw:
        for values in csv.reader(raw):
            if len(values) != len(FIELDS):
                continue
            row = dict(zip(FIELDS, values))
            runs = groups.setdefault((row["lib"], row["work"], row["corpus"]), [])
            # A process numbers its runs from the start: a run number that
            # doesn't go up starts the next round's process.
            fresh = not runs or int(row["run"]) <= int(runs[-1]["run"])
            row["round"] = (runs[-1]["round"] + fresh) if runs else 0
            runs.append(row)
    return groups


def round_medians(runs):
    """The median warm time of each round's process, by round."""
    by_round = OrderedDict()
    for r in runs:
        if r["run"] != "0":
            by_round.setdefault(r["round"], []).append(float(r["seconds"]))
    return {k: statistics.median(v) for k, v in by_round.items()}


def paired_ratio(row, ref):
    """The median over rounds of row's time / ref's time in the same round."""
    mine, theirs = row["rounds"], ref["rounds"]
    if mine.keys() != theirs.keys():  # rounds that don't pair up: the ratio of the medians
        return row["median_s"] / ref["median_s"]
    return statistics.median(mine[k] / theirs[k] for k in mine)


def summarize(groups):
    rows = []
    for (lib, work, corpus), runs in groups.items():
        last = runs[-1]
        warm = [float(r["seconds"]) for r in runs if r["run"] != "0"]
        wall = [float(r["wall"]) for r in runs if r["run"] != "0"]
        cold = [float(r["seconds"]) for r in runs if r["run"] == "0"]
        rows.append({
            "work": work, "corpus": corpus, "lib": lib, "runs": len(warm),
            "bytes": int(last["bytes"]), "median_s": statistics.median(warm),
            "median_wall_s": statistics.median(wall),
            "cold_s": cold[0] if cold else None,
            "elements": int(last["elements"]), "attributes": int(last["attributes"]),
            "chars": int(last["chars"]),
            "peak_rss_mib": int(last["peak_kib"]) / 1024,
            "doc_rss_mib": (int(last["peak_kib"]) - int(last["base_kib"])) / 1024,
            "rounds": round_medians(runs),
        })
    for peer in ("pugixml", "libxml2"):
        reference = {(r["work"], r["corpus"]): r for r in rows if r["lib"] == peer}
        for r in rows:
            ref = reference.get((r["work"], r["corpus"]))
            r["ratio_to_" + peer] = paired_ratio(r, ref) if ref else None
    for r in rows:
        if r["work"] == "build":
            r["throughput"] = r["elements"] / r["median_s"] / 1e6
            r["unit"] = "Melem/s"
        elif r["bytes"]:
            r["throughput"] = r["bytes"] / r["median_s"] / 1e6
            r["unit"] = "MB/s"
        else:
            r["throughput"] = r["median_s"] * 1e9
            r["unit"] = "ns/op"

    scaling = [w for w in OrderedDict((r["work"], 0) for r in rows) if w not in WORKS]
    work_order = list(WORKS) + scaling
    rows.sort(key=lambda r: (work_order.index(r["work"]), r["corpus"] != "catalog", r["corpus"],
                             LIBS.index(r["lib"]) if r["lib"] in LIBS else len(LIBS)))
    return rows


def mismatches(rows):
    """Walks of one corpus whose counts differ between libraries."""
    found = []
    by_corpus = OrderedDict()
    for r in rows:
        if r["work"] == "walk":
            by_corpus.setdefault(r["corpus"], []).append(r)
    for corpus, walks in by_corpus.items():
        counts = {(w["elements"], w["attributes"], w["chars"]) for w in walks}
        if len(counts) > 1:
            found.append("walk counts differ on %s: %s" % (corpus, "; ".join(
                "%s %d/%d/%d" % (w["lib"], w["elements"], w["attributes"], w["chars"])
                for w in walks)))
    return found


def duration(seconds):
    return "%.2f ms" % (seconds * 1e3) if seconds >= 1e-4 else "%.1f ns" % (seconds * 1e9)


def print_table(rows):
    head = "%-12s %-14s %-10s %11s %17s %9s %9s %11s %8s %8s" % (
        "work", "corpus", "library", "cpu median", "throughput", "x pugixml", "x libxml2",
        "cold run", "peak MiB", "doc MiB")
    print(head)
    print("-" * len(head))
    previous = None
    for r in rows:
        if previous and previous != (r["work"], r["corpus"]):
            print()
        previous = (r["work"], r["corpus"])
        ratio, ratio2 = ("-" if x is None else "%.2f" % x if x < 1000 else "%.0f" % x
                         for x in (r["ratio_to_pugixml"], r["ratio_to_libxml2"]))
        cold = duration(r["cold_s"]) if r["cold_s"] is not None else "-"
        # A scaling row's throughput is its median again, in ns: not repeated here.
        rate = "-" if r["unit"] == "ns/op" else "%9.1f %-7s" % (r["throughput"], r["unit"])
        print("%-12s %-14s %-10s %11s %17s %9s %9s %11s %8.1f %8.1f" % (
            r["work"], r["corpus"], r["lib"], duration(r["median_s"]), rate, ratio, ratio2, cold,
            r["peak_rss_mib"], r["doc_rss_mib"]))
    for corpus in OrderedDict((r["corpus"], 0) for r in rows if r["work"] == "walk"):
        walk = next(r for r in rows if r["work"] == "walk" and r["corpus"] == corpus)
        print("walk counts on %s: %d elements, %d attributes, %d characters" % (
            corpus, walk["elements"], walk["attributes"], walk["chars"]))


def write_csv(rows, path):
    columns = ("work", "corpus", "lib", "runs", "bytes", "median_s", "median_wall_s", "cold_s",
               "throughput", "unit", "ratio_to_pugixml", "ratio_to_libxml2", "elements",
               "attributes", "chars",
               "peak_rss_mib", "doc_rss_mib")
    with open(path, "w", newline="") as out:
        writer = csv.writer(out)
        writer.writerow(columns)
        for r in rows:
            writer.writerow(["%.6g" % r[c] if isinstance(r[c], float) else
                             ("" if r[c] is None else r[c]) for c in columns])


def write_chart_data(rows, path):
    """One line per (work, corpus), one column per library: the ratio to pugixml."""
    groups = OrderedDict()
    for r in rows:
        if r["ratio_to_pugixml"] is not None:
            label = r["work"] if r["corpus"] == "from-empty" or r["work"] == "build" \
                else "%s %s" % (r["work"], r["corpus"])
            groups.setdefault(label, {})[r["lib"]] = r["ratio_to_pugixml"]
    with open(path, "w") as out:
        out.write("group " + " ".join(LIBS) + "\n")
        for label, ratios in groups.items():
            out.write('"%s" %s\n' % (label, " ".join(
                "%.4g" % ratios[lib] if lib in ratios else "-" for lib in LIBS)))


def main(argv):
    if len(argv) != 3:
        sys.exit(__doc__)
    rows = summarize(load(argv[1]))
    print_table(rows)
    write_csv(rows, argv[2] + "/results.csv")
    write_chart_data(rows, argv[2] + "/chart.dat")
    problems = mismatches(rows)
    for problem in problems:
        print("ERROR: " + problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
