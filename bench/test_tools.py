#!/usr/bin/env python3
"""Tests of the benchmark's Python tools: the corpus generator and the summarizer.

The corpus must be well-formed, deterministic and of the asked size; the summary must
take medians over warm runs only, compute ratios against pugixml, and refuse walks whose
counts differ. Run: python3 bench/test_tools.py
"""
import io
import os
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_corpus  # noqa: E402
import summarize  # noqa: E402


def generate(size, *encoding):
    out = io.BytesIO()
    gen_corpus.generate(out, size, *encoding)
    return out.getvalue()


class CorpusTest(unittest.TestCase):
    def test_sizes_parse(self):
        for text, size in (("1000", 1000), ("4K", 4096), ("2M", 2 << 20), ("1G", 1 << 30)):
            with self.subTest(text=text):
                self.assertEqual(gen_corpus.parse_size(text), size)

    def test_well_formed_and_deterministic(self):
        for size in (1, 20000, 300000):
            with self.subTest(size=size):
                first, second = generate(size), generate(size)
                self.assertEqual(first, second)
                root = ElementTree.fromstring(first)
                self.assertEqual(root.tag, "catalog")
                self.assertGreaterEqual(len(first), size)

    def test_shape(self):
        text = generate(200000)
        self.assertNotIn(b"\n", text.replace(b"\r\n", b""), "every line end is CRLF")
        for piece in (b"<![CDATA[", b"<!--", b"&amp;", b"&#", "é".encode()):
            self.assertIn(piece, text)
        depth = max(len(path) for path in paths(ElementTree.fromstring(text)))
        self.assertEqual(depth, 4)

    def test_other_encodings_declare_themselves(self):
        for encoding, letter in (("windows-1252", "é"), ("Shift_JIS", "山")):
            with self.subTest(encoding=encoding):
                text = generate(100000, encoding)
                self.assertTrue(text.startswith(b'<?xml version="1.0" encoding="%s"?>'
                                                % encoding.encode()))
                decoded = text.decode(encoding)
                self.assertIn(letter, decoded)
                self.assertEqual(ElementTree.fromstring(decoded).tag, "catalog")


def paths(element, above=()):
    here = above + (element.tag,)
    yield here
    for child in element:
        yield from paths(child, here)


def raw(lib, work, corpus, run, seconds, counts=(0, 0, 0), bytes_=1000000):
    return "%s,%s,%s,%d,%d,%f,%d,%d,%d,2048,1024,%f\n" % (
        lib, work, corpus, bytes_, run, seconds, counts[0], counts[1], counts[2], seconds)


def summarize_text(text):
    with tempfile.NamedTemporaryFile("w", suffix=".csv", delete=False) as f:
        f.write(text)
    try:
        return summarize.summarize(summarize.load(f.name))
    finally:
        os.unlink(f.name)


class SummarizeTest(unittest.TestCase):
    def test_median_of_warm_runs_and_ratio(self):
        rows = summarize_text(
            raw("pugixml", "parse", "c", 0, 9.0) + raw("pugixml", "parse", "c", 1, 1.0)
            + raw("pugixml", "parse", "c", 2, 2.0) + raw("pugixml", "parse", "c", 3, 3.0)
            + raw("vetra", "parse", "c", 0, 1.0) + raw("vetra", "parse", "c", 1, 4.0)
            + raw("vetra", "parse", "c", 2, 5.0) + raw("vetra", "parse", "c", 3, 6.0))
        by_lib = {r["lib"]: r for r in rows}
        cases = (("pugixml", 2.0, 9.0, 1.0), ("vetra", 5.0, 1.0, 2.5))
        for lib, median, cold, ratio in cases:
            with self.subTest(lib=lib):
                self.assertEqual(by_lib[lib]["median_s"], median)
                self.assertEqual(by_lib[lib]["cold_s"], cold)
                self.assertAlmostEqual(by_lib[lib]["ratio_to_pugixml"], ratio)
        self.assertEqual([r["lib"] for r in rows], ["vetra", "pugixml"])
        self.assertAlmostEqual(by_lib["pugixml"]["throughput"], 0.5)  # MB/s

    def test_ratio_pairs_the_processes_of_each_round(self):
        # Round 2 ran in a slow spell: 10x for both. The ratio of the medians
        # over all runs would be 10/1 for vetra; within each round it is 2.
        text = ""
        for scale in (1.0, 10.0, 1.0):
            text += (raw("vetra", "parse", "c", 0, 9.0) + raw("vetra", "parse", "c", 1, 2 * scale)
                     + raw("pugixml", "parse", "c", 0, 9.0) + raw("pugixml", "parse", "c", 1, scale))
        by_lib = {r["lib"]: r for r in summarize_text(text)}
        self.assertEqual(by_lib["vetra"]["runs"], 3)
        self.assertAlmostEqual(by_lib["vetra"]["ratio_to_pugixml"], 2.0)

    def test_scaling_rows_have_no_cold_run(self):
        rows = summarize_text(raw("vetra", "edit-end", "c", 1, 2e-7, bytes_=0)
                              + raw("vetra", "edit-end", "c", 2, 4e-7, bytes_=0))
        self.assertIsNone(rows[0]["cold_s"])
        self.assertIsNone(rows[0]["ratio_to_pugixml"])
        self.assertEqual(rows[0]["unit"], "ns/op")

    def test_walk_counts_must_agree(self):
        cases = (((5, 6, 7), (5, 6, 7), 0), ((5, 6, 7), (5, 6, 8), 1), ((5, 6, 7), (4, 6, 7), 1))
        for vetra, pugi, problems in cases:
            with self.subTest(vetra=vetra, pugi=pugi):
                rows = summarize_text(raw("vetra", "walk", "c", 1, 1.0, vetra)
                                      + raw("pugixml", "walk", "c", 1, 1.0, pugi))
                self.assertEqual(len(summarize.mismatches(rows)), problems)


if __name__ == "__main__":
    unittest.main()
