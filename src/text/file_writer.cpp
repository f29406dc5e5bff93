// file_writer.cpp - SaveTextFile and the writing side of DocumentFile: the document's
// UTF-16 text to a file in the encoding the document calls for, with the steps logged.
//
// The encoding is the mark that a load found, else the one the text declares, else UTF-8.
// The text is written as it is: no line end or declaration is added or changed. The old
// file is replaced only once every byte is out (see the platform's file layer).
#include <cerrno>
#include <cstring>
#include <memory>

#include "text/charset_names.h"
#include "text/declared_encoding.h"
#include "text/document_file.h"
#include "text/result_log.h"
#include "text/text_conversion.h"

namespace vetra::text {

namespace {

constexpr int32_t kUtf16Le = 1200;
constexpr int32_t kUtf16Be = 1201;

} // namespace

bool SaveTextFile(const char* path, const wchar* text, int32_t length, WideString& log,
                  uint32_t& flags) {
    DocumentFile file(flags | xml::DocWriteStream);
    const bool opened = file.OpenDocumentFile(path);
    log = file.m_log;
    if (!opened) return false;
    if (file.m_encoding.empty() && length != 0) {
        file.m_encoding = FindDeclaredEncoding(text);
        if (file.m_encoding.empty()) file.m_encoding = u"UTF-8";
    }
    const bool written = file.Close(file.WriteTextBlock(text, length));
    log += file.m_log;
    flags = file.m_flags;
    return written;
}

bool DocumentFile::WriteTextBlock(const wchar* text, int32_t count) {
    m_log.clear();
    if (count == -1) count = int32_t(std::char_traits<wchar>::length(text));
    if (count == 0) {
        LogResult(m_log, u"write", m_encoding.c_str(), LogEncoding | LogLength, 0, -1);
        return true;
    }
    // A UTF-16 file takes the text as it is, in the machine's order or swapped.
    m_blockChars = count;
    if (m_flags & (xml::DocUtf16Le | xml::DocUtf16Be))
        return WriteRawBlock(nullptr, reinterpret_cast<const char*>(text));

    const int32_t codePage = CodePageFromName(m_encoding.c_str());
    if (codePage == kUtf16Le || codePage == kUtf16Be) {
        // The system's converters take no UTF-16, and UTF-16 without a mark would not be
        // read back as such: a document that declares it goes out as UTF-16 with a mark.
        if (!WriteMark(ByteOrderMarks[codePage == kUtf16Le ? 1 : 2])) return false;
        return WriteRawBlock(nullptr, reinterpret_cast<const char*>(text));
    }
    if (codePage == CodePageUtf32) m_charSize = 4;

    TextConversion conversion(u"UTF-16", text, count);
    const int32_t units = ConvertText(conversion, nullptr, m_encoding.c_str());
    std::unique_ptr<char[]> buffer;
    if (units > 0) {
        buffer.reset(new char[size_t(units) * size_t(m_charSize)]);
        conversion.destCapacity = units;
        if (ConvertText(conversion, buffer.get(), nullptr) != units) buffer.reset();
    }
    LogResult(m_log, u"converted_from", u"UTF-16", LogEncoding | LogLength, count, -1);
    // A page the system can't convert to: nothing is written over the old file.
    if (buffer == nullptr) return ReportFileError(EINVAL);
    // A loss never stops a save: the file holds the page's default character.
    if (conversion.lossy) LogResult(m_log, u"conversion_loss", nullptr, 0, -1, -1);
    m_blockChars = units;
    return WriteRawBlock(buffer.get(), nullptr);
}

bool DocumentFile::WriteRawBlock(char* writable, const char* constant) {
    const int64_t bytes = int64_t(m_charSize) * m_blockChars;
    if (bytes > kLargestFile) return ReportFileError(EFBIG);
    m_blockBytes = int32_t(bytes);
    const char* data = constant != nullptr ? constant : writable;
    std::unique_ptr<char[]> copy;
    if (m_bigEndian && m_charSize == 2) {
        // The document's text stays in the machine's order: a copy is swapped.
        if (writable == nullptr) {
            copy.reset(new char[size_t(bytes)]);
            std::memcpy(copy.get(), data, size_t(bytes));
            writable = copy.get();
        }
        auto* units = reinterpret_cast<char16_t*>(writable);
        for (int32_t i = 0; i < m_blockChars; ++i)
            units[i] = char16_t(units[i] << 8 | units[i] >> 8);
        data = writable;
        LogResult(m_log, u"endian_swap", nullptr, 0, -1, -1);
    }
    if (const platform::FileError error =
            platform::ActiveFileOps().write(m_written.file, data, size_t(m_blockBytes)))
        return ReportFileError(error);
    m_filePosition += m_blockBytes;
    LogResult(m_log, u"write", m_encoding.c_str(), LogEncoding | LogLength, m_blockChars, -1);
    return true;
}

} // namespace vetra::text
