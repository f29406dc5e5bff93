// text_escape.cpp - DecodeText, EncodeText, EncodeCData and FormatNode.
//
// Decoding reserves its output once; both directions append whole runs between
// the characters that need attention. Decoding a reference allocates nothing:
// its name goes to a small stack buffer and the table rows are read in place.
#include "xml/text_escape.h"

#include "xml/run_search.h"
#include "xml/wide_text.h"

#include <string>

namespace vetra::xml {

namespace {

// At most this many characters stand between '&' and ';' of a reference.
constexpr int32_t kReferenceMax = 9;

constexpr uint64_t Bit(wchar c) {
    return uint64_t(1) << c;
}

constexpr uint64_t kSpaceBits = Bit('\t') | Bit('\n') | Bit('\r') | Bit(' ');

// One test for membership of a set of characters below 64.
inline bool InBits(wchar c, uint64_t bits) {
    // Without a branch: in text, characters below 64 and above come mixed.
    return ((bits >> (c & 63)) & uint64_t(c < 64)) != 0;
}

inline bool IsAsciiLetter(wchar c) {
    return (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
}
inline bool IsDigit(wchar c) {
    return c >= '0' && c <= '9';
}

// The number behind "#" (or "#x" for base 16) the way wcstol reads it:
// leading whitespace, a sign, for base 16 an optional "0x", then digits up to
// the first that isn't one of the base. The buffer is already folded to lower
// case and too short for the value to overflow 32 bits.
uint32_t ReadNumber(const wchar* p) {
    int32_t base = 10;
    if (*p == 'x') {
        base = 16;
        ++p;
    }
    while (*p == ' ' || (*p >= '\t' && *p <= '\r'))
        ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') negative = *p++ == '-';
    if (base == 16 && p[0] == '0' && p[1] == 'x') p += 2;
    int64_t value = 0;
    for (;; ++p) {
        int32_t digit;
        if (IsDigit(*p)) {
            digit = *p - '0';
        } else if (base == 16 && *p >= 'a' && *p <= 'f') {
            digit = *p - 'a' + 10;
        } else {
            break;
        }
        value = value * base + digit;
    }
    // A negative result is taken as the unsigned 32-bit value it converts to.
    return uint32_t(negative ? -value : value);
}

// The code of the folded name, or 0. Where two rows match, the name as
// written decides: with capitals it is the first row (the capitalised
// entity), without them the second.
uint32_t FindEntity(const wchar* name, int32_t length, uint32_t sum, bool capitals) {
    if (length < 2 || length > 8) return 0;
    uint32_t found = 0;
    const wchar* row = EntityTable[sum % kEntityBuckets];
    while (*row) {
        const int32_t rowLength = row[0] - '0';
        if (rowLength == length && std::char_traits<wchar>::compare(row + 5, name, length) == 0) {
            uint32_t code = (row[1] - '0') * 1000u + (row[2] - '0') * 100u + (row[3] - '0') * 10u +
                            (row[4] - '0');
            if (capitals || found != 0) return code;
            found = code;
        }
        row += 5 + rowLength;
    }
    return found;
}

// Decodes the reference whose '&' stands just before `after` and appends its
// code units to `out`. Gives the number of characters it took behind the
// '&', its ';' included, or 0 with `out` untouched. Reads up to the ';' even
// beyond the caller's range, but never past the NUL.
size_t DecodeReference(const wchar* after, WideString& out) {
    // The five references of XML itself, written in lower case, come first;
    // no other entity's name folds to theirs.
    switch (after[0]) {
    case 'l':
    case 'g':
        if (after[1] == 't' && after[2] == ';') {
            out += after[0] == 'l' ? u'<' : u'>';
            return 3;
        }
        break;
    case 'a':
        if (after[1] == 'm' && after[2] == 'p' && after[3] == ';') {
            out += u'&';
            return 4;
        }
        if (after[1] == 'p' && after[2] == 'o' && after[3] == 's' && after[4] == ';') {
            out += u'\'';
            return 5;
        }
        break;
    case 'q':
        if (after[1] == 'u' && after[2] == 'o' && after[3] == 't' && after[4] == ';') {
            out += u'"';
            return 5;
        }
        break;
    default:
        break;
    }
    wchar name[kReferenceMax + 1];
    int32_t length = 0;
    uint32_t sum = 0;
    bool capitals = false;
    for (;; ++length) {
        wchar c = after[length];
        if (c == ';') break;
        if (length == kReferenceMax || c == 0 || c >= 0x80) return 0;
        if (c >= 'A' && c <= 'Z') {
            c += 'a' - 'A';
            capitals = true;
        }
        name[length] = c;
        sum += c;
    }
    name[length] = 0;
    uint32_t code = (length > 0 && name[0] == '#') ? ReadNumber(name + 1)
                                                   : FindEntity(name, length, sum, capitals);
    if (code == 0) return 0;
    if (code <= 0xFFFF) {
        out += wchar(code);
    } else {
        // No range check: a code beyond Unicode gives the pair of its low bits.
        out += wchar(0xD800 | (((code - 0x10000) >> 10) & 0x3FF));
        out += wchar(0xDC00 | (code & 0x3FF));
    }
    return size_t(length) + 1;
}

// Decoding without a whitespace flag: runs up to the next '&' go out whole.
// With `stop` set to '<', a '<' in the text, even inside a reference, ends
// the decoding with false; otherwise `stop` is '&' and the result true.
template <wchar stop> bool DecodePlain(const wchar* text, size_t n, WideString& out) {
    size_t i = 0;
    while (i < n) {
        size_t amp = stop == u'&' ? size_t(FindAnyBefore(text, int32_t(i), int32_t(n), u'&'))
                                  : size_t(FindAnyBefore(text, int32_t(i), int32_t(n), u'&', stop));
        out.append(text + i, amp - i);
        if (amp == n) break;
        if (text[amp] != '&') return false;
        size_t taken = DecodeReference(text + amp + 1, out);
        if (taken == 0) out += u'&';
        i = amp + 1 + taken;
        for (size_t k = amp + 1; k < i; ++k)
            if (text[k] == stop) return false;
    }
    return true;
}

// Decoding with DocTrimSpace or DocCollapseSpace. `mark` is kNothingYet while
// only whitespace has been seen, 0 behind anything else, and within a
// whitespace run the output length at its start, where trailing whitespace is
// cut.
void DecodeSpaced(const wchar* text, size_t n, bool collapse, WideString& out) {
    constexpr size_t kNothingYet = size_t(-1);
    size_t mark = kNothingYet;
    size_t i = 0;
    while (i < n) {
        size_t end = i;
        while (end < n && text[end] != '&' && !InBits(text[end], kSpaceBits))
            ++end;
        if (end != i) {
            out.append(text + i, end - i);
            mark = 0;
            i = end;
            continue;
        }
        wchar c = text[i];
        if (c == '&') {
            // A decoded character counts as text, even a decoded space.
            size_t taken = DecodeReference(text + i + 1, out);
            if (taken == 0) out += u'&';
            i += 1 + taken;
            mark = 0;
            continue;
        }
        if (mark == 0) {
            mark = out.size();
            out += collapse ? u' ' : c;
        } else if (mark != kNothingYet && !collapse) {
            out += c;
        }
        ++i;
    }
    if (mark != kNothingYet && mark > 0) out.resize(mark);
}

// With EditKeepRefs: the length of the well-formed reference at `amp`,
// through its ';', or 0. The name isn't looked up.
size_t KeptReferenceLength(const wchar* amp) {
    wchar c = amp[1];
    if (!(c == '#' || c == ':' || c == '_' || IsAsciiLetter(c) || c >= 0x80)) return 0;
    for (size_t k = 2;; ++k) {
        c = amp[k];
        if (c == ';') return k + 1;
        if (!(c == '-' || c == '.' || c == ':' || c == '_' || IsAsciiLetter(c) || IsDigit(c) ||
              c >= 0x80))
            return 0;
    }
}

size_t EscapeIndex(wchar c) {
    switch (c) {
    case '<':
        return 0;
    case '&':
        return 1;
    case '>':
        return 2;
    case '"':
        return 3;
    default:
        return 4;
    }
}

} // namespace

void DecodeTextTo(const wchar* text, int32_t length, uint32_t flags, WideString& out) {
    if (text == nullptr) return;
    size_t n = length < 0 ? std::char_traits<wchar>::length(text) : size_t(length);
    // Decoding never lengthens, except for a reference running past `length`.
    ReserveMore(out, n);
    if ((flags & (DocTrimSpace | DocCollapseSpace)) == 0) {
        DecodePlain<u'&'>(text, n, out);
    } else {
        DecodeSpaced(text, n, (flags & DocCollapseSpace) != 0, out);
    }
}

bool DecodeTextUnlessMarkup(const wchar* text, int32_t length, WideString& out) {
    ReserveMore(out, size_t(length));
    return DecodePlain<u'<'>(text, size_t(length), out);
}

WideString DecodeText(const wchar* text, int32_t length, uint32_t flags) {
    WideString out;
    DecodeTextTo(text, length, flags, out);
    return out;
}

WideString EncodeText(const wchar* text, uint32_t flags) {
    WideString out;
    EncodeTextTo(text, flags, out);
    return out;
}

void EncodeTextTo(const wchar* text, uint32_t flags, WideString& out) {
    // One pass: the NUL ends the last run like a character to escape.
    const bool quotes = (flags & EditAttribText) != 0;
    const bool keepRefs = (flags & EditKeepRefs) != 0;
    size_t i = 0;
    for (;;) {
        const size_t end = size_t(quotes ? FindAny(text, int32_t(i), u'<', u'&', u'>', u'"', u'\'')
                                         : FindAny(text, int32_t(i), u'<', u'&', u'>'));
        out.append(text + i, end - i);
        if (text[end] == 0) break;
        if (keepRefs && text[end] == '&') {
            if (size_t kept = KeptReferenceLength(text + end)) {
                out.append(text + end, kept);
                i = end + kept;
                continue;
            }
        }
        out += EscapeTexts[EscapeIndex(text[end])];
        i = end + 1;
    }
}

WideString EncodeCData(const wchar* text) {
    std::u16string_view rest(text);
    WideString out;
    out.reserve(rest.size() + 12);
    out += u"<![CDATA[";
    for (size_t end; (end = rest.find(u"]]>")) != rest.npos; rest.remove_prefix(end + 3)) {
        out.append(rest.data(), end);
        out += u"]]]]><![CDATA[>";
    }
    out += rest;
    out += u"]]>";
    return out;
}

bool FormatNode(int32_t type, const wchar* text, WideString& out) {
    std::u16string_view inner(text);
    // Built aside and moved in, so `text` may point into `out`.
    auto wrap = [&](std::u16string_view open, std::u16string_view close) {
        WideString node;
        node.reserve(open.size() + inner.size() + close.size());
        node += open;
        node += inner;
        node += close;
        out = std::move(node);
    };
    switch (type) {
    case NodeElement:
        wrap(u"<", u"/>");
        break;
    case NodeText:
    case NodeWhitespace:
        out = EncodeText(text, 0);
        break;
    case NodeCData:
        // A node is one section, so unlike EncodeCData this can't split.
        if (inner.find(u"]]>") != inner.npos) return false;
        wrap(u"<![CDATA[", u"]]>");
        break;
    case NodeProcessing:
        wrap(u"<?", u"?>");
        break;
    case NodeComment:
        wrap(u"<!--", u"-->");
        break;
    case NodeDocType:
        out = WideString(inner);
        break;
    case NodeLoneEndTag:
        wrap(u"</", u">");
        break;
    default:
        break;
    }
    return true;
}

} // namespace vetra::xml
