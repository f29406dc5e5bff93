// char_sets.h - the scanner's character sets, tested by one 128-entry table,
// and CompareNames.
//
// Membership is exact: every character at or above 128 belongs to no set.
// Whether a character can begin a name is a range test, not a set.
#ifndef VETRA_XML_CHAR_SETS_H
#define VETRA_XML_CHAR_SETS_H

#include <cstdint>
#include <cstring>

#include "xml/xml_types.h"

namespace vetra::xml {

/// One bit per set in kCharClass.
enum CharSet : uint8_t {
    WhitespaceChars = 0x01,     // tab, line feed, carriage return, space
    WordEndChars = 0x02,        // whitespace and ! " ' / ; < = > ? backslash
    PathEndChars = 0x04,        // space and / = [ ]
    NameEndChars = 0x08,        // whitespace and / >
    AttribNameEndChars = 0x10,  // whitespace and / = > ?
    AttribValueEndChars = 0x20, // whitespace and >
    BeforeSlashChars = 0x40,    // whitespace and " '
    DeclStartChars = 0x80,      // A E N
};

extern const uint8_t kCharClass[128];

/// A 128-entry table of `Classify(c)` for every ASCII c, built at compile time.
template <uint8_t (*Classify)(int)> struct AsciiTable {
    uint8_t v[128];
    constexpr AsciiTable() : v() {
        for (int c = 0; c < 128; ++c)
            v[c] = Classify(c);
    }
};

inline constexpr uint8_t kSpaceClass = WhitespaceChars | WordEndChars | NameEndChars |
                                       AttribNameEndChars | AttribValueEndChars | BeforeSlashChars;

/// The CharSet bits of the ASCII character `c`: the table in one place.
constexpr uint8_t CharClassOf(int c) {
    switch (c) {
    case '\t':
    case '\n':
    case '\r':
        return kSpaceClass;
    case ' ':
        return kSpaceClass | PathEndChars;
    case '!':
    case ';':
    case '<':
    case '\\':
        return WordEndChars;
    case '"':
    case '\'':
        return WordEndChars | BeforeSlashChars;
    case '/':
        return WordEndChars | PathEndChars | NameEndChars | AttribNameEndChars;
    case '=':
        return WordEndChars | PathEndChars | AttribNameEndChars;
    case '>':
        return WordEndChars | NameEndChars | AttribNameEndChars | AttribValueEndChars;
    case '?':
        return WordEndChars | AttribNameEndChars;
    case '[':
    case ']':
        return PathEndChars;
    case 'A':
    case 'E':
    case 'N':
        return DeclStartChars;
    default:
        return 0;
    }
}

/// 1 for the NUL and the members of `set`: what ends a run of `set`'s
/// complement in a null-terminated text.
template <uint8_t set> constexpr uint8_t StopOf(int c) {
    return c == 0 || (CharClassOf(c) & set) != 0;
}
template <uint8_t set> inline constexpr AsciiTable<StopOf<set>> kStops{};

/// The largest character that `Classify` gives a bit: above it, a table
/// test can be skipped. Letters lie above every set but three, so the usual
/// character of a name or value costs one comparison.
template <uint8_t (*Classify)(int)> constexpr wchar LastMarked() {
    int last = 0;
    for (int c = 0; c < 128; ++c)
        if (Classify(c) != 0) last = c;
    return wchar(last);
}
/// The largest member of each combination of sets, indexed by its bits.
struct SetLimits {
    wchar v[256];
    constexpr SetLimits() : v() {
        wchar ofBit[8] = {};
        for (int c = 0; c < 128; ++c)
            for (int bit = 0; bit < 8; ++bit)
                if ((CharClassOf(c) >> bit) & 1) ofBit[bit] = wchar(c);
        for (int set = 0; set < 256; ++set)
            for (int bit = 0; bit < 8; ++bit)
                if (((set >> bit) & 1) && ofBit[bit] > v[set]) v[set] = ofBit[bit];
    }
};
inline constexpr SetLimits kSetLimits{};

/// The first offset from `i` whose character is the NUL or a member of `set`.
template <uint8_t set> inline int32_t SkipToStop(const wchar* text, int32_t i) {
    constexpr wchar last = LastMarked<StopOf<set>>();
    for (wchar c = text[i]; c > last || !kStops<set>.v[c]; c = text[++i]) {
    }
    return i;
}

/// Is `c` a member of `set` (one CharSet bit)?
inline bool InSet(wchar c, uint8_t set) {
    return c <= kSetLimits.v[set] && (kCharClass[c] & set) != 0;
}

/// Can `c` begin a name: 0x3A or above, except ; < = > ? @ [ \ ] ^ and `.
inline bool CanBeginName(wchar c) {
    if (c < 0x3A) return false;
    if (c >= 0x80) return true;
    return !((c >= 0x3B && c <= 0x40) || (c >= 0x5B && c <= 0x5E) || c == 0x60);
}

/// Compares exactly `count` characters of `a` and `b`: 0 if equal, otherwise
/// the difference of the first differing pair. With `ignoreCase`, ASCII
/// letters fold until an identical non-ASCII character has been seen; from
/// then on the comparison is exact.
int32_t CompareNamesFolding(const wchar* a, const wchar* b, int32_t count);
inline int32_t CompareNames(const wchar* a, const wchar* b, int32_t count, bool ignoreCase) {
    if (ignoreCase) return CompareNamesFolding(a, b, count);
    for (int32_t i = 0; i < count; ++i)
        if (a[i] != b[i]) return int32_t(a[i]) - int32_t(b[i]);
    return 0;
}

/// Are the `count` characters at `a` and at `b` the same, as CompareNames
/// judges? Both must hold `count` characters: exactly, four units a step.
inline bool SameNames(const wchar* a, const wchar* b, int32_t count, bool ignoreCase) {
    if (ignoreCase || count < 4) return CompareNames(a, b, count, ignoreCase) == 0;
    auto differ = [&](int32_t at) {
        uint64_t x, y;
        std::memcpy(&x, a + at, sizeof x);
        std::memcpy(&y, b + at, sizeof y);
        return x != y;
    };
    for (int32_t i = 0; i + 4 < count; i += 4)
        if (differ(i)) return false;
    return !differ(count - 4); // the last four, which may overlap the step before
}

} // namespace vetra::xml

#endif // VETRA_XML_CHAR_SETS_H
