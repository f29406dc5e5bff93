// Tests of the wide formatter: each conversion with its flags, width, precision and length
// modifiers, precision as a bound on what is read, and the formats it refuses.
#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

#include "host/wide_format.h"

namespace {

const char16_t* const kRefused = u"<refused>";

std::u16string Format(const char16_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::u16string out;
    const bool ok = vetra::host::FormatWide(format, args, out);
    va_end(args);
    return ok ? out : kRefused;
}

std::u16string Widen(const char* ascii) {
    return std::u16string(ascii, ascii + strlen(ascii));
}

struct Case {
    std::u16string got;
    std::u16string expected;
};

void Check(const Case* cases, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(cases[i].got, cases[i].expected);
    }
}

TEST(WideFormat, TextConversions) {
    const char16_t unterminated[] = {u'a', u'b'};
    const char unterminatedNarrow[] = {'a', 'b', 'c'};
    const char16_t* const nullWide = nullptr;
    const char* const nullNarrow = nullptr;
    const Case cases[] = {
        {Format(u"plain 100%% \u00E9"), u"plain 100% \u00E9"},
        // Wide strings under every spelling, narrow ones under theirs.
        {Format(u"%s|%ls|%ws", u"\u00E9", u"b", u"c"), u"\u00E9|b|c"},
        {Format(u"%S|%hs", "\xC3\xA9", "d"), u"\u00E9|d"},
        {Format(u"%s|%S", nullWide, nullNarrow), u"(null)|(null)"},
        // Width counts UTF-16 units; '-' and a negative '*' align left.
        {Format(u"[%5s][%-4s][%*s][%*s]", u"ab", u"ab", 3, u"x", -3, u"x"),
         u"[   ab][ab  ][  x][x  ]"},
        {Format(u"[%3S][%2s]", "\xC3\xA9", u"\U0001F600"), u"[  \u00E9][\U0001F600]"},
        // Precision bounds what is read, and never splits a character.
        {Format(u"%.2s|%.*s|%.*s", u"abc", 1, u"abc", -1, u"abc"), u"ab|a|abc"},
        {Format(u"%.2s|%.3S", unterminated, unterminatedNarrow), u"ab|abc"},
        {Format(u"[%.1s][%.2s]", u"\U0001F600", u"\U0001F600"), u"[][\U0001F600]"},
        {Format(u"[%.1S][%.2S][%.3S]", "\xC3\xA9", "\xC3\xA9", "\xE2\x82\xAC"),
         u"[][\u00E9][\u20AC]"},
        {Format(u"%S", "a\xFFz"), u"a\uFFFDz"},
        // Characters: %c and %lc wide, %C and %hc narrow.
        {Format(u"%c%lc%wc|%C%hc|%C", u'\u00E9', u'b', u'c', 'D', 'e', 0xE9),
         u"\u00E9bc|De|\uFFFD"},
        {Format(u"[%3c][%-2c]", u'x', u'y'), u"[  x][y ]"},
    };
    Check(cases, std::size(cases));
}

// The narrow snprintf's own result for the same conversion.
template <typename T> std::u16string Narrow(const char* spec, T value) {
    char buffer[128];
    std::snprintf(buffer, sizeof buffer, spec, value);
    return Widen(buffer);
}

TEST(WideFormat, NumericConversions) {
    int dummy = 0;
    const Case cases[] = {
        {Format(u"%d %i %u %o %x %X", -5, 6, 7u, 8u, 255u, 255u), u"-5 6 7 10 ff FF"},
        {Format(u"[%+05d][% d][%-4d][%#x][%#o]", 42, 42, 42, 42u, 8u),
         u"[+0042][ 42][42  ][0x2a][010]"},
        {Format(u"[%*d][%.*d][%-*d]", 4, 7, 3, 7, -3, 7), u"[   7][007][7  ]"},
        {Format(u"%hhd %hhu %hd %hu", 300, 511, 70000, 65537), u"44 255 4464 1"},
        {Format(u"%ld %lu", LONG_MIN, ULONG_MAX),
         Narrow("%ld", LONG_MIN) + u" " + Narrow("%lu", ULONG_MAX)},
        {Format(u"%lld %llx", LLONG_MIN, 0xFEDCBA9876543210ull),
         u"-9223372036854775808 fedcba9876543210"},
        {Format(u"%I64d %I64u %I32d %I32x", -1ll, ~0ull, -2, 0xFFu),
         u"-1 18446744073709551615 -2 ff"},
        {Format(u"%Iu %Id %zu %zd %td %jd %ju", SIZE_MAX, ptrdiff_t{-3}, SIZE_MAX, ptrdiff_t{-4},
                ptrdiff_t{-5}, INTMAX_MIN, UINTMAX_MAX),
         u"18446744073709551615 -3 18446744073709551615 -4 -5 -9223372036854775808 "
         u"18446744073709551615"},
        {Format(u"%.2f %e %g %G %10.3f|%lf", 3.14159, 1500.0, 0.0001, 1e20, 2.5, 1.5),
         u"3.14 1.500000e+03 0.0001 1E+20      2.500|1.500000"},
        {Format(u"%Lf %a %A %F", 1.25L, 1.0, 2.0, 1e300 * 1e300), u"1.250000 0x1p+0 0X1P+1 INF"},
        {Format(u"%p", static_cast<void*>(&dummy)), Narrow("%p", static_cast<void*>(&dummy))},
        {Format(u"[%300d]", 1), u"[" + std::u16string(299, u' ') + u"1]"},
    };
    Check(cases, std::size(cases));
}

TEST(WideFormat, RefusedFormats) {
    int written = 0;
    const Case cases[] = {
        {Format(u"%n", &written), kRefused},
        {Format(u"%1$d", 1), kRefused},
        {Format(u"abc%"), kRefused},
        {Format(u"%5"), kRefused},
        {Format(u"%q", 1), kRefused},
        {Format(u"%Z", 1), kRefused},
        {Format(u"%hf", 1.0), kRefused},
        {Format(u"%Ld", 1), kRefused},
        {Format(u"%lls", u"a"), kRefused},
        {Format(u"%lp", nullptr), kRefused},
        {Format(u"%99999999999d", 1), kRefused},
        // A flag character outside ASCII that narrows to '-' is no flag.
        {Format(u"%\u012Dd", 1), kRefused},
    };
    Check(cases, std::size(cases));
    EXPECT_EQ(written, 0);
}

} // namespace
