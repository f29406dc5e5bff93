// Tests of the result log: the entries a parse writes, and LogResult's updates and limit.
// The attributes of every other entry are checked as text where the reader and the writer
// write them.
#include <gtest/gtest.h>

#include "support/doc_script.h"
#include "text/result_log.h"

using namespace vetra::text;
using vetra::test::S;
using vetra::test::Show;

namespace {

TEST(ResultLog, EntriesOfAParse) {
    const struct {
        const vtchar* text;
        const vtchar* log;
    } cases[] = {
        {VT(""), VT("")},
        {VT("<a/><b/>"), VT("<root_has_sibling/>")},
        {VT("plain"), VT("<no_root_element/>")},
        {VT("<a></b>"), VT("<lone_end_tag tagname=\"b\" offset=\"3\"/>")
                            VT("<unended_start_tag tagname=\"a\" offset=\"0\" offset2=\"7\"/>")},
        {VT("<a><b/><c/>"),
         VT("<unended_start_tag tagname=\"a\" offset=\"0\" offset2=\"11\"/><root_has_sibling/>")},
        // The scanner's faults are handed over once each, in text order.
        {VT("<a><!x><!-x><![x></a>"),
         VT("<exclamation_tag_syntax offset=\"3\"/><comment_tag_syntax offset=\"7\"/>")
             VT("<cdata_section_syntax offset=\"12\"/>")},
        {VT("<a t=\"&quot;\"/></a\"b>"), VT("<lone_end_tag tagname=\"a&quot;b\" offset=\"15\"/>")},
    };
    for (const auto& c : cases) {
        CVTXmlParser doc;
        doc.SetDoc(c.text);
        EXPECT_EQ(Show(S(doc.GetResultLog())), Show(c.log)) << Show(c.text);
    }
}

TEST(ResultLog, UpdatesTheFirstEntryOfAKey) {
    WideString log = u"<bom/><read encoding=\"\" length=\"120\"/><read length=\"1\"/>";
    LogResult(log, u"read", u"UTF-8", LogUpdate | LogEncoding, -1, -1);
    LogResult(log, u"read", nullptr, LogUpdate | LogLength, 118, -1);
    const WideString updated =
        u"<bom/><read encoding=\"UTF-8\" length=\"118\"/><read length=\"1\"/>";
    EXPECT_EQ(Show(log), Show(updated));
    LogResult(log, u"absent", u"x", LogUpdate | LogEncoding, -1, -1);
    EXPECT_EQ(log, updated);
}

TEST(ResultLog, LimitIsTestedBeforeAnEntryStarts) {
    for (size_t size : {999u, 1000u}) {
        WideString log = u"<x a=\"" + WideString(size - 9, u'y') + u"\"/>";
        LogResult(log, u"k", nullptr, 0, -1, -1);
        EXPECT_EQ(log.size(), size == 999 ? 999u + 4 : 1000u);
    }
}

} // namespace
