// Tests of the document's text block against std::u16string doing the same,
// including pieces taken from the text itself.
#include <gtest/gtest.h>

#include <string>

#include "xml/doc_text.h"

using namespace vetra::xml;

namespace {

TEST(DocText, ReplaceAndAssignMatchAString) {
    const std::u16string start = u"<a><b>text</b></a>";
    const struct {
        size_t pos, count;
        int from; // where the piece starts in the text, or -1 for outside
        size_t n;
    } cases[] = {
        {3, 0, -1, 5}, {18, 0, -1, 3}, {3, 11, -1, 2}, {0, 18, -1, 0},
        {3, 0, 0, 18}, {3, 11, 6, 4},  {5, 2, 18, 0},
    };
    const std::u16string outside = u"<new a='1'/>";
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.pos << " " << c.count << " " << c.from);
        DocText text;
        text.assign(start.data(), start.size());
        std::u16string expect = start;
        const wchar* piece = c.from < 0 ? outside.data() : text.c_str() + c.from;
        expect.replace(c.pos, c.count, c.from < 0 ? outside.data() : start.data() + c.from, c.n);
        text.replace(c.pos, c.count, piece, c.n);
        EXPECT_EQ(text.View(), expect);
        EXPECT_EQ(text.c_str()[text.size()], 0);
        if (c.from >= 0) {
            text.assign(text.c_str() + 1, text.size() - 2);
            EXPECT_EQ(text.View(), expect.substr(1, expect.size() - 2));
        }
    }
}

TEST(DocText, GrowthKeepsTheUnits) {
    DocText text;
    EXPECT_EQ(text.c_str()[0], 0);
    std::u16string expect;
    for (int i = 0; i < 20000; ++i) {
        const wchar unit = wchar(u'a' + i % 26);
        text.replace(text.size(), 0, &unit, 1);
        expect += unit;
    }
    EXPECT_EQ(text.View(), expect);
    DocText copy = text;
    EXPECT_EQ(copy.View(), expect);
    wchar* units = copy.resize_for_overwrite(3);
    EXPECT_EQ(std::u16string(units, 3), u"abc");
    EXPECT_EQ(copy.c_str()[3], 0);
}

} // namespace
