// public_surface_test.cpp - the exported surface through the shared library, as an
// application on either system calls it: vtchar text in and out of a document, a document
// through a file whose path is not ASCII, and the host helpers' refusals.
#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/vt_text.h"
#include "vetra/vetra.h"

namespace {

vtstring Text(const vtchar* p) {
    return p == nullptr ? VT("(null)") : vtstring(p);
}

TEST(PublicSurface, TextInAndOut) {
    CVTXmlParser doc;
    // A character above U+FFFF stays one surrogate pair in and out.
    ASSERT_EQ(doc.SetDoc(VT("<r a=\"caf\u00E9\"><c>x \U0001F600 &amp; y</c></r>")), 1);
    ASSERT_EQ(doc.FindElem(VT("r")), 1);
    EXPECT_EQ(Text(doc.GetTagName()), VT("r"));
    EXPECT_EQ(Text(doc.GetAttrib(VT("a"))), VT("caf\u00E9"));
    ASSERT_EQ(doc.FindChildElem(VT("c")), 1);
    EXPECT_EQ(Text(doc.GetChildData()), VT("x \U0001F600 & y"));
    EXPECT_EQ(doc.AddChildElem(VT("d"), VT("<1>")), 1);
    EXPECT_EQ(doc.AddChildAttrib(VT("n"), 7), 1);
    EXPECT_EQ(Text(doc.GetDoc()), VT("<r a=\"caf\u00E9\"><c>x \U0001F600 &amp; y</c>"
                                     "<d n=\"7\">&lt;1&gt;</d>\r\n</r>"));
}

TEST(PublicSurface, FileWithAWidePath) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / std::filesystem::u8path("vetra-\xC3\xA9t\xC3\xA9");
    std::filesystem::create_directories(dir);
    const std::u16string units = (dir / "doc.xml").u16string();
    const vtstring path(units.begin(), units.end());

    CVTXmlParser doc;
    doc.SetDoc(VT("<?xml version=\"1.0\" encoding=\"UTF-16\"?><r>\u0416</r>"));
    ASSERT_EQ(doc.Save(path.c_str()), 1);
    CVTXmlParser again;
    ASSERT_EQ(again.Load(path.c_str()), 1);
    EXPECT_EQ(Text(again.GetDoc()), Text(doc.GetDoc()));
    std::filesystem::remove_all(dir);

    // A missing file fails with the system's own words in the log.
    EXPECT_EQ(again.Load(path.c_str()), 0);
    EXPECT_EQ(Text(again.GetDoc()), VT(""));
    EXPECT_EQ(Text(again.GetResultLog()).rfind(VT("<file_error msg=\""), 0), 0u);
}

TEST(PublicSurface, HostHelpersRefuse) {
    EXPECT_EQ(VETRA_CreateLocalPath(nullptr), 0);
    EXPECT_EQ(VETRA_CreateLocalPath(VT("  ")), 0);
    EXPECT_EQ(VETRA_CreateLocalPath(VT("relative/path")), 0);
    vtdword ms = 7, ls = 7;
    EXPECT_EQ(VETRA_GetFileVersion(VT("no such file.dll"), &ms, &ls), 0);
    EXPECT_EQ(ms, 7u); // left alone
    EXPECT_EQ(ls, 7u);
    EXPECT_NO_THROW(VETRA_Trace(VT("")));
    EXPECT_THROW(VETRA_Trace(static_cast<const vtchar*>(nullptr)), std::system_error);
}

} // namespace
