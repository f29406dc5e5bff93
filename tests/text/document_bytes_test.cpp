// Tests of setting a document from bytes in a code page.
#include <gtest/gtest.h>

#include <cstring>

#include "text/document_bytes.h"

using vetra::text::SetDocBytes;
using vetra::xml::XmlEngine;

namespace {

TEST(DocumentBytes, ConvertsIntoTheDocumentAndParses) {
    const struct {
        uint32_t codePage;
        const char* bytes;
        bool result;
        const char16_t* text;
    } cases[] = {
        {1252, "<a>\xE9\x80</a>", true, u"<a>\u00E9\u20AC</a>"},
        {65001, "<a/><b/>", false, u"<a/><b/>"},
        {65001, "", false, u""},
        {99999, "<a/>", false, u""}, // no such code page
    };
    for (const auto& c : cases) {
        XmlEngine engine(u"<old/>");
        EXPECT_EQ(SetDocBytes(engine, c.codePage, c.bytes, int32_t(std::strlen(c.bytes))),
                  c.result);
        EXPECT_EQ(engine.m_docText.View(), c.text);
    }
}

} // namespace
