#!/usr/bin/env python3
"""Generates the encoding-name hash table, src/text/charset_table.inc.

The names below are every alias the library accepts, by code page, exactly as
documents spell them (lower case; "shifft_jis" with two f and "cp1256 " with a
trailing blank are real rows). The script refuses to write anything if the
table's shape isn't the one the lookup in charset_names.cpp is built for.
Usage: tools/gen_charset_table.py [repository root]
"""
import os
import sys

BUCKETS = 155

NAMES_BY_CODE_PAGE = {
    154: ["cp154", "csptcp154", "cyrillic-asian", "pt154", "ptcp154"],
    437: ["codepage437", "cp437", "cspc8", "cspc8codepage437", "ibm437"],
    708: ["asmo-708"],
    720: ["dos-720"],
    737: ["cp737", "ibm737"],
    775: [
        "cp500", "cp775", "csibm500", "cspc775baltic", "ebcdic-cp-be", "ebcdic-cp-ch",
        "ibm775"
    ],
    850: ["cp850", "cspc850multilingual", "ibm850"],
    852: ["cp852", "cspcp852", "ibm852"],
    853: ["cp853"],
    855: ["cp855", "csibm855", "ibm855"],
    857: ["cp857", "csibm857", "ibm857"],
    858: ["ccsid00858", "cp00858", "cp858", "ibm00858", "pc-multilingual-850+euro"],
    860: ["cp860", "csibm860", "ibm860"],
    861: ["cp-is", "cp861", "csibm861", "ibm861"],
    862: ["cp862", "cspc862latinhebrew", "dos-862", "ibm862"],
    863: ["cp863", "csibm863", "ibm863"],
    864: ["cp864", "csibm864", "ibm864"],
    865: ["cp865", "csibm865", "ibm865"],
    866: ["cp866", "csibm866", "ibm866"],
    869: ["cp-gr", "cp869", "csibm869", "ibm869"],
    874: ["cp874", "dos-874", "iso-8859-11", "tis-620", "windows-874"],
    932: [
        "cp932", "csshiftjis", "cswindows31j", "ms932", "ms_kanji", "shifft_jis",
        "shifft_jis-ms", "shift-jis", "shift_jis", "sjis", "sjis-ms", "sjis-open",
        "sjis-win", "windows-31j", "windows-932", "x-ms-cp932", "x-sjis"
    ],
    936: [
        "chinese", "cn-gb", "cp936", "csgb2312", "csgb231280", "csiso58gb231280",
        "gb2312", "gb2312-80", "gb231280", "gb_2312-80", "gbk", "iso-ir-58", "ms936",
        "windows-936"
    ],
    949: [
        "cp949", "csksc56011987", "iso-ir-149", "korean", "ks-c-5601", "ks-c5601",
        "ks_c_5601", "ks_c_5601-1987", "ks_c_5601-1989", "ks_c_5601_1987", "ksc5601",
        "ksc_5601", "uhc"
    ],
    950: ["big5", "big5-hkscs", "cn-big5", "cp950", "csbig5", "x-x-big5"],
    1125: ["cp1125"],
    1133: ["cp1133", "ibm-cp1133"],
    1200: [
        "cp1200", "ucs-2", "ucs-2le", "unicode", "utf-16", "utf-16le", "utf16",
        "utf16le"
    ],
    1201: ["cp1201", "ucs-2be", "unicodefffe", "utf-16be", "utf16be"],
    1250: ["cp1250", "ms-ee", "windows-1250", "x-cp1250"],
    1251: ["cp1251", "ms-cyrl", "windows-1251", "x-cp1251"],
    1252: ["cp1252", "ms-ansi", "windows-1252", "x-ansi"],
    1253: ["cp1253", "ms-greek", "windows-1253"],
    1254: ["cp1254", "ms-turk", "windows-1254"],
    1255: ["cp1255", "ms-hebr", "windows-1255"],
    1256: ["cp1256", "cp1256 ", "ms-arab", "windows-1256"],
    1257: ["cp1257", "winbaltrim", "windows-1257"],
    1258: ["cp1258", "windows-1258"],
    1361: ["cp1361", "johab"],
    10000: ["csmacintosh", "mac", "macintosh"],
    10001: ["x-mac-japanese"],
    10002: ["x-mac-chinesetrad"],
    10003: ["x-mac-korean"],
    10004: ["x-mac-arabic"],
    10005: ["x-mac-hebrew"],
    10006: ["x-mac-greek"],
    10007: ["x-mac-cyrillic"],
    10008: ["x-mac-chinesesimp"],
    10010: ["x-mac-romanian"],
    10017: ["x-mac-ukrainian"],
    10021: ["x-mac-thai"],
    10029: ["x-mac-ce"],
    10079: ["x-mac-icelandic"],
    10081: ["x-mac-turkish"],
    10082: ["x-mac-croatian"],
    12000: ["cp12000", "utf-32", "utf-32le", "utf32", "utf32le"],
    12001: ["cp12001", "utf-32be", "utf32be"],
    20000: ["x-chinese-cns", "x-chinese_cns"],
    20001: ["x-cp20001"],
    20002: ["x-chinese-eten", "x_chinese-eten"],
    20003: ["x-cp20003"],
    20004: ["x-cp20004"],
    20005: ["x-cp20005"],
    20105: ["x-ia5"],
    20106: ["x-ia5-german"],
    20107: ["x-ia5-swedish"],
    20108: ["x-ia5-norwegian"],
    20127: [
        "ansi_x3.4-1968", "ansi_x3.4-1986", "ascii", "cp367", "csascii", "ibm367",
        "iso-ir-6", "iso-ir-6us", "iso646-us", "iso_646.irv:1991", "us", "us-ascii"
    ],
    20261: ["x-cp20261"],
    20269: ["x-cp20269"],
    20866: ["cskoi8r", "koi", "koi8", "koi8-r", "koi8r"],
    20932: [
        "cseucpkdfmtjapanese", "euc-jp", "extended_unix_code_packed_format_for_japanese"
    ],
    20936: ["x-cp20936"],
    20949: ["x-cp20949"],
    21866: ["koi8-ru", "koi8-u"],
    28591: [
        "cp819", "csisolatin1", "ibm819", "iso-8859-1", "iso-ir-100", "iso8859-1",
        "iso_8859-1", "iso_8859-1:1987", "l1", "latin1"
    ],
    28592: [
        "csisolatin2", "iso-8859-2", "iso-ir-101", "iso8859-2", "iso_8859-2",
        "iso_8859-2:1987", "l2", "latin2"
    ],
    28593: [
        "csisolatin3", "iso-8859-3", "iso-ir-109", "iso8859-3", "iso_8859-3",
        "iso_8859-3:1988", "l3", "latin3"
    ],
    28594: [
        "csisolatin4", "iso-8859-4", "iso-ir-110", "iso8859-4", "iso_8859-4",
        "iso_8859-4:1988", "l4", "latin4"
    ],
    28595: [
        "csisolatin5", "csisolatincyrillic", "cyrillic", "iso-8859-5", "iso-ir-144",
        "iso8859-5", "iso_8859-5", "iso_8859-5:1988"
    ],
    28596: [
        "arabic", "csisolatinarabic", "ecma-114", "iso-8859-6", "iso-ir-127",
        "iso8859-6", "iso_8859-6", "iso_8859-6:1987"
    ],
    28597: [
        "csisolatingreek", "ecma-118", "elot_928", "greek", "greek8", "iso-8859-7",
        "iso-ir-126", "iso8859-7", "iso_8859-7", "iso_8859-7:1987"
    ],
    28598: [
        "csisolatinhebrew", "hebrew", "iso-8859-8", "iso-ir-138", "iso8859-8",
        "iso_8859-8", "iso_8859-8:1988", "visual"
    ],
    28599: [
        "iso-8859-9", "iso-ir-148", "iso8859-9", "iso_8859-9", "iso_8859-9:1989", "l5",
        "latin5"
    ],
    28603: ["iso-8859-13", "iso8859-13"],
    28605: ["iso-8859-15", "iso8859-15", "iso_8859-15", "l9", "latin-9", "latin9"],
    29001: ["x-europa"],
    38598: ["iso-8859-8-i", "iso8859-8-i", "logical"],
    50220: ["iso-2022-jp"],
    50221: [
        "_iso-2022-jp", "cp50221", "csiso2022jp", "iso-2022-jp-ms", "iso2022-jp-ms",
        "ms50221", "windows-50221"
    ],
    50222: ["_iso-2022-jp$sio"],
    50225: ["csiso2022kr", "iso-2022-kr", "iso2022-kr"],
    50227: ["x-cp50227"],
    51932: ["cp51932", "ms51932", "windows-51932", "x-euc", "x-euc-jp"],
    51936: ["euc-cn", "x-euc-cn"],
    51949: ["cseuckr", "euc-kr"],
    52936: ["hz-gb-2312"],
    54936: ["gb18030", "iso-4873:1986"],
    57002: ["x-iscii-de"],
    57003: ["x-iscii-be"],
    57004: ["x-iscii-ta"],
    57005: ["x-iscii-te"],
    57006: ["x-iscii-as"],
    57007: ["x-iscii-or"],
    57008: ["x-iscii-ka"],
    57009: ["x-iscii-ma"],
    57010: ["x-iscii-gu"],
    57011: ["x-iscii-pa"],
    65000: ["csunicode11utf7", "unicode-1-1-utf-7", "utf-7", "x-unicode-2-0-utf-7"],
    65001: [
        "cp65001", "unicode-1-1-utf-8", "unicode-2-0-utf-8", "utf-8", "utf8",
        "x-unicode-2-0-utf-8"
    ],
}


def bucket_of(name):
    return sum(ord(c) for c in name) % BUCKETS


def build_buckets():
    buckets = [[] for _ in range(BUCKETS)]
    for code_page, names in NAMES_BY_CODE_PAGE.items():
        for name in names:
            if name != name.lower() or not name.isascii() or name[:1].isdigit():
                raise SystemExit(f"name {name!r} must be lower-case ASCII, not led by a digit")
            if not (2 <= len(name) <= 45) or not (0 < code_page <= 99999):
                raise SystemExit(f"row {name!r} ({code_page}) doesn't fit a row")
            buckets[bucket_of(name)].append((name, code_page))
    # Names are unique, so the order within a bucket changes no result; sorting
    # keeps the generated file stable.
    texts = ["".join(f"{len(n):02d}{cp:05d}{n}" for n, cp in sorted(rows)) for rows in buckets]
    return texts, buckets


def check(texts, buckets):
    problems = []

    def expect(what, got, want):
        if got != want:
            problems.append(f"{what}: got {got!r}, expected {want!r}")

    names = [n for ns in NAMES_BY_CODE_PAGE.values() for n in ns]
    expect("rows", sum(len(b) for b in buckets), 365)
    expect("distinct names", len(set(names)), 365)
    expect("code pages", len(NAMES_BY_CODE_PAGE), 110)
    expect("non-empty buckets", sum(1 for b in buckets if b), 138)
    expect("empty buckets", [i for i, b in enumerate(buckets) if not b],
           [24, 37, 38, 39, 41, 43, 54, 71, 83, 86, 113, 119, 137, 142, 146, 147, 149])
    expect("largest bucket", max(len(b) for b in buckets), 6)
    expect("longest name", max(len(n) for n in names), 45)
    expect("bucket of ksc_5601", texts[bucket_of("ksc_5601")], "0800949ksc_5601")
    expect("bucket of l2", texts[bucket_of("l2")], "0228592l20920005x-cp20005")
    if problems:
        raise SystemExit("charset table check failed:\n  " + "\n  ".join(problems))


def write(path, lines):
    with open(path, "w", encoding="ascii", newline="\n") as f:
        f.write("\n".join(lines) + "\n")


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..")
    texts, buckets = build_buckets()
    check(texts, buckets)

    table = [
        "// Generated by tools/gen_charset_table.py; do not edit.",
        "// The initialiser of the alias table: one packed text per hash bucket, each row",
        "// two digits of name length, five of code page, then the name.",
    ]
    table += [f'/* {i:3d} */ u"{t}",' for i, t in enumerate(texts)]
    write(os.path.join(root, "src", "text", "charset_table.inc"), table)


if __name__ == "__main__":
    main()
