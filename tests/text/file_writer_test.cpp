// Tests of the file writer: which encoding and mark a save picks, the bytes and the log it
// gives, failures that must leave the old file whole, and Load then Save giving back the
// very bytes of the file in every encoding that converts without loss.
#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include "platform/text_codec.h"
#include "support/doc_script.h"
#include "text/charset_names.h"
#include "text/document_file.h"
#include "text/file_fixture.h"

using namespace std::string_literals;
using namespace vetra::text;
using vetra::platform::FileError;
using vetra::platform::FileHandle;
using vetra::platform::FileReplacement;
using vetra::test::S;
using vetra::test::ScratchFolder;

namespace {

std::string Bytes(const std::u16string& units) {
    return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}

TEST(FileWriter, EncodingBytesAndLog) {
    const std::u16string decl1252 = u"<?xml version=\"1.0\" encoding=\"windows-1252\"?>";
    const struct {
        std::u16string text;
        uint32_t flags;
        std::string bytes; // the file, or its head if it ends in "..."
        const char16_t* log;
    } cases[] = {
        {u"", 0, "", u"<write encoding=\"\" length=\"0\"/>"},
        {u"", 0x4, "\xEF\xBB\xBF", u"<bom/><write encoding=\"UTF-8\" length=\"0\"/>"},
        {u"<a/>", 0x80, "\xFE\xFF"s + "\0<\0a\0/\0>"s,
         u"<bom/><endian_swap/><write encoding=\"UTF-16BE\" length=\"4\"/>"},
        // A loss is logged and the save goes on.
        {decl1252 + u"<a>\u4E00</a>", 0,
         "<?xml version=\"1.0\" encoding=\"windows-1252\"?><a>?</a>",
         u"<converted_from encoding=\"UTF-16\" length=\"53\"/><conversion_loss/>"
         u"<write encoding=\"windows-1252\" length=\"53\"/>"},
        // UTF-8 hides loss: a lone surrogate becomes U+FFFD unreported.
        {u"<a>\xD800</a>", 0, "<a>\xEF\xBF\xBD</a>",
         u"<converted_from encoding=\"UTF-16\" length=\"8\"/><write encoding=\"UTF-8\" "
         u"length=\"10\"/>"},
        // The mark a load found wins over the declaration, which stays as it is.
        {u"<?xml version='1.0' encoding='GB2312'?><a>\u4E00</a>", 0x4,
         "\xEF\xBB\xBF<?xml version='1.0' encoding='GB2312'?><a>\xE4\xB8\x80</a>",
         u"<bom/><converted_from encoding=\"UTF-16\" length=\"47\"/>"
         u"<write encoding=\"UTF-8\" length=\"49\"/>"},
        {u"<?xml version='1.0' encoding='x-none'?><a/>", 0,
         "<?xml version='1.0' encoding='x-none'?><a/>",
         u"<converted_from encoding=\"UTF-16\" length=\"43\"/>"
         u"<write encoding=\"x-none\" length=\"43\"/>"},
        // UTF-16 declared goes out with its mark.
        {u"<?xml version='1.0' encoding='utf-16be'?><a/>", 0, "\xFE\xFF"s + "\0<\0?\0x\0m\0l..."s,
         u"<bom/><endian_swap/><write encoding=\"UTF-16BE\" length=\"45\"/>"},
        {u"<?xml version='1.0' encoding='UTF-32'?><a/>", 0, "<\0\0\0?\0\0\0x\0\0\0..."s,
         u"<converted_from encoding=\"UTF-16\" length=\"43\"/><write encoding=\"UTF-32\" "
         u"length=\"43\"/>"},
    };
    ScratchFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(vetra::test::Show(c.text));
        WideString log = u"<old/>";
        uint32_t flags = c.flags;
        const std::string path = folder.Path("doc.xml");
        EXPECT_TRUE(SaveTextFile(path.c_str(), c.text.c_str(), int32_t(c.text.size()), log, flags));
        EXPECT_EQ(flags, c.flags);
        EXPECT_EQ(log, c.log);
        const size_t dots = c.bytes.rfind("...");
        const bool head = dots != std::string::npos && dots + 3 == c.bytes.size();
        const std::string file = folder.Read("doc.xml");
        EXPECT_TRUE(head ? file.compare(0, dots, c.bytes, 0, dots) == 0 : file == c.bytes);
    }
}

// UTF-8 is written in pieces; any text, with pairs across a piece's end and lone
// surrogates, must come out as the whole text encoded at once would.
TEST(FileWriter, PiecesEncodeAsTheWhole) {
    std::mt19937 random(11);
    const char16_t* const atoms[] = {u"a",          u"\u00E9", u"\u4E00",
                                     u"\U0001F600", u"\xD800", u"\xDC00"};
    std::u16string text;
    while (text.size() < 1100000)
        text += atoms[random() % 6];
    text.replace(1048575, 2, u"\U0001F600"); // across the end of the first piece of 1 Mi
    std::string expected(text.size() * 3, '\0');
    expected.resize(size_t(vetra::platform::WideToMultiByte(65001, text.data(),
                                                            int32_t(text.size()), expected.data(),
                                                            int32_t(expected.size()), nullptr)));
    ScratchFolder folder;
    WideString log;
    uint32_t flags = 0;
    const std::string path = folder.Path("doc.xml");
    ASSERT_TRUE(SaveTextFile(path.c_str(), text.c_str(), int32_t(text.size()), log, flags));
    EXPECT_TRUE(folder.Read("doc.xml") == expected);
}

// Failures from each step: the old file keeps its bytes and no temporary file is left.
FileError g_error = 0;
FileError FailWrite(FileHandle, const void*, size_t) {
    return g_error;
}
FileError FailCommit(FileReplacement& r) {
    vetra::platform::SystemFileOps().abandonReplacement(r);
    return g_error;
}

TEST(FileWriter, FailuresKeepTheOldFile) {
    ScratchFolder folder;
    auto& ops = vetra::platform::ActiveFileOps();
    const struct {
        const char* step;
        std::string name;
        uint32_t flags;
        FileError error;
        const char16_t* log;
    } cases[] = {
        {"", "none/doc.xml", 0, 0, u"<file_error msg=\"No such file or directory\" n=\"2\"/>"},
        {"", "", 0, 0, u"<file_error msg=\"Is a directory\" n=\"21\"/>"},
        {"write", "doc.xml", 0x4, ENOSPC,
         u"<file_error msg=\"No space left on device\" n=\"28\"/>"},
        {"write", "doc.xml", 0, ENOSPC,
         u"<converted_from encoding=\"UTF-16\" length=\"4\"/>"
         u"<file_error msg=\"No space left on device\" n=\"28\"/>"},
        {"commit", "doc.xml", 0, EXDEV,
         u"<converted_from encoding=\"UTF-16\" length=\"4\"/><write encoding=\"UTF-8\" "
         u"length=\"4\"/>"
         u"<file_error msg=\"Invalid cross-device link\" n=\"18\"/>"},
        // A page the system can't write to.
        {"utf-32", "doc.xml", 0, 0,
         u"<converted_from encoding=\"UTF-16\" length=\"43\"/>"
         u"<file_error msg=\"Invalid argument\" n=\"22\"/>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.step + c.name);
        vetra::test::FileOpsRestorer restore;
        folder.Write("doc.xml", "old");
        g_error = c.error;
        const std::string step = c.step;
        if (step == "write") ops.write = FailWrite;
        if (step == "commit") ops.commitReplacement = FailCommit;
        const std::u16string text =
            step == "utf-32" ? u"<?xml version='1.0' encoding='utf-32'?><a/>" : u"<a/>";
        WideString log;
        uint32_t flags = c.flags;
        EXPECT_FALSE(SaveTextFile(folder.Path(c.name).c_str(), text.c_str(), int32_t(text.size()),
                                  log, flags));
        EXPECT_EQ(flags, c.flags);
        EXPECT_EQ(log, c.log);
        EXPECT_EQ(folder.Read("doc.xml"), "old");
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"doc.xml"});
    }
}

// Load then Save gives back the file's bytes, for every encoding that converts without
// loss, and a second Save the same again. The text of each is the page's own characters:
// for a single-byte page, every byte above ASCII that it reads.
TEST(FileWriter, LoadThenSaveGivesBackTheBytes) {
    std::vector<std::pair<std::u16string, std::u16string>> cases = {
        // A name behind '+' is a mark's, not a declaration's.
        {u"UTF-8", u"\u00E9\u4E00\U0001F600 \u0416"},
        {u"+UTF-8", u"\u00E9\u4E00\U0001F600"},
        {u"+UTF-16LE", u"\u00E9\u4E00\U0001F600"},
        {u"+UTF-16BE", u"\u00E9\u4E00\U0001F600"},
        {u"Shift_JIS", u"\u65E5\u672C\u8A9E\u30C6\u30AD\u30B9\u30C8\uFF76\uFF85"},
        {u"EUC-JP", u"\u65E5\u672C\u8A9E\u30C6\u30AD\u30B9\u30C8"},
        {u"GB2312", u"\u4E2D\u6587\u6587\u672C"},
        {u"gb18030", u"\u4E2D\u6587\u6587\u672C\U0001F600"},
        {u"big5", u"\u4E2D\u6587\u6587\u672C"},
        {u"euc-kr", u"\uD55C\uAD6D\uC5B4"},
    };
    for (const char16_t* name :
         {u"windows-1250", u"windows-1251", u"windows-1252", u"windows-1253", u"windows-1254",
          u"windows-1255", u"windows-1256", u"windows-1257", u"iso-8859-1",   u"iso-8859-2",
          u"iso-8859-5",   u"iso-8859-7",   u"iso-8859-15",  u"koi8-r",       u"koi8-u",
          u"cp866",        u"cp437",        u"cp850",        u"macintosh",    u"windows-874"}) {
        std::u16string sample;
        for (int byte = 0x80; byte < 0x100; ++byte) {
            const char b = char(byte);
            char16_t unit = 0;
            if (vetra::platform::MultiByteToWide(uint32_t(CodePageFromName(name)), &b, 1, &unit,
                                                 1) == 1 &&
                unit != 0xFFFD)
                sample += unit;
        }
        cases.emplace_back(name, sample);
    }
    ScratchFolder folder;
    for (const auto& [given, sample] : cases) {
        const bool mark = given[0] == u'+';
        const std::u16string name = mark ? given.substr(1) : given;
        SCOPED_TRACE(vetra::test::Show(name));
        std::u16string text = u"<a>" + sample + u"</a>";
        if (!mark) text = u"<?xml version=\"1.0\" encoding=\"" + name + u"\"?>" + text;
        // The file: the mark or the declared page's bytes.
        std::string bytes;
        if (name == u"UTF-16LE") {
            bytes = "\xFF\xFE" + Bytes(text);
        } else if (name == u"UTF-16BE") {
            bytes = "\xFE\xFF";
            for (char16_t u : text)
                bytes += {char(u >> 8), char(u & 0xFF)};
        } else {
            std::string body(text.size() * 4, '\0');
            body.resize(size_t(vetra::platform::WideToMultiByte(
                uint32_t(CodePageFromName(name.c_str())), text.data(), int32_t(text.size()),
                body.data(), int32_t(body.size()), nullptr)));
            bytes = (mark ? "\xEF\xBB\xBF" : "") + body;
        }
        CVTXmlParser doc;
        EXPECT_EQ(doc.Load(folder.Write("in.xml", bytes).c_str()), 1);
        EXPECT_EQ(S(doc.GetDoc()), text);
        for (int save = 0; save < 2; ++save) {
            EXPECT_EQ(doc.Save(folder.Path("out.xml").c_str()), 1);
            EXPECT_TRUE(folder.Read("out.xml") == bytes);
        }
    }
}

} // namespace
