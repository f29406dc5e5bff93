// Tests of the segmented record store and of record taking.
#include <gtest/gtest.h>

#include "support/record_check.h"
#include "xml/element_store.h"
#include "xml/xml_engine.h"

using namespace vetra::xml;

namespace {

TEST(ElementStore, GrowAddsAtMostOneSegmentPerCall) {
    const struct {
        std::vector<int32_t> steps; // sizes asked for, in order
        int32_t size;               // Size() after the last step
        std::vector<int32_t> segments;
    } cases[] = {
        {{8, 12}, 12, {12}},
        {{65536, 98304}, 98304, {65536, 32768}},
        {{8, 131080}, 131072, {65536, 65536}},
        {{70000}, 70000, {65536, 4464}},
    };
    for (const auto& c : cases) {
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

    // A shorter text keeps the larger store; a null text gives the memory
    // back, and the parse then sizes it to 8 again.
    const int32_t size = engine.m_pStore->Size();
    engine.SetDocText(u"<a/>");
    EXPECT_EQ(engine.m_pStore->Size(), size);
    engine.SetDocText(nullptr);
    EXPECT_EQ(engine.m_pStore->Size(), 8);
}

} // namespace
