// Tests of the segmented record store and of record taking.
#include <gtest/gtest.h>

#include "support/record_check.h"
#include "xml/element_store.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;

namespace {

struct GrowCase {
    std::vector<int32_t> steps; // sizes asked for, in order
    int32_t size;               // m_size after the last step
    std::vector<int32_t> segments;
};

TEST(ElementStore, GrowAddsAtMostOneSegmentPerCall) {
    const GrowCase cases[] = {
        {{8}, 8, {8}},
        {{8, 12}, 12, {12}},
        {{65536, 98304}, 98304, {65536, 32768}},
        {{65536, 98304, 147456}, 147456, {65536, 65536, 16384}},
        {{8, 131080}, 131072, {65536, 65536}},
        {{70000}, 70000, {65536, 4464}},
    };
    for (const GrowCase& c : cases) {
        ElementStore store;
        for (int32_t s : c.steps)
            store.Grow(s);
        EXPECT_EQ(store.Size(), c.size);
        ASSERT_EQ(store.SegmentCount(), int32_t(c.segments.size()));
        // The last record of each segment must be addressable without overrun
        // (ASan checks this); its place is index & 0xFFFF.
        int32_t base = 0;
        for (int32_t n : c.segments) {
            store.At(base + n - 1).start = base + n - 1;
            base += ElementStore::kSegmentSize;
        }
    }
}

TEST(ElementStore, ParseSizesTheStoreAndTakeRecordGrowsByHalf) {
    // 1,000 characters: 1000 / 64 + 8 = 23 records.
    std::u16string text = u"<r>" + std::u16string(990, u'x') + u"</r>" + u"   ";
    ASSERT_EQ(text.size(), 1000u);
    XmlEngine engine;
    engine.m_pStore->Release();
    engine.SetDocText(text.c_str());
    EXPECT_EQ(engine.m_pStore->Size(), 23);
    engine.m_nextRecord = 23;
    EXPECT_EQ(engine.TakeRecord(), 23);
    EXPECT_EQ(engine.m_pStore->Size(), 34);

    // A shorter text keeps the larger store; an empty text leaves it too.
    engine.SetDocText(u"<a/>");
    EXPECT_EQ(engine.m_pStore->Size(), 34);
    engine.SetDocText(u"");
    EXPECT_EQ(engine.m_pStore->Size(), 34);
    // Null gives the memory back; the parse then sizes it to 8 again.
    engine.SetDocText(nullptr);
    EXPECT_EQ(engine.m_pStore->Size(), 8);
    EXPECT_TRUE(engine.m_docText.empty());
}

TEST(ElementStore, DocumentAcrossTheSegmentBorder) {
    std::u16string text = u"<r>";
    for (int i = 0; i < 70000; ++i)
        text += u"<e/>";
    text += u"</r>";
    XmlEngine engine;
    EXPECT_TRUE(engine.SetDocText(text.c_str()));
    EXPECT_EQ(engine.m_nextRecord, 70002);
    EXPECT_GE(engine.m_pStore->SegmentCount(), 2);
    EXPECT_EQ(vetra::test::CheckRecords(engine, {true}), "");
    // Record 1 is r; record k > 1 is the (k - 2)th e.
    EXPECT_EQ(engine.Rec(65535).start, 3 + 4 * 65533);
    EXPECT_EQ(engine.Rec(65536).start, 3 + 4 * 65534);
}

} // namespace
