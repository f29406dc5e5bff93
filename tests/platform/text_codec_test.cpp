// Tests of code page conversion through the platform layer: the call contract (measuring,
// filling, refusals), what replaces characters a page cannot hold or read, stateful pages,
// the default code page, locale codeset names, the single-byte tables against the iconv path
// they stand in for, and real text in every page against Python's codecs.
#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/code_pages.h"
#include "platform/posix/code_page_paths.h"
#include "platform/text_codec.h"
#include "text/file_fixture.h"

using namespace std::string_literals;
using namespace vetra::platform;
using vetra::test::ReadWholeFile;

namespace {

const char16_t R = 0xFFFD;

int32_t Size(const std::string& s) {
    return static_cast<int32_t>(s.size());
}
int32_t Size(const std::u16string& s) {
    return static_cast<int32_t>(s.size());
}

// Measures, fills exactly that room, and checks that one unit less is refused.
std::u16string ToWide(uint32_t codePage, const std::string& bytes) {
    const int32_t needed = MultiByteToWide(codePage, bytes.data(), Size(bytes), nullptr, 0);
    std::u16string text(static_cast<size_t>(needed), u'\0');
    if (needed > 1) {
        EXPECT_EQ(MultiByteToWide(codePage, bytes.data(), Size(bytes), &text[0], needed - 1), 0);
    }
    EXPECT_EQ(MultiByteToWide(codePage, bytes.data(), Size(bytes), text.data(), needed), needed);
    return text;
}

std::string ToBytes(uint32_t codePage, const std::u16string& text, bool* usedDefault) {
    bool measuredDefault = false;
    const int32_t needed =
        WideToMultiByte(codePage, text.data(), Size(text), nullptr, 0, &measuredDefault);
    std::string bytes(static_cast<size_t>(needed), '\0');
    if (needed > 1) {
        EXPECT_EQ(
            WideToMultiByte(codePage, text.data(), Size(text), &bytes[0], needed - 1, nullptr), 0);
    }
    EXPECT_EQ(WideToMultiByte(codePage, text.data(), Size(text), bytes.data(), needed, usedDefault),
              needed);
    EXPECT_EQ(measuredDefault, *usedDefault);
    return bytes;
}

TEST(TextCodec, RefusedCallsGiveZero) {
    const struct {
        uint32_t codePage;
        bool nullSource;
        int32_t length;
        bool nullOut;
        int32_t capacity;
    } cases[] = {
        {1252, false, 0, false, 16},   {65001, false, 0, true, 0},   // empty source
        {65001, false, -1, false, 16}, {1252, false, 2, false, -1},  // negative sizes
        {65001, true, 2, false, 16},   {1252, false, 2, true, 16},   // null pointers
        {1200, false, 2, false, 16},   {1201, false, 2, false, 16},  // UTF-16 pages
        {12000, false, 2, false, 16},  {12001, false, 2, false, 16}, // UTF-32 pages
        {65005, false, 2, false, 16},  {4711, false, 2, false, 16},  // unknown pages
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        const auto& c = cases[i];
        char16_t wide[16];
        char bytes[16];
        bool used = true;
        EXPECT_EQ(MultiByteToWide(c.codePage, c.nullSource ? nullptr : "ab", c.length,
                                  c.nullOut ? nullptr : wide, c.capacity),
                  0);
        EXPECT_EQ(WideToMultiByte(c.codePage, c.nullSource ? nullptr : u"ab", c.length,
                                  c.nullOut ? nullptr : bytes, c.capacity, &used),
                  0);
        EXPECT_FALSE(used);
    }
}

TEST(TextCodec, ConversionsInCodePages) {
    enum Way { kBoth, kToBytes, kToWide };
    const struct {
        uint32_t codePage;
        Way way;
        std::string bytes;
        std::u16string text;
        bool used = false; // a character became the page's question mark
    } cases[] = {
        {65001, kBoth, "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80\0"s, u"a\u00E9\u4E2D\U0001F600\0"s},
        {1252, kBoth, "\x80\xE9\x9F\0"s, u"\u20AC\u00E9\u0178\0"s},
        {54936, kBoth, "\x94\x39\xFC\x36\xA8\xA1", u"\U0001F600\u0101"},
        {37, kBoth, "\xC1\x81\xF0", u"Aa0"},
        {50220, kBoth, "\x1B$B4A\x1B(Bx", u"\u6F22x"}, // ends back in ASCII
        {65000, kBoth, "A+byI-", u"A\u6F22"},
        // What a page cannot hold: one question mark per character, no best fit.
        {1252, kToBytes, "A?B?", u"A\u4E00\x42\u0101", true},
        {1252, kToBytes, "A?B", u"A\U0001F600\x42", true},
        {1252, kToBytes, "?B??", u"\xDC00\x42\xD800\xD800", true},
        {37, kToBytes, "\xC1\x6F", u"A\u4E00", true}, // in the page's own bytes
        {50220, kToBytes, "\x1B$B4A\x1B(B?", u"\u6F22\u0101", true},
        {65001, kToBytes, "A\xEF\xBF\xBD", u"A\xD800", true},
        // What a page cannot read: one U+FFFD per rejected byte or cut-off character.
        {65001, kToWide, "A\xC0\xAF\xE4\xB8", {u'A', R, R, R}},
        {1252, kToWide, "A\x81\x8D", {u'A', R, R}},
        {932, kToWide, "A\x82", {u'A', R}},
        {54936, kToWide, "A\x94\x39\xFC", {u'A', R}},
        {20127, kToWide, "A\xC3\xA9", {u'A', R, R}},
        {50220, kToWide, "\x1B$B4", {R}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        const auto& c = cases[i];
        if (c.way != kToBytes) {
            EXPECT_EQ(ToWide(c.codePage, c.bytes), c.text);
        }
        if (c.way == kToWide) continue;
        bool used = !c.used;
        EXPECT_EQ(ToBytes(c.codePage, c.text, &used), c.bytes);
        EXPECT_EQ(used, c.used);
    }
}

// Measuring counts in a small fixed chunk; texts far larger than it, with replacements and
// shift sequences scattered over the chunk's edges, must measure what they fill.
TEST(TextCodec, LongTextsMeasureWhatTheyFill) {
    std::u16string text;
    for (int i = 0; i < 3000; ++i) {
        text += u"\u4E2D";
        if (i % 7 == 0) text += u"x";
        if (i % 11 == 0) text += u"\u00E9"; // not in 932 or 50220
    }
    for (uint32_t codePage : {932u, 936u, 50220u, 65000u, 65001u}) {
        SCOPED_TRACE(codePage);
        bool used = false;
        const std::string bytes = ToBytes(codePage, text, &used);
        const std::u16string back = ToWide(codePage, bytes);
        EXPECT_EQ(used, codePage == 932 || codePage == 50220);
        EXPECT_EQ(back.size(), text.size());
        if (!used) {
            EXPECT_EQ(back, text);
        }
    }
}

// Converters are kept between calls; a call must not inherit the last one's shift state.
TEST(TextCodec, NoShiftStateSurvivesACall) {
    char16_t wide[4];
    ASSERT_EQ(MultiByteToWide(50220, "\x1B$B4A", 5, wide, 4), 1);
    ASSERT_EQ(MultiByteToWide(50220, "4A", 2, wide, 4), 2);
    EXPECT_EQ(std::u16string(wide, 2), u"4A");
}

TEST(TextCodec, SystemCodePageFollowsTheLocale) {
    const std::string saved = setlocale(LC_CTYPE, nullptr);
    // Plain ASCII, the locale of a program that never called setlocale, reads as UTF-8.
    for (const char* locale : {"C", "POSIX", "C.UTF-8"}) {
        if (setlocale(LC_CTYPE, locale) == nullptr) continue; // not installed here
        EXPECT_EQ(SystemCodePage(), 65001u) << locale;
    }
    setlocale(LC_CTYPE, saved.c_str());
    bool used = false;
    EXPECT_EQ(ToWide(0, "A\xC3\xA9"), ToWide(SystemCodePage(), "A\xC3\xA9"));
    EXPECT_EQ(ToBytes(0, u"A\u00E9", &used), ToBytes(SystemCodePage(), u"A\u00E9", &used));
}

// The first use of a page from several threads at once builds its tables once; every
// thread reads the same text.
TEST(SingleBytePages, FirstUseFromSeveralThreads) {
    const std::string bytes = "\xB0\xC0\xD0\xE0 cyrillic \xEF";
    std::vector<std::u16string> read(4);
    std::vector<std::string> written(4);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < read.size(); ++t) {
        threads.emplace_back([&, t] {
            read[t] = ToWide(21866, bytes);
            bool used = false;
            written[t] = ToBytes(21866, read[t], &used);
        });
    }
    for (std::thread& t : threads)
        t.join();
    for (size_t t = 0; t < read.size(); ++t) {
        EXPECT_EQ(read[t], read[0]);
        EXPECT_EQ(written[t], bytes);
    }
}

TEST(CodePages, CodesetNames) {
    const struct {
        const char* codeset;
        uint32_t codePage;
    } cases[] = {
        {"utf8", 65001}, {"ANSI_X3.4-1968", 20127}, {"BIG5-HKSCS", 950}, {"EUC-TW", 0}, {"", 0},
        {nullptr, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CodePageOfCodeset(c.codeset), c.codePage) << (c.codeset ? c.codeset : "null");
    }
}

// The tables must give what iconv gives, byte for byte and flag for flag: every byte, and
// every UTF-16 unit with the surrogate cases (pairs, lone halves, a high one at the end).
TEST(SingleBytePages, SameAsIconv) {
    std::string bytes;
    for (int b = 0; b < 256; ++b)
        bytes += static_cast<char>(b);
    std::u16string text;
    for (uint32_t u = 0; u < 0x10000; ++u)
        text += static_cast<char16_t>(u);
    text += u"\U0001F600\xDC00\xD800";
    const int32_t units = Size(text);
    for (uint32_t codePage : {1252u, 20866u, 37u, 437u}) { // Latin, Cyrillic, EBCDIC, DOS
        SCOPED_TRACE(codePage);
        ASSERT_NE(posix::SingleByteDecoder(codePage), nullptr);
        ASSERT_NE(posix::SingleByteEncoder(codePage), nullptr);
        std::u16string wide(256, u'\0'), wideByIconv(256, u'\0');
        EXPECT_EQ(MultiByteToWide(codePage, bytes.data(), 256, wide.data(), 256), 256);
        EXPECT_EQ(posix::IconvToWide(codePage, bytes.data(), 256, wideByIconv.data(), 256), 256);
        EXPECT_EQ(wide, wideByIconv);

        bool used = false, usedByIconv = false, measuredUsed = false;
        const int32_t n = WideToMultiByte(codePage, text.data(), units, nullptr, 0, &measuredUsed);
        std::string out(size_t(n), '\0'), outByIconv(size_t(n), '\0');
        EXPECT_EQ(WideToMultiByte(codePage, text.data(), units, out.data(), n, &used), n);
        EXPECT_EQ(posix::IconvFromWide(codePage, text.data(), size_t(units), outByIconv.data(),
                                       size_t(n), &usedByIconv),
                  n);
        EXPECT_EQ(out, outByIconv);
        EXPECT_TRUE(used && usedByIconv && measuredUsed);
    }
}

// Pages whose bytes lead others, shift, or join their neighbours stay on iconv.
TEST(SingleBytePages, OnlyPagesWhoseBytesStandAlone) {
    for (uint32_t codePage :
         {932u, 936u, 50220u, 50225u, 65000u, 1255u, 1258u, 20261u, 20269u, 4711u}) {
        EXPECT_EQ(posix::SingleByteDecoder(codePage), nullptr) << codePage;
        EXPECT_EQ(posix::SingleByteEncoder(codePage), nullptr) << codePage;
    }
}

// Real text in every page of the encoding-name table that glibc and Python both convert
// (tests/data/codepages/make_fixtures.py): our reading of Python's bytes must be Python's,
// and our writing must give them back, byte for byte where the page has no shift states.
TEST(CodePages, AgreeWithPythonOnRealText) {
    const auto folder = std::filesystem::path(__FILE__).parent_path() / "../data/codepages";
    int pages = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".bin") continue;
        const auto codePage = static_cast<uint32_t>(std::stoul(entry.path().stem().string()));
        SCOPED_TRACE(codePage);
        const std::string bytes = ReadWholeFile(entry.path());
        const std::string expected =
            ReadWholeFile(std::filesystem::path(entry.path()).replace_extension(".utf16"));
        const std::u16string text(reinterpret_cast<const char16_t*>(expected.data()),
                                  expected.size() / 2);
        ASSERT_FALSE(text.empty());
        EXPECT_EQ(ToWide(codePage, bytes), text);
        bool used = true;
        const std::string written = ToBytes(codePage, text, &used);
        EXPECT_FALSE(used);
        EXPECT_EQ(ToWide(codePage, written), text);
        const bool shifts = codePage == 65000 || (codePage >= 50220 && codePage <= 50229);
        if (!shifts) {
            EXPECT_EQ(written, bytes);
        }
        ++pages;
    }
    EXPECT_EQ(pages, 65);
}

} // namespace
