// Tests of the encoding-name lookup: every row of the table is found under its own name in
// any case, and the names that the table lacks or that take the UTF-32 shortcut give what
// callers rely on.
#include <gtest/gtest.h>

#include <string>

#include "support/doc_script.h"
#include "text/charset_names.h"

using namespace vetra::text;
using vetra::test::Show;

namespace {

constexpr const char16_t* kBuckets[] = {
#include "text/charset_table.inc"
};

TEST(CharsetNames, EveryRowIsFoundInAnyCase) {
    int rows = 0;
    for (const char16_t* row : kBuckets) {
        for (; *row != 0; ++rows) {
            const int length = (row[0] - u'0') * 10 + (row[1] - u'0');
            const int32_t codePage = std::stoi(std::string(row + 2, row + 7));
            std::u16string name(row + 7, static_cast<size_t>(length));
            EXPECT_EQ(CodePageFromName(name.c_str()), codePage) << Show(name);
            for (char16_t& c : name)
                if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
            // Only "utf-32..." in capitals is taken before the table.
            EXPECT_EQ(CodePageFromName(name.c_str()),
                      name.rfind(u"UTF-32", 0) == 0 ? CodePageUtf32 : codePage)
                << Show(name);
            row += 7 + length;
        }
    }
    EXPECT_EQ(rows, 365);
}

TEST(CharsetNames, NamesOutsideTheTable) {
    const struct {
        std::u16string name;
        int32_t codePage;
    } cases[] = {
        {u"", 0},
        {u"UTF-32x", CodePageUtf32},
        {u"UTF-3", -1},
        {u"cp1252 ", -1}, // a blank makes another name
        {u"cp9999", -1},
        {u"utf\u00E9-8", -1},
        {u"\u0130so-8859-1", -1}, // only ASCII capitals fold
        {std::u16string(99, u'a'), -1},
        {std::u16string(100, u'a'), -1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(CodePageFromName(c.name.c_str()), c.codePage) << Show(c.name);
}

} // namespace
