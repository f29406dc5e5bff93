// Tests of the encoding-name lookup: every row of the table is found under its
// own name in any case, and the names that the table lacks or that take the
// UTF-32 shortcut give what callers rely on.
#include <gtest/gtest.h>

#include <string>
#include <vector>

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
        while (*row != 0) {
            const int length = (row[0] - u'0') * 10 + (row[1] - u'0');
            const int32_t codePage = std::stoi(std::string(row + 2, row + 7));
            std::u16string name(row + 7, static_cast<size_t>(length));
            SCOPED_TRACE(Show(name));
            EXPECT_EQ(CodePageFromName(name.c_str()), codePage);
            for (char16_t& c : name) {
                if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
            }
            const int32_t upper = CodePageFromName(name.c_str());
            // Only "utf-32..." in capitals is taken before the table.
            EXPECT_EQ(upper, name.rfind(u"UTF-32", 0) == 0 ? CodePageUtf32 : codePage);
            row += 7 + length;
            ++rows;
        }
    }
    EXPECT_EQ(rows, 365);
}

TEST(CharsetNames, Lookups) {
    const std::u16string n99(99, u'a');
    const std::u16string n100(100, u'a');
    const struct {
        std::u16string name;
        int32_t codePage;
    } cases[] = {
        {u"", 0},
        {u"Shift_JIS", 932},
        {u"shifft_jis", 932},
        {u"UTF-16LE", 1200},
        {u"UTF-16BE", 1201},
        {u"UTF-32", CodePageUtf32},
        {u"UTF-32x", CodePageUtf32},
        {u"UTF-32BE", CodePageUtf32},
        {u"Utf-32", 12000},
        {u"utf-32be", 12001},
        {u"UTF-3", -1},
        {u"cp1252 ", -1},   // a blank makes another name...
        {u"cp1256 ", 1256}, // ...unless the table has it so
        {u"1252", -1},
        {u"cp9999", -1},
        {u"ANSI", -1},
        {u"utf\u00E9-8", -1},
        {u"\u0130so-8859-1", -1}, // only ASCII capitals fold
        {n99, -1},
        {n100, -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CodePageFromName(c.name.c_str()), c.codePage) << Show(c.name);
    }
}

// UTF-7, UTF-8, the ISO-2022 forms, HZ, GB18030 and the ten ISCII pages.
TEST(CharsetNames, HidesLoss) {
    std::vector<int32_t> hiding;
    for (int32_t cp = -1; cp <= 70000; ++cp) {
        if (CodePageHidesLoss(cp)) hiding.push_back(cp);
    }
    std::vector<int32_t> expected = {50220, 50221, 50222, 50225, 50227, 50229, 52936, 54936};
    for (int32_t cp = 57002; cp <= 57011; ++cp)
        expected.push_back(cp);
    expected.push_back(65000);
    expected.push_back(65001);
    EXPECT_EQ(hiding, expected);
}

} // namespace
