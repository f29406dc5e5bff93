// Tests of the file reader: how a file's head settles its encoding, the entries each step
// logs, the flags it leaves, failures at each step, and UTF-8 decoded in pieces agreeing
// with the whole.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <random>

#include "platform/text_codec.h"
#include "support/doc_script.h"
#include "text/document_file.h"
#include "text/file_fixture.h"

using namespace std::string_literals;
using namespace vetra::text;
using vetra::platform::FileError;
using vetra::platform::FileHandle;
using vetra::test::S;
using vetra::test::ScratchFolder;
using vetra::xml::DocText;

namespace {

struct Loaded {
    bool result;
    uint32_t flags;
    std::u16string text;
    std::u16string log;
};

Loaded Load(const std::string& path, uint32_t flags) {
    DocText text;
    WideString log = u"<old/>";
    const bool result = LoadTextFile(path.c_str(), text, log, flags);
    return {result, flags, std::u16string(text.View()), log};
}

const std::string kPad(1100, ' ');

TEST(FileReader, EncodingFlagsAndLog) {
    const struct {
        std::string bytes;
        uint32_t flagsBefore, flagsAfter;
        const char16_t* text;
        const char16_t* log;
    } cases[] = {
        {"", 0x80, 0x80, u"", u"<read encoding=\"\" length=\"0\"/>"},
        // Two bytes of a mark are no mark, and not UTF-8 either: detection refuses them.
        {"\xEF\xBB", 0, 0, u"\uFFFD",
         u"<read encoding=\"\" length=\"2\"/><utf8_detection/>"
         u"<converted_to encoding=\"UTF-16\" length=\"1\"/>"},
        // FF FE 00 00 is UTF-16LE and a null unit; the odd last byte is dropped.
        {std::string("\xFF\xFE\0\0a\0b", 7), 0, 0x1, u"a",
         u"<bom/><read encoding=\"UTF-16LE\" length=\"2\"/><nulls_removed count=\"1\"/>"},
        {"\xFE\xFF\0<\0a\0/\0>"s, 0x1, 0x80, u"<a/>",
         u"<bom/><read encoding=\"UTF-16BE\" length=\"4\"/><endian_swap/>"},
        // The mark wins over the declaration.
        {"\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>\xC3\xA9</a>", 0, 0x4,
         u"<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>\u00E9</a>",
         u"<bom/><read encoding=\"UTF-8\" length=\"54\"/>"
         u"<converted_to encoding=\"UTF-16\" length=\"53\"/>"},
        // A name the table lacks means the system's default page (UTF-8 in the C locale).
        {"<?xml version='1.0' encoding='x-none'?><a/>", 0, 0,
         u"<?xml version='1.0' encoding='x-none'?><a/>",
         u"<read encoding=\"x-none\" length=\"43\"/><converted_to encoding=\"UTF-16\" "
         u"length=\"43\"/>"},
        // A declaration that ends beyond the head is not seen; '<' first means UTF-8.
        {"<?xml version='1.0'" + kPad + "encoding='windows-1252'?><a>\xE9</a>", 0, 0, nullptr,
         u"<read encoding=\"UTF-8\" length=\"1152\"/>"
         u"<converted_to encoding=\"UTF-16\" length=\"1152\"/>"},
        {"<a>\xE9</a>", 0, 0, u"<a>\uFFFD</a>",
         u"<read encoding=\"UTF-8\" length=\"8\"/><converted_to encoding=\"UTF-16\" "
         u"length=\"8\"/>"},
        {" <a/>", 0, 0, u" <a/>",
         u"<read encoding=\"UTF-8\" length=\"5\"/><utf8_detection/>"
         u"<converted_to encoding=\"UTF-16\" length=\"5\"/>"},
        // UTF-16LE without a mark, ASCII only: taken for UTF-8 without its nulls.
        {std::string("<\0a\0/\0>\0", 8), 0, 0, u"<a/>",
         u"<read encoding=\"UTF-8\" length=\"8\"/><nulls_removed count=\"4\"/>"
         u"<converted_to encoding=\"UTF-16\" length=\"4\"/>"},
        // UTF-16 declared without a mark: no conversion joins UTF-16 to UTF-16.
        {"<?xml version='1.0' encoding='UTF-16'?><a/>", 0, 0, u"",
         u"<read encoding=\"UTF-16\" length=\"43\"/><converted_to encoding=\"UTF-16\" "
         u"length=\"0\"/>"},
    };
    ScratchFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 60));
        const Loaded got = Load(folder.Write("doc.xml", c.bytes), c.flagsBefore);
        EXPECT_TRUE(got.result);
        EXPECT_EQ(got.flags, c.flagsAfter);
        if (c.text != nullptr) {
            EXPECT_EQ(got.text, c.text);
        }
        EXPECT_EQ(got.log, c.log);
    }
}

// The read that fails: its number from 1, counting from the open.
int g_reads = 0;
int g_failingRead = 0;

FileError FailingRead(FileHandle file, int64_t offset, void* buffer, size_t bytes) {
    if (++g_reads == g_failingRead) return EIO;
    return vetra::platform::SystemFileOps().readAt(file, offset, buffer, bytes);
}

FileError FailingClose(FileHandle& file) {
    vetra::platform::SystemFileOps().close(file);
    return EIO;
}

TEST(FileReader, FailuresAtEachStep) {
    ScratchFolder folder;
    const std::string bom = folder.Write("bom.xml", "\xEF\xBB\xBF<a/>");
    const std::string plain = folder.Write("plain.xml", "<a/>");
    const std::string huge = folder.Path("huge.xml");
    { std::ofstream(huge) << ""; }
    ASSERT_EQ(truncate(huge.c_str(), off_t(kLargestFile) + 1), 0);
    const struct {
        std::string path;
        int failingRead; // 1: the head, 2: the text
        bool failingClose;
        bool result;
        uint32_t flags; // before: 0x80
        const char16_t* log;
    } cases[] = {
        {folder.Path(""), 0, false, false, 0x80, u"<file_error msg=\"Is a directory\" n=\"21\"/>"},
        {huge, 0, false, false, 0x80,
         u"<file_error msg=\"Value too large for defined data type\" n=\"75\"/>"},
        {bom, 1, false, false, 0x80, u"<file_error msg=\"Input/output error\" n=\"5\"/>"},
        // The main read fails: the flags hold the mark that was found.
        {bom, 2, false, false, 0x4, u"<bom/><file_error msg=\"Input/output error\" n=\"5\"/>"},
        // A failed close is logged, and what was read stands.
        {plain, 0, true, true, 0,
         u"<read encoding=\"UTF-8\" length=\"4\"/><converted_to encoding=\"UTF-16\" length=\"4\"/>"
         u"<file_error msg=\"Input/output error\" n=\"5\"/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        vetra::test::FileOpsRestorer restore;
        g_reads = 0;
        g_failingRead = c.failingRead;
        vetra::platform::ActiveFileOps().readAt = FailingRead;
        if (c.failingClose) vetra::platform::ActiveFileOps().close = FailingClose;
        const Loaded got = Load(c.path, 0x80);
        EXPECT_EQ(got.result, c.result);
        EXPECT_EQ(got.flags, c.flags);
        EXPECT_EQ(got.text, c.result ? u"<a/>" : u"");
        EXPECT_EQ(got.log, c.log);
    }
}

TEST(FileReader, FailedLoadLeavesAnEmptyDocument) {
    ScratchFolder folder;
    CVTXmlParser doc;
    doc.SetDoc(u"<a><b/></a>");
    ASSERT_TRUE(doc.FindElem() && doc.IntoElem() && doc.FindElem());
    doc.SavePos(u"p");
    EXPECT_EQ(doc.Load(folder.Path("none.xml").c_str()), 0);
    EXPECT_EQ(S(doc.GetDoc()), u"");
    EXPECT_FALSE(doc.FindElem());
    EXPECT_FALSE(doc.RestorePos(u"p"));
    EXPECT_EQ(doc.Load(u"\xD800.xml"), 0); // a lone surrogate has no UTF-8 form
    EXPECT_EQ(S(doc.GetResultLog()),
              u"<file_error msg=\"Invalid or incomplete multibyte or wide character\" n=\"84\"/>");

    // A good load parses and logs behind the reader; no path at all changes nothing.
    folder.Write("doc.xml", "<a></b>");
    EXPECT_EQ(doc.Load(folder.Path("doc.xml").c_str()), 0);
    const std::u16string log = S(doc.GetResultLog());
    EXPECT_EQ(log, u"<read encoding=\"UTF-8\" length=\"7\"/><converted_to encoding=\"UTF-16\" "
                   u"length=\"7\"/><lone_end_tag tagname=\"b\" offset=\"3\"/><unended_start_tag "
                   u"tagname=\"a\" offset=\"0\" offset2=\"7\"/>");
    EXPECT_EQ(doc.Load(u""), 0);
    EXPECT_EQ(doc.Load(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(S(doc.GetDoc()), u"<a></b>");
    EXPECT_EQ(S(doc.GetResultLog()), log);
}

// UTF-8 is decoded in pieces; any bytes, nulls among them, must come out as the whole
// block decoded at once would.
TEST(FileReader, PiecesDecodeAsTheWhole) {
    std::mt19937 random(7);
    const char* const atoms[] = {"a",        "<",    "\xC3\xA9", "\xE4\xB8\x80", "\xF0\x9F\x98\x80",
                                 "\xE4\xB8", "\x80", "\xFF"};
    std::string bytes = "<";
    while (bytes.size() < 1500000) {
        const size_t pick = random() % 9;
        bytes += pick == 8 ? std::string(1, '\0') : std::string(atoms[pick]);
    }
    std::string clean;
    for (char c : bytes)
        if (c != 0) clean += c;
    const auto n = int32_t(clean.size());
    std::u16string expected(clean.size(), u'\0');
    expected.resize(
        size_t(vetra::platform::MultiByteToWide(65001, clean.data(), n, expected.data(), n)));
    ScratchFolder folder;
    const Loaded got = Load(folder.Write("doc.xml", bytes), 0);
    EXPECT_TRUE(got.text == expected);
}

} // namespace
