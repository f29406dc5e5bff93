// Tests of the UTF-8 codec: sequences of every length at both ends of their range, each kind
// of ill-formed input and its U+FFFD count, lone surrogates, measuring against converting,
// running out of room, and the word-at-a-time ASCII path at every alignment and run length
// around other characters.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/utf8_codec.h"

using namespace std::string_literals;
namespace utf8 = vetra::platform::utf8;

namespace {

const char16_t R = 0xFFFD;

// Converts into exactly the measured room, and checks that one unit less is refused.
std::u16string Decode(const char* bytes, size_t length) {
    const size_t measured = utf8::DecodedLength(bytes, length);
    EXPECT_LE(measured, length);
    std::u16string text(measured, u'\0');
    EXPECT_EQ(utf8::Decode(bytes, length, text.data(), measured), measured);
    if (measured > 0) {
        EXPECT_EQ(utf8::Decode(bytes, length, &text[0], measured - 1), utf8::kNoRoom);
    }
    return text;
}

std::string Encode(const char16_t* text, size_t length, bool* replaced) {
    bool measuredReplaced = false;
    const size_t measured = utf8::EncodedLength(text, length, &measuredReplaced);
    std::string bytes(measured, '\0');
    *replaced = false;
    EXPECT_EQ(utf8::Encode(text, length, bytes.data(), measured, replaced), measured);
    EXPECT_EQ(measuredReplaced, *replaced);
    if (measured > 0) {
        EXPECT_EQ(utf8::Encode(text, length, &bytes[0], measured - 1, nullptr), utf8::kNoRoom);
    }
    return bytes;
}

TEST(Utf8Codec, Decoding) {
    const struct {
        std::string bytes;
        std::u16string text;
    } cases[] = {
        {"", u""},
        {"A\0B"s, u"A\0B"s},
        // Each length at its lowest and highest value (every payload bit set once), and
        // around the surrogate gap.
        {"\xC2\x80\xDF\xBF", u"\u0080\u07FF"},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", u"\u0800\uD7FF\uE000\uFFFF"},
        {"\xF0\x90\x80\x80\xF3\xBF\xBF\xBF\xF4\x8F\xBF\xBF", u"\U00010000\U000FFFFF\U0010FFFF"},
        // Stray continuation bytes, and bytes that never start a sequence.
        {"A\xBF\x42\x80", {u'A', R, u'B', R}},
        {"\xFE\xFF\x41", {R, R, u'A'}},
        // Overlong forms, encoded surrogates, values beyond U+10FFFF: the lead byte cannot
        // take that second byte, so every byte is replaced on its own.
        {"\xC0\xAF\xC1\xBF", {R, R, R, R}},
        {"\xE0\x9F\xBF", {R, R, R}},
        {"\xED\xA0\x80\xED\xBF\xBF", {R, R, R, R, R, R}},
        {"\xF4\x90\x80\x80", {R, R, R, R}},
        // Truncated: one replacement for the valid prefix; the breaking byte is read again.
        {"A\xC3", {u'A', R}},
        {"\xF0\x9F\x98", {R}},
        {"\xC3\xC3\xA9", {R, u'\u00E9'}},
        {"\xE4\xF0\x9F\x98\x80", {R, u'\xD83D', u'\xDE00'}},
        // The Unicode standard's own example of replacement by maximal subparts.
        {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
         {u'a', R, R, R, u'b', R, u'c', R, R, u'd'}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        const auto& c = cases[i];
        EXPECT_EQ(Decode(c.bytes.data(), c.bytes.size()), c.text);
        // Well-formed input encodes back to itself, each length at both of its ends.
        bool replaced = false;
        if (c.text.find(R) == std::u16string::npos) {
            EXPECT_EQ(Encode(c.text.data(), c.text.size(), &replaced), c.bytes);
            EXPECT_FALSE(replaced);
        }
    }
}

TEST(Utf8Codec, EncodingSurrogates) {
    const std::string r = "\xEF\xBF\xBD";
    const struct {
        std::u16string text;
        std::string bytes;
        bool replaced;
    } cases[] = {
        {u"\uFFFD", r, false}, // a real U+FFFD is no replacement
        {u"\U0001F600", "\xF0\x9F\x98\x80", false},
        {u"A\xD83D", "A" + r, true},
        {u"\xDE00\x41", r + "A", true},
        {u"\xD83D\xD83D\xDE00", r + "\xF0\x9F\x98\x80", true},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(i);
        bool replaced = false;
        EXPECT_EQ(Encode(cases[i].text.data(), cases[i].text.size(), &replaced), cases[i].bytes);
        EXPECT_EQ(replaced, cases[i].replaced);
    }
}

// ASCII runs before and after one other sequence, for every run length up to beyond two
// fast-path blocks and at every start alignment, so that each way a block can end is met.
TEST(Utf8Codec, AsciiRunsAtEveryAlignment) {
    const struct {
        std::string bytes;
        std::u16string text;
        bool encodes; // false where the text does not encode back to the bytes
    } middles[] = {
        {"", u"", true},
        {"\xC3\xA9", u"\u00E9", true},
        {"\xE4\xB8\xAD", u"\u4E2D", true},
        {"\xF0\x9F\x98\x80", u"\U0001F600", true},
        {"\xFF", u"\uFFFD", false},
        {"\xE4\xB8", u"\uFFFD", false},
    };
    std::vector<char> bytesAt(96);
    std::vector<char16_t> textAt(96);
    for (const auto& middle : middles) {
        for (size_t before = 0; before <= 35; ++before) {
            for (size_t after = 0; after <= 35; ++after) {
                std::string bytes;
                for (size_t i = 0; i < before; ++i)
                    bytes += static_cast<char>('a' + i % 26);
                std::u16string text(bytes.begin(), bytes.end());
                bytes += middle.bytes;
                text += middle.text;
                for (size_t i = 0; i < after; ++i) {
                    bytes += static_cast<char>('0' + i % 10);
                    text += static_cast<char16_t>('0' + i % 10);
                }
                for (size_t align = 0; align < 8; ++align) {
                    SCOPED_TRACE(bytes + " at " + std::to_string(align));
                    std::copy(bytes.begin(), bytes.end(), bytesAt.begin() + align);
                    ASSERT_EQ(Decode(&bytesAt[align], bytes.size()), text);
                    if (!middle.encodes) continue;
                    std::copy(text.begin(), text.end(), textAt.begin() + align);
                    bool replaced = false;
                    ASSERT_EQ(Encode(&textAt[align], text.size(), &replaced), bytes);
                }
            }
        }
    }
}

} // namespace
