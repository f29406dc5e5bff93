// Real text no one here wrote, in many encodings (tests/data/encodings, made by the script
// there from Debian's MIME database): Load must give what Python's codecs decode from the
// same bytes, and Save must give the bytes back.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/doc_script.h"
#include "text/file_fixture.h"

namespace {

using vetra::test::ReadWholeFile;

TEST(RealDocuments, LoadAsPythonDecodesAndSaveGivesTheBytesBack) {
    const auto folder = std::filesystem::path(__FILE__).parent_path() / "../data/encodings";
    const vetra::test::ScratchFolder scratch;
    int documents = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string path = entry.path().string();
        if (entry.path().extension() != ".xml" && entry.path().extension() != ".html") continue;
        SCOPED_TRACE(path);
        const std::string expected = ReadWholeFile(path + ".utf16");
        CVTXmlParser doc;
        EXPECT_EQ(doc.Load(path.c_str()), 1);
        EXPECT_TRUE(std::u16string(doc.GetDoc()) ==
                    std::u16string(reinterpret_cast<const char16_t*>(expected.data()),
                                   expected.size() / 2));
        EXPECT_EQ(doc.Save(scratch.Path("saved.xml").c_str()), 1);
        EXPECT_TRUE(scratch.Read("saved.xml") == ReadWholeFile(path));
        ++documents;
    }
    EXPECT_GE(documents, 19);
}

} // namespace
