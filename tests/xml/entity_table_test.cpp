// Tests of named-entity decoding: names of every length the table holds,
// both ends of a crowded bucket, the case rule for names that differ only in
// case, and names the table doesn't hold.
#include <gtest/gtest.h>

#include "xml/text_escape.h"

using namespace vetra::xml;

namespace {

TEST(EntityTable, NamesDecodeByTheCaseRule) {
    const struct {
        const char16_t* name;
        char16_t code; // 0: not an entity, the reference stays as written
    } cases[] = {
        {u"lt", 60},
        {u"amp", 38},
        {u"apos", 39},
        {u"quot", 34},
        {u"euro", 8364},
        {u"diams", 9830},
        {u"weierp", 8472},
        {u"thetasym", 977},
        {u"oslash", 248},
        {u"ugrave", 249},
        {u"lceil", 8968},
        {u"nbsp", 160},
        // A name in lower case is the lower-case entity; any capital picks
        // its twin. A name without a twin decodes in any case.
        {u"agrave", 224},
        {u"Agrave", 192},
        {u"AGRAVE", 192},
        {u"aGrave", 192},
        {u"mu", 956},
        {u"MU", 924},
        {u"yuml", 255},
        {u"YUML", 376},
        {u"EURO", 8364},
        {u"Diams", 9830},
        {u"LT", 60},
        {u"AmP", 38},
        {u"eur", 0},
        {u"thetasyms", 0},
        {u"x", 0},
        {u"a-b", 0},
    };
    for (const auto& c : cases) {
        const WideString reference = u"&" + WideString(c.name) + u";";
        EXPECT_EQ(DecodeText(reference.c_str(), -1, 0),
                  c.code != 0 ? WideString(1, c.code) : reference)
            << testing::PrintToString(WideString(c.name));
    }
}

} // namespace
