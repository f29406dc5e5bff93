// Real text no one here wrote, in many encodings (tests/data/encodings, made by the script
// there from Debian's MIME database): Load must give what Python's codecs decode from the
// same bytes, and Save must give the bytes back.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/doc_script.h"

namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(RealDocuments, LoadAsPythonDecodesAndSaveGivesTheBytesBack) {
    const fs::path folder = fs::path(__FILE__).parent_path().parent_path() / "data/encodings";
    const fs::path saved = fs::temp_directory_path() / "vetra-real-document.xml";
    int documents = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const fs::path path = entry.path();
        if (path.extension() != ".xml" && path.extension() != ".html") continue;
        SCOPED_TRACE(path.filename().string());
        const std::string expected = ReadFile(path.string() + ".utf16");
        CVTXmlParser doc;
        EXPECT_EQ(doc.Load(path.c_str()), 1);
        const std::u16string text = doc.GetDoc();
        EXPECT_TRUE(text.size() * 2 == expected.size() &&
                    std::memcmp(text.data(), expected.data(), expected.size()) == 0);
        EXPECT_EQ(doc.Save(saved.c_str()), 1);
        EXPECT_TRUE(ReadFile(saved) == ReadFile(path));
        ++documents;
    }
    fs::remove(saved);
    EXPECT_GE(documents, 19);
}

} // namespace
