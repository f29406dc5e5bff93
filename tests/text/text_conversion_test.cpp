// Tests of the text converter: every way between two names with measuring and filling, the
// loss flag, the default page behind unknown and empty names, the UTF-8 test of a block, and
// the broken-tail search, whose cut must leave two pieces that convert to the whole.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/doc_script.h"
#include "text/charset_names.h"
#include "text/text_conversion.h"

using namespace std::string_literals;
using namespace vetra::text;
using vetra::test::Show;

namespace {

// Texts as raw bytes in the machine's order, whatever their unit.
std::string Units16(const std::u16string& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}
std::string Units32(const std::vector<uint32_t>& values) {
    return std::string(reinterpret_cast<const char*>(values.data()), values.size() * 4);
}

size_t UnitSize(const char16_t* name) {
    const int32_t page = CodePageFromName(name);
    return page == CodePageUtf32 ? 4 : page == 1200 ? 2 : 1;
}

struct Converted {
    std::string bytes;
    uint32_t lossy;
};

// Measures, fills exactly the measured room, and checks that a destination one unit smaller
// is refused rather than overrun.
Converted Convert(const char16_t* from, const std::string& source, const char16_t* to) {
    const int32_t length = static_cast<int32_t>(source.size() / UnitSize(from));
    const size_t unit = UnitSize(to);
    TextConversion measure(from, source.data(), length);
    const int32_t n = ConvertText(measure, nullptr, to);
    std::string dest(static_cast<size_t>(n) * unit + 1, '\xA5');
    TextConversion fill(from, source.data(), length);
    fill.toEncoding = to;
    if (n > 1) {
        fill.destCapacity = n - 1;
        EXPECT_EQ(ConvertText(fill, dest.data(), nullptr), 0);
    }
    fill.destCapacity = n;
    EXPECT_EQ(ConvertText(fill, dest.data(), nullptr), n);
    EXPECT_EQ(fill.lossy, measure.lossy);
    EXPECT_EQ(dest.back(), '\xA5') << "wrote past the measured size";
    dest.pop_back();
    return {dest, fill.lossy};
}

TEST(ConvertText, Ways) {
    const char16_t* U16 = u"UTF-16";
    const char16_t* U32 = u"UTF-32";
    const char16_t* U8 = u"UTF-8";
    const struct {
        const char16_t* from;
        std::string source;
        const char16_t* to;
        std::string result;
        uint32_t lossy = 0;
    } cases[] = {
        // An empty source gives 0, whatever the way.
        {U32, "", U8, ""},
        // Pairs that no way joins.
        {U16, Units16(u"ab"), U16, ""},
        {U32, Units32({0x41}), u"windows-1252", ""},
        {u"windows-1252", "A", U32, ""},
        // UTF-32 made by hand; values are not checked.
        {U32, Units32({0x41, 0xE9, 0x4E2D, 0x1F600}), U8, "A\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"},
        {U32, Units32({0xD800, 0x7FFFFFFF}), U8, "\xED\xA0\x80\xF7\xBF\xBF\xBF"},
        {U32, Units32({0x1F600, 0x41}), U16, Units16(u"\U0001F600A")},
        {U16, Units16(u"\xD83D"), U32, Units32({63})},
        {U16, Units16(u"\xD83D\xDE00"), U32, Units32({0x1F600})},
        {U16, Units16(u"\xDE00\xD83D"), U32, Units32({0x9003D})},
        {U16, Units16(u"\xD83D\0A"s), U32, Units32({63, 0, 0x41})},
        {U8, "\xE4\x41", U32, Units32({63, 0x41})},
        {U8, "\xFF", U32, Units32({63})},
        {U8, "\xC3\xA9\xE0\x80\xAF\x80\x80", U32, Units32({0xE9, 0x2F, 0})},
        {U8, "\xF0\x9F\x98", U32, Units32({63})},
        // The platform's ways, and the loss flag; pages that hide loss never set it.
        {U16, Units16(u"A\u4E00"), u"windows-1252", "A?", 1},
        {U16, Units16(u"A\xD800"), u"utf-8", "A\xEF\xBF\xBD"},
        {U16, Units16(u"\u6F22\u00E9"), u"iso-2022-jp", "\x1B$B4A\x1B(B?"},
        {u"Shift_JIS", "\x93\xFA\x96\x7B", U16, Units16(u"\u65E5\u672C")},
        {u"koi8-r", "\xF6\xD6", u"windows-1251", "\xC6\xE6"}, // through wide text
        {u"windows-1251", "\xC6\x41", u"windows-1252", "?A", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Show(c.from) + " -> " + Show(c.to) + " of " +
                     Show(std::u16string(c.source.begin(), c.source.end())));
        const Converted got = Convert(c.from, c.source, c.to);
        EXPECT_EQ(got.bytes, c.result);
        EXPECT_EQ(got.lossy, c.lossy);
    }
}

// The tail, or -1 where no clean boundary was found.
int32_t Tail(const char16_t* from, const std::string& source) {
    const int32_t length = static_cast<int32_t>(source.size() / UnitSize(from));
    TextConversion c(from, source.data(), length);
    int32_t tail = -1;
    return MeasureBrokenTail(c, tail) ? tail : -1;
}

// The platform's calls with a system default page of the test's choosing.
class DefaultPage : public testing::Test {
  protected:
    void SetUp() override {
        ConversionCalls calls = SwapConversionCalls(nullptr);
        calls.systemCodePage = [] { return page_; };
        SwapConversionCalls(&calls);
    }
    void TearDown() override { SwapConversionCalls(nullptr); }
    static inline uint32_t page_ = 1252;
};

// A name the table lacks, or none, stands for the system's default page on either side; the
// empty name's tail is searched as that page's, UTF-8 read as UTF-8.
TEST_F(DefaultPage, UnknownAndEmptyNames) {
    page_ = 1252;
    EXPECT_EQ(Convert(u"ANSI", "A\xE9", u"UTF-16").bytes, Units16(u"A\u00E9"));
    EXPECT_EQ(Convert(u"UTF-16", Units16(u"A\u00E9"), u"no-such-page").bytes, "A\xE9");
    EXPECT_EQ(Convert(u"UTF-16", Units16(u"A\u00E9"), u"").bytes, "A\xE9");
    page_ = 932;
    EXPECT_EQ(Tail(u"", "AB\x93\xFA\x96"), Tail(u"cp932", "AB\x93\xFA\x96"));
    EXPECT_GT(Tail(u"", "AB\x93\xFA\x96"), 0);
    page_ = 65001;
    EXPECT_EQ(Tail(u"", "AB\xE4\xB8"), 2);
}

TEST(TestUtf8Block, Cases) {
    const struct {
        std::string bytes;
        bool alone, withMore; // moreFollows false, true
    } cases[] = {
        {"", true, true},
        {"\xC3\xA9", true, true},
        {"\xC3", false, true},
        {"A\xE4\xB8", false, true},
        {"A\xFF\x41", false, false},
        {"A\xFF", false, true},
        {"\x80\x80", true, true},     // a continuation byte read as a lead
        {"\xE0\x80\xAF", true, true}, // overlong forms pass
        {"\xE4\x41\x41", false, false},
    };
    for (const auto& c : cases) {
        const auto* p = reinterpret_cast<const unsigned char*>(c.bytes.data());
        const auto n = static_cast<int32_t>(c.bytes.size());
        EXPECT_EQ(TestUtf8Block(p, n, false), c.alone) << Show({c.bytes.begin(), c.bytes.end()});
        EXPECT_EQ(TestUtf8Block(p, n, true), c.withMore) << Show({c.bytes.begin(), c.bytes.end()});
    }
}

TEST(MeasureBrokenTail, ByteWiseReadings) {
    const struct {
        const char16_t* from;
        std::string source;
        int32_t tail;
    } cases[] = {
        {u"UTF-8", "AA\xE4\xB8", 2},
        {u"UTF-8", "AA\xE4\xB8\x80", 0},
        {u"UTF-8", "A\xE4\xB8", 3}, // the first byte is never tried
        {u"UTF-8", "A", 1},
        {u"UTF-8", "AB\xF0\x9F\x98", 0}, // 9F 98 reads as a character
        {u"UTF-16", Units16(u"ab\xD83D"), 2},
        {u"UTF-16", Units16(u"a\xDE00"), 2},
        {u"UTF-16", Units16(u"ab"), 0},
        {u"windows-1252", "AB\xE4", 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Tail(c.from, c.source), c.tail) << Show(c.from) << " " << c.source.size();
    }
}

// Wherever a multi-byte text is cut, the bytes before the found boundary and the bytes from
// it on convert, each alone, to what the whole text gives.
TEST(MeasureBrokenTail, CutsLeaveCleanPieces) {
    const std::u16string text =
        u"<a>\u65E5\u672C\u8A9E\u306E\u30C6\u30AD\u30B9\u30C8 x \u4E2D\u6587\u5B57 "
        u"\uD55C\uAD6D\uC5B4 \u00E9t\u00E9 \u0416\u0436</a>";
    for (const char16_t* name : {u"Shift_JIS", u"gb18030", u"euc-jp", u"johab"}) {
        SCOPED_TRACE(Show(name));
        const std::string bytes = Convert(u"UTF-16", Units16(text), name).bytes;
        const std::string whole = Convert(name, bytes, u"UTF-16").bytes;
        int unsure = 0;
        for (size_t cut = 1; cut <= bytes.size(); ++cut) {
            const std::string block = bytes.substr(0, cut);
            const int32_t tail = Tail(name, block);
            if (tail < 0) {
                ++unsure;
                continue;
            }
            ASSERT_LE(size_t(tail), cut);
            const std::string kept = block.substr(0, cut - size_t(tail));
            const std::string rest = bytes.substr(kept.size());
            EXPECT_EQ(Convert(name, kept, u"UTF-16").bytes + Convert(name, rest, u"UTF-16").bytes,
                      whole)
                << "cut at " << cut << ", tail " << tail;
        }
        EXPECT_EQ(unsure, 2); // blocks of one and two bytes have too few tails to agree
    }
}

} // namespace
