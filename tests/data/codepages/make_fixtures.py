#!/usr/bin/env python3
"""Makes the real-text fixtures of the code page conversion tests.

The text is translations that no one here wrote: the descriptions in Debian's
shared MIME database (/usr/share/mime/packages/freedesktop.org.xml, package
shared-mime-info), and, for languages it lacks, the country names of the
iso-codes package (/usr/share/locale/LANG/LC_MESSAGES/iso_3166-1.mo). For each
code page of the encoding-name table that glibc converts and Python has a codec
for, the texts in the languages that page can hold are encoded by Python's
codec into CODEPAGE.bin, and Python's decoding of the very same bytes goes
beside it into CODEPAGE.utf16 (UTF-16LE without a mark).

Usage: make_fixtures.py   (writes into this folder)
"""
import gettext
import os
import re

HERE = os.path.dirname(os.path.abspath(__file__))
MIME = "/usr/share/mime/packages/freedesktop.org.xml"
MO = "/usr/share/locale/{}/LC_MESSAGES/iso_3166-1.mo"
BYTES = 600  # roughly, per page

# code page: Python codec, languages (MIME database first, then country names).
# 864 is missing: it holds Arabic only in presentation forms, which no text uses;
# and 10079: glibc's MAC-IS reads 12 bytes otherwise than Apple's table (0xDD is
# U+0111, not U+00F0), the library keeps glibc's reading.
PAGES = {
    154: ("ptcp154", ["kk", "ru"]),
    437: ("cp437", ["fr", "de"]),
    708: ("iso8859_6", ["ar"]),
    737: ("cp737", ["el"]),
    775: ("cp775", ["lt", "lv"]),
    850: ("cp850", ["fr", "es", "de"]),
    852: ("cp852", ["pl", "cs", "hu"]),
    855: ("cp855", ["sr", "bg"]),
    857: ("cp857", ["tr"]),
    858: ("cp858", ["pt", "de"]),
    860: ("cp860", ["pt_BR"]),
    861: ("cp861", ["is"]),
    862: ("cp862", ["he"]),
    863: ("cp863", ["fr"]),
    865: ("cp865", ["da", "nb"]),
    866: ("cp866", ["ru", "uk"]),
    869: ("cp869", ["el"]),
    874: ("cp874", ["th"]),
    932: ("cp932", ["ja"]),
    936: ("gbk", ["zh_CN"]),
    949: ("cp949", ["ko"]),
    950: ("cp950", ["zh_TW"]),
    1125: ("cp1125", ["uk"]),
    1250: ("cp1250", ["pl", "cs", "hr"]),
    1251: ("cp1251", ["ru", "bg"]),
    1252: ("cp1252", ["fr", "de", "es"]),
    1253: ("cp1253", ["el"]),
    1254: ("cp1254", ["tr"]),
    1255: ("cp1255", ["he"]),
    1256: ("cp1256", ["ar", "fa"]),
    1257: ("cp1257", ["lt", "lv"]),
    1258: ("cp1258", ["vi", "fr"]),
    1361: ("johab", ["ko"]),
    10000: ("mac_roman", ["fr", "de"]),
    10007: ("mac_cyrillic", ["ru"]),
    10029: ("mac_latin2", ["pl", "cs"]),
    20002: ("big5", ["zh_TW"]),
    20127: ("ascii", ["en_GB", "id"]),
    20866: ("koi8_r", ["ru"]),
    20932: ("euc_jp", ["ja"]),
    20936: ("gb2312", ["zh_CN"]),
    20949: ("euc_kr", ["ko"]),
    21866: ("koi8_u", ["uk"]),
    28591: ("latin_1", ["fr", "de"]),
    28592: ("iso8859_2", ["pl", "cs"]),
    28593: ("iso8859_3", ["mt", "eo"]),
    28594: ("iso8859_4", ["lt", "lv", "et"]),
    28595: ("iso8859_5", ["ru", "bg"]),
    28596: ("iso8859_6", ["ar"]),
    28597: ("iso8859_7", ["el"]),
    28598: ("iso8859_8", ["he"]),
    28599: ("iso8859_9", ["tr"]),
    28603: ("iso8859_13", ["lt", "lv"]),
    28605: ("iso8859_15", ["fr", "fi"]),
    38598: ("iso8859_8", ["he"]),
    50220: ("iso2022_jp", ["ja"]),
    50221: ("iso2022_jp", ["ja"]),
    50222: ("iso2022_jp", ["ja"]),
    50225: ("iso2022_kr", ["ko"]),
    51932: ("euc_jp", ["ja"]),
    51936: ("gb2312", ["zh_CN"]),
    51949: ("euc_kr", ["ko"]),
    54936: ("gb18030", ["zh_CN", "ja", "ko"]),
    65000: ("utf_7", ["de", "ja"]),
    65001: ("utf_8", ["ru", "ja", "ar", "el"]),
}


def mime_texts():
    by_lang = {}
    with open(MIME, encoding="utf-8") as f:
        for lang, text in re.findall(r'<comment xml:lang="([^"]+)">([^<]*)</comment>', f.read()):
            text = text.replace("&amp;", "&").replace("&lt;", "<").replace("&gt;", ">")
            by_lang.setdefault(lang, []).append(text)
    return by_lang


def country_names(lang):
    try:
        with open(MO.format(lang), "rb") as f:
            catalog = gettext.GNUTranslations(f)._catalog
    except OSError:
        return []
    return [v for k, v in sorted(catalog.items()) if k and v != k]


def texts_for(codec, langs, mime):
    picked, size = [], 0
    for lang in langs:
        for text in mime.get(lang) or country_names(lang):
            if size >= BYTES * (langs.index(lang) + 1) / len(langs):
                break
            try:
                encoded = text.encode(codec)
            except UnicodeEncodeError:
                continue
            if text.isascii() and codec != "ascii":
                continue  # the texts that test a page are those that need it
            picked.append(text)
            size += len(encoded) + 1
    return "\n".join(picked)


def main():
    mime = mime_texts()
    for page, (codec, langs) in PAGES.items():
        text = texts_for(codec, langs, mime)
        if len(text) < 40:
            raise SystemExit(f"{page}: too little text in {langs}")
        data = text.encode(codec)
        with open(os.path.join(HERE, f"{page}.bin"), "wb") as f:
            f.write(data)
        with open(os.path.join(HERE, f"{page}.utf16"), "wb") as f:
            f.write(data.decode(codec).encode("utf-16-le"))


if __name__ == "__main__":
    main()
