// Tests of the named-entity table against an independent list of the names
// as written: the table's contents, and the decoding of every name in lower
// case, as written and in capitals.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "vetra/xml_parser.h"
#include "xml/text_escape.h"

using namespace vetra::xml;

namespace {

struct Entity {
    const wchar* name; // as written, capitals and all
    uint32_t code;
};

const Entity kEntities[] = {
#include "entity_list.inc"
};

WideString Fold(WideString s, bool upper) {
    for (wchar& c : s) {
        if (upper && c >= 'a' && c <= 'z') c -= 'a' - 'A';
        if (!upper && c >= 'A' && c <= 'Z') c += 'a' - 'A';
    }
    return s;
}

// Lookup is covered name by name below; this catches rows no name reaches.
TEST(EntityTable, HoldsExactlyTheListedRows) {
    std::vector<std::pair<WideString, uint32_t>> rows, listed;
    for (int32_t b = 0; b < kEntityBuckets; ++b) {
        for (const wchar* p = EntityTable[b]; *p; p += 5 + (p[0] - '0')) {
            uint32_t code = 0;
            for (int k = 1; k <= 4; ++k)
                code = code * 10 + (p[k] - '0');
            rows.emplace_back(WideString(p + 5, p[0] - '0'), code);
        }
    }
    for (const Entity& e : kEntities)
        listed.emplace_back(Fold(e.name, false), e.code);
    ASSERT_EQ(listed.size(), 253u);
    std::sort(rows.begin(), rows.end());
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(rows, listed);
    EXPECT_EQ(WideString(EntityTable[0]), u"60216oslash60217ugrave60248oslash60249ugrave");
    EXPECT_EQ(WideString(EntityTable[58]), u"30038amp30174reg");
    int nonEmpty = 0, most = 0;
    for (int32_t b = 0; b < kEntityBuckets; ++b) {
        int n = 0;
        for (const wchar* p = EntityTable[b]; *p; p += 5 + (p[0] - '0'))
            ++n;
        nonEmpty += n > 0;
        most = std::max(most, n);
    }
    EXPECT_EQ(nonEmpty, 93);
    EXPECT_EQ(most, 6);
}

// The same through the exported class: every entity as an element's data
// and as an attribute value of one document.
TEST(EntityTable, EveryNameDecodesThroughTheDocument) {
    WideString text = u"<r>";
    for (const Entity& e : kEntities)
        text += u"<e v=\"&" + WideString(e.name) + u";\">&" + WideString(e.name) + u";</e>";
    text += u"</r>";
    CVTXmlParser doc;
    ASSERT_EQ(doc.SetDoc(text.c_str()), 1);
    doc.FindElem();
    doc.IntoElem();
    for (const Entity& e : kEntities) {
        ASSERT_EQ(doc.FindElem(u"e"), 1);
        const WideString expect(1, wchar(e.code));
        EXPECT_EQ(WideString(doc.GetData()), expect) << testing::PrintToString(WideString(e.name));
        EXPECT_EQ(WideString(doc.GetAttrib(u"v")), expect);
    }
}

TEST(EntityTable, EveryNameDecodesInEachCase) {
    // Names that fold alike: all lower case means the lower-case entity, any
    // capital the other one. A name without a twin decodes in any case.
    std::map<WideString, std::vector<const Entity*>> twins;
    for (const Entity& e : kEntities)
        twins[Fold(e.name, false)].push_back(&e);
    for (const Entity& e : kEntities) {
        const WideString lower = Fold(e.name, false), upper = Fold(e.name, true);
        uint32_t lowerCode = e.code, upperCode = e.code;
        for (const Entity* twin : twins[lower]) {
            (WideString(twin->name) == lower ? lowerCode : upperCode) = twin->code;
        }
        const struct {
            WideString name;
            uint32_t code;
        } forms[] = {{e.name, e.code}, {lower, lowerCode}, {upper, upperCode}};
        for (const auto& f : forms) {
            EXPECT_EQ(DecodeText((u"&" + f.name + u";").c_str(), -1, 0), WideString(1, f.code))
                << testing::PrintToString(f.name);
        }
    }
}

} // namespace
