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

TEST(WideFormat, Conversions) {
    const char16_t unterminated[] = {u'a', u'b'};
    const char unterminatedNarrow[] = {'a', 'b', 'c'};
    const char16_t* const nullWide = nullptr;
    const char* const nullNarrow = nullptr;
    int dummy = 0, written = 0;
    char pointer[32];
    std::snprintf(pointer, sizeof pointer, "%p", static_cast<void*>(&dummy));
    const struct {
        std::u16string got, expected;
    } cases[] = {
        {Format(u"100%% \u00E9"), u"100% \u00E9"},
        // Wide strings under every spelling, narrow ones (UTF-8) under theirs.
        {Format(u"%s|%ls|%ws|%S|%hs", u"\u00E9", u"b", u"c", "\xC3\xA9", "d"),
         u"\u00E9|b|c|\u00E9|d"},
        {Format(u"%s|%S|%S", nullWide, nullNarrow, "a\xFFz"), u"(null)|(null)|a\uFFFDz"},
        // Width counts UTF-16 units; '-' and a negative '*' align left.
        {Format(u"[%5s][%-3s][%*s][%*s][%3S]", u"ab", u"ab", 3, u"x", -2, u"x", "\xC3\xA9"),
         u"[   ab][ab ][  x][x ][  \u00E9]"},
        // Precision bounds what is read, and never splits a character.
        {Format(u"%.2s|%.*s|%.*s|%.3S", unterminated, 1, u"abc", -1, u"abc", unterminatedNarrow),
         u"ab|a|abc|abc"},
        {Format(u"[%.1s][%.2s][%.1S][%.2S]", u"\U0001F600", u"\U0001F600", "\xC3\xA9", "\xC3\xA9"),
         u"[][\U0001F600][][\u00E9]"},
        // Characters: %c, %lc and %wc wide, %C and %hc narrow.
        {Format(u"%c%lc%wc|%C%hc%C|%3c", u'\u00E9', u'b', u'c', 'D', 'e', 0xE9, u'x'),
         u"\u00E9bc|De\uFFFD|  x"},
        {Format(u"%d %i %u %o %x %X %+05d %#x %-3d|", -5, 6, 7u, 8u, 255u, 255u, 42, 42u, 1),
         u"-5 6 7 10 ff FF +0042 0x2a 1  |"},
        {Format(u"[%*d][%.*d] %hhd %hu", 4, 7, 3, 7, 300, 65537), u"[   7][007] 44 1"},
        {Format(u"%ld %llx %I64u %I32d %Iu %zd %td %jd", LONG_MIN, 0xFEDCBA9876543210ull, ~0ull, -2,
                SIZE_MAX, ptrdiff_t{-4}, ptrdiff_t{-5}, INTMAX_MIN),
         u"-9223372036854775808 fedcba9876543210 18446744073709551615 -2 18446744073709551615 -4 "
         u"-5 -9223372036854775808"},
        {Format(u"%.2f %e %G %lf %Lf %a %F", 3.14159, 1500.0, 1e20, 1.5, 1.25L, 1.0, 1e300 * 1e300),
         u"3.14 1.500000e+03 1E+20 1.500000 1.250000 0x1p+0 INF"},
        {Format(u"%p", static_cast<void*>(&dummy)),
         std::u16string(pointer, pointer + strlen(pointer))},
        // Longer than the first buffer that snprintf is given.
        {Format(u"[%300d]", 1), u"[" + std::u16string(299, u' ') + u"1]"},
        // Refused: %n, positional arguments, unknown types and modifiers, a format cut short,
        // an overflowing width, and a non-ASCII unit that narrows to a flag.
        {Format(u"%n", &written), kRefused},
        {Format(u"%1$d", 1), kRefused},
        {Format(u"%q", 1), kRefused},
        {Format(u"abc%"), kRefused},
        {Format(u"%hf", 1.0), kRefused},
        {Format(u"%Ld", 1), kRefused},
        {Format(u"%lls", u"a"), kRefused},
        {Format(u"%99999999999d", 1), kRefused},
        {Format(u"%\u012Dd", 1), kRefused},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(cases[i].got, cases[i].expected);
    }
    EXPECT_EQ(written, 0);
}

} // namespace
