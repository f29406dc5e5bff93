// file_writer.cpp - SaveTextFile and the writing side of DocumentFile: the document's
// UTF-16 text to a file in the encoding the document calls for, with the steps logged.
//
// The encoding is the mark that a load found, else the one the text declares, else UTF-8.
// The text is written as it is: no line end or declaration is added or changed. UTF-16
// goes out straight from the document's text, UTF-8 in pieces through a small buffer,
// other encodings from one converted block. The old file is replaced only once every
// byte is out (see the platform's file layer).
#include <algorithm>
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
constexpr int32_t kUtf8 = 65001;
// UTF-8 is encoded and written in pieces of this many units: fewer, larger writes cost
// less (64 MiB of text: 31 ms in pieces of 1 Mi units, 37 ms in pieces of 256 Ki).
constexpr int32_t kPieceUnits = 1024 * 1024;

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
    if (codePage == kUtf8) return WriteUtf8InPieces(text, count);
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

bool DocumentFile::WriteUtf8InPieces(const wchar* text, int32_t count) {
    // The file's bytes are never held whole: each piece is encoded into one small buffer
    // and written. UTF-8 takes at most three bytes a unit and reports no loss.
    const std::unique_ptr<char[]> piece(new char[size_t(std::min(kPieceUnits, count)) * 3]);
    LogResult(m_log, u"converted_from", u"UTF-16", LogEncoding | LogLength, count, -1);
    int64_t bytes = 0;
    for (int32_t done = 0; done < count;) {
        int32_t units = std::min(kPieceUnits, count - done);
        // A piece never ends between the two halves of a surrogate pair.
        if (done + units < count && (text[done + units - 1] & 0xFC00) == 0xD800) --units;
        TextConversion conversion(u"UTF-16", text + done, units);
        conversion.destCapacity = units * 3;
        const int32_t n = ConvertText(conversion, piece.get(), m_encoding.c_str());
        bytes += n;
        if (n == 0) return ReportFileError(EINVAL);
        if (bytes > kLargestFile) return ReportFileError(EFBIG);
        if (const platform::FileError error =
                platform::ActiveFileOps().write(m_written.file, piece.get(), size_t(n)))
            return ReportFileError(error);
        done += units;
    }
    m_blockBytes = m_blockChars = int32_t(bytes);
    m_filePosition += m_blockBytes;
    LogResult(m_log, u"write", m_encoding.c_str(), LogEncoding | LogLength, m_blockChars, -1);
    return true;
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
