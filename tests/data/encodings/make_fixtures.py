#!/usr/bin/env python3
"""Makes the real-text fixtures of the file reader tests.

The text is the translated descriptions in Debian's shared MIME database
(/usr/share/mime/packages/freedesktop.org.xml, package shared-mime-info),
which no one here wrote. For each encoding below, the descriptions in the
languages that the encoding can hold are written as an XML (or HTML) document
that declares the encoding or starts with a byte-order mark, encoded by
Python's codecs. Beside each file, NAME.utf16 holds Python's decoding of the
very same bytes, as UTF-16LE without a mark: what Load must give.

Usage: make_fixtures.py [freedesktop.org.xml]   (writes into this folder)
"""
import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCE = sys.argv[1] if len(sys.argv) > 1 else "/usr/share/mime/packages/freedesktop.org.xml"
PER_LANGUAGE = 30

# file name, Python codec, declared name (None: a byte-order mark says it), languages
FIXTURES = [
    ("utf8_bom.xml", "utf-8", None, ["de", "ru", "ja", "ar"]),
    ("utf8_plain.xml", "utf-8", "", ["zh_TW", "he", "ka"]),
    ("utf16le_bom.xml", "utf-16-le", None, ["zh_CN", "ko", "he"]),
    ("utf16be_bom.xml", "utf-16-be", None, ["uk", "el", "ja"]),
    ("windows-1252.xml", "cp1252", "windows-1252", ["fr", "de", "es", "pt_BR", "da"]),
    ("windows-1251.xml", "cp1251", "windows-1251", ["ru", "uk", "bg"]),
    ("windows-1250.xml", "cp1250", "windows-1250", ["pl", "cs", "hu", "hr"]),
    ("windows-1255.xml", "cp1255", "windows-1255", ["he"]),
    ("windows-1256.xml", "cp1256", "windows-1256", ["ar"]),
    ("iso-8859-7.xml", "iso8859_7", "ISO-8859-7", ["el"]),
    ("iso-8859-15.xml", "iso8859_15", "iso-8859-15", ["fi", "sv", "it"]),
    ("koi8-r.xml", "koi8_r", "KOI8-R", ["ru"]),
    ("shift_jis.xml", "cp932", "Shift_JIS", ["ja"]),
    ("euc-jp.xml", "euc_jp", "EUC-JP", ["ja"]),
    ("gb2312.xml", "gbk", "GB2312", ["zh_CN"]),
    ("gb18030.xml", "gb18030", "GB18030", ["zh_CN", "ko", "ja"]),
    ("big5.xml", "cp950", "Big5", ["zh_TW"]),
    ("euc-kr.xml", "cp949", "EUC-KR", ["ko"]),
    ("meta_windows-1251.html", "cp1251", "windows-1251", ["ru", "bg"]),
]

MARKS = {"utf-8": b"\xef\xbb\xbf", "utf-16-le": b"\xff\xfe", "utf-16-be": b"\xfe\xff"}


def comments():
    by_language = {}
    with open(SOURCE, encoding="utf-8") as f:
        for lang, text in re.findall(r'<comment xml:lang="([^"]+)">([^<]*)</comment>', f.read()):
            by_language.setdefault(lang, []).append(text)
    return by_language


def document(name, codec, declared, languages, by_language):
    lines = []
    for lang in languages:
        taken = 0
        for text in by_language.get(lang, []):
            try:
                text.encode(codec)
            except UnicodeEncodeError:
                continue
            lines.append('<comment xml:lang="%s">%s</comment>' % (lang, text))
            taken += 1
            if taken == PER_LANGUAGE:
                break
    if name.endswith(".html"):
        head = ('<html><head><meta http-equiv="Content-Type" '
                'content="text/html; charset=%s"/></head><body>' % declared)
        return head + "\r\n" + "\r\n".join(lines) + "\r\n</body></html>\r\n"
    decl = '<?xml version="1.0" encoding="%s"?>\r\n' % declared if declared else ""
    return decl + "<comments>\r\n" + "\r\n".join(lines) + "\r\n</comments>\r\n"


def main():
    by_language = comments()
    for name, codec, declared, languages in FIXTURES:
        data = document(name, codec, declared, languages, by_language).encode(codec)
        if declared is None:
            data = MARKS[codec] + data
            body = data[len(MARKS[codec]):]
        else:
            body = data
        with open(os.path.join(HERE, name), "wb") as f:
            f.write(data)
        with open(os.path.join(HERE, name + ".utf16"), "wb") as f:
            f.write(body.decode(codec).encode("utf-16-le"))


if __name__ == "__main__":
    main()
