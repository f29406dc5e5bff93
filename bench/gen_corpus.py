#!/usr/bin/env python3
"""Writes the benchmark corpus: a catalog-like UTF-8 XML document with CRLF line ends.

The same seed and size give the same bytes. Items carry several attributes, text
with entity and character references, non-ASCII letters, some CDATA sections and
comments; elements nest four deep (catalog, section, item, fields).
With an ENCODING (a name Python's codecs and the XML declaration both take, such
as windows-1252 or Shift_JIS) the catalog is written in it, declares it, and
keeps only the author names it can hold.
Usage: gen_corpus.py OUT [SIZE] [ENCODING]   (SIZE in bytes, optional K or M suffix)
"""
import random
import sys

SEED = 20240611
WORDS = ("alpha", "beta", "gamma", "delta", "river", "stone", "cloud", "ember", "north",
         "signal", "harbor", "lumen", "orbit", "quartz", "tundra", "velvet", "willow")
NAMES = ("Müller", "Zoë", "Ørsted", "Šimon", "Ana", "José", "Łukasz", "Søren", "Nuñez",
         "Chloé", "Dvořák", "Björk", "Αλέξης", "Дмитрий", "山田")
# Only the predefined entities and character references: every peer decodes them.
REFS = ("&amp;", "&lt;", "&gt;", "&quot;", "&apos;", "&#233;", "&#xE9;", "&#8364;", "&#x1F600;")
CURRENCIES = ("EUR", "USD", "GBP", "JPY", "CHF")
CRLF = "\r\n"


def parse_size(text):
    """'64M' -> 67108864, '512K' -> 524288, '1000' -> 1000."""
    scale = {"K": 1 << 10, "M": 1 << 20, "G": 1 << 30}.get(text[-1:].upper(), 1)
    return int(text[:-1] if scale > 1 else text) * scale


def words(rng, lo, hi):
    return " ".join(rng.choice(WORDS) for _ in range(rng.randint(lo, hi)))


def text_with_refs(rng):
    """One line of text whose pieces are separated by references."""
    parts = [words(rng, 1, 3)]
    for _ in range(rng.randint(1, 3)):
        parts.append(rng.choice(REFS))
        parts.append(words(rng, 1, 3))
    return " ".join(parts)


def item(rng, number, names):
    """The text of one item, indented at level 3, its fields at level 4."""
    attrs = ('id="i%07d" sku="%s-%05d" price="%d.%02d" currency="%s" stock="%d"'
             % (number, rng.choice(WORDS)[:3].upper(), rng.randrange(100000),
                rng.randrange(1, 1000), rng.randrange(100), rng.choice(CURRENCIES),
                rng.randrange(50)))
    if rng.random() < 0.3:
        attrs += ' label="%s %s %s"' % (words(rng, 1, 2), rng.choice(REFS), words(rng, 1, 1))
    lines = ["    <item %s>" % attrs,
             "      <title>%s</title>" % text_with_refs(rng),
             '      <author role="%s">%s</author>' % (rng.choice(("writer", "editor")),
                                                     rng.choice(names))]
    roll = rng.random()
    if roll < 0.15:
        lines.append("      <description><![CDATA[%s <b>%s</b> & %s]]></description>"
                     % (words(rng, 2, 5), rng.choice(WORDS), words(rng, 1, 3)))
    elif roll < 0.25:
        lines.append("      <note>%s <!-- %s --> %s</note>"
                     % (words(rng, 1, 3), words(rng, 1, 2), words(rng, 1, 3)))
    else:
        lines.append("      <description>%s</description>" % text_with_refs(rng))
    if rng.random() < 0.1:
        lines.append("      <!-- %s -->" % words(rng, 2, 4))
    lines.append('      <stock warehouse="w%d"/>' % rng.randrange(10))
    lines.append("    </item>")
    return CRLF.join(lines) + CRLF


def generate(out, size, encoding="UTF-8"):
    rng = random.Random(SEED)
    names = [n for n in NAMES if n.encode(encoding, "ignore").decode(encoding) == n]
    head = ('<?xml version="1.0" encoding="%s"?>' % encoding + CRLF
            + "<!-- generated benchmark catalog -->" + CRLF
            + '<catalog version="1.0" generator="gen_corpus">' + CRLF)
    tail = "</catalog>" + CRLF
    written = out.write(head.encode(encoding))
    number = section = 0
    while written + len(tail) < size:
        section += 1
        chunk = ['  <section id="s%d" name="%s">%s' % (section, words(rng, 1, 2), CRLF)]
        for _ in range(rng.randint(20, 60)):
            number += 1
            chunk.append(item(rng, number, names))
        chunk.append("  </section>" + CRLF)
        written += out.write("".join(chunk).encode(encoding))
    written += out.write(tail.encode(encoding))
    return written, number


def main(argv):
    if len(argv) not in (2, 3, 4):
        sys.exit(__doc__)
    size = parse_size(argv[2]) if len(argv) >= 3 else 64 << 20
    with open(argv[1], "wb") as out:
        written, items = generate(out, size, *argv[3:])
    print("%s: %d bytes, %d items" % (argv[1], written, items))


if __name__ == "__main__":
    main(sys.argv)
