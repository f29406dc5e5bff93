// document_file.cpp - the parts of DocumentFile that reading and writing share: the
// byte-order marks, paths, opening (with the look at the file's head that settles its
// encoding), closing, and the file_error entry.
//
// The blocks themselves are read in file_reader.cpp and written in file_writer.cpp.
#include "text/document_file.h"

#include <algorithm>
#include <cstring>

#include "platform/utf8_codec.h"
#include "text/charset_names.h"
#include "text/declared_encoding.h"
#include "text/result_log.h"
#include "text/text_conversion.h"

namespace vetra::text {

using xml::DocUtf16Be;
using xml::DocUtf16Le;
using xml::DocUtf8Bom;

const ByteOrderMark ByteOrderMarks[3] = {
    {"\xEF\xBB\xBF", 3, u"UTF-8", DocUtf8Bom},
    {"\xFF\xFE", 2, u"UTF-16LE", DocUtf16Le},
    {"\xFE\xFF", 2, u"UTF-16BE", DocUtf16Be},
};

namespace {

// How much of a file's head is looked at for a mark and a declaration.
constexpr int32_t kHeadBytes = 1024;

} // namespace

bool WidePathToUtf8(const wchar* path, std::string& out) {
    namespace utf8 = platform::utf8;
    out.clear();
    const size_t length = std::char_traits<wchar>::length(path);
    bool lone = false;
    const size_t bytes = utf8::EncodedLength(path, length, &lone);
    if (lone) return false;
    out.resize(bytes);
    utf8::Encode(path, length, out.data(), bytes, nullptr);
    return true;
}

bool DocumentFile::OpenDocumentFile(const char* path) {
    m_log.clear();
    if (path == nullptr) return ReportFileError(platform::kUnnamablePath);
    const platform::FileOps& ops = platform::ActiveFileOps();
    m_charSize = 1;

    if (!(m_flags & xml::DocReadStream)) {
        // Writing. The document's mark flag, which a load left there, picks the encoding
        // and goes out first. (Appending is never asked for: nothing sets DocAppend.)
        if (const platform::FileError error = ops.beginReplacement(path, m_written))
            return ReportFileError(error);
        m_filePosition = 0;
        for (const ByteOrderMark& mark : ByteOrderMarks) {
            if (m_flags & mark.flag) return WriteMark(mark);
        }
        return true;
    }

    int64_t length = 0;
    if (const platform::FileError error = ops.openForReading(path, m_file, length))
        return ReportFileError(error);
    // What a 32-bit offset can't reach is refused, never cut short.
    if (length > kLargestFile) return ReportFileError(EOVERFLOW);
    m_fileLength = int32_t(length);
    const int32_t size = std::min(kHeadBytes, m_fileLength);
    if (size == 0) {
        m_filePosition = 0;
        return true;
    }
    char head[kHeadBytes];
    if (const platform::FileError error = ops.readAt(m_file, 0, head, size_t(size)))
        return ReportFileError(error);

    m_flags &= ~uint32_t(DocUtf16Le | DocUtf8Bom | DocUtf16Be);
    int32_t markLength = 0;
    for (const ByteOrderMark& mark : ByteOrderMarks) {
        if (mark.length <= size && std::memcmp(head, mark.bytes, size_t(mark.length)) == 0) {
            m_flags |= mark.flag;
            m_encoding = mark.encoding;
            if (mark.length == 2) m_charSize = 2;
            markLength = mark.length;
            break;
        }
    }
    if (markLength == 0) {
        // The declaration is looked for in the head taken as UTF-8, whatever it holds;
        // a null in it ends the search there.
        TextConversion conversion(u"UTF-8", head, size);
        wchar wide[kHeadBytes + 1];
        conversion.destCapacity = kHeadBytes;
        const int32_t units = ConvertText(conversion, wide, u"UTF-16");
        wide[units] = 0;
        m_encoding = FindDeclaredEncoding(wide);
        // An assumption, not a test: markup in an unnamed encoding is taken for UTF-8.
        if (m_encoding.empty() && head[0] == '<') m_encoding = u"UTF-8";
        // A file that names exactly "UTF-32" is read in 32-bit units.
        if (CodePageFromName(m_encoding.c_str()) == CodePageUtf32) m_charSize = 4;
    }
    m_filePosition = markLength;
    if (markLength != 0) LogResult(m_log, u"bom", nullptr, 0, -1, -1);
    return true;
}

bool DocumentFile::WriteMark(const ByteOrderMark& mark) {
    m_encoding = mark.encoding;
    if (mark.length == 2) m_charSize = 2;
    m_bigEndian = mark.flag == DocUtf16Be;
    if (const platform::FileError error =
            platform::ActiveFileOps().write(m_written.file, mark.bytes, size_t(mark.length)))
        return ReportFileError(error);
    m_filePosition += mark.length;
    LogResult(m_log, u"bom", nullptr, 0, -1, -1);
    return true;
}

bool DocumentFile::ReportFileError(platform::FileError error) {
    LogResult(m_log, u"file_error", platform::FileErrorMessage(error).c_str(),
              LogNumber | LogMessage, error, -1);
    return false;
}

bool DocumentFile::Close(bool keep) {
    const platform::FileOps& ops = platform::ActiveFileOps();
    bool result = keep;
    // A failed close of a file read is reported, and what was read stands.
    if (m_file.IsOpen()) {
        if (const platform::FileError error = ops.close(m_file)) ReportFileError(error);
    }
    // A written file whose close fails may not hold every byte, so it replaces nothing.
    if (m_written.file.IsOpen()) {
        if (!keep) {
            ops.abandonReplacement(m_written);
        } else if (const platform::FileError error = ops.commitReplacement(m_written)) {
            result = ReportFileError(error);
        }
    }
    m_flags &= ~uint32_t(xml::DocReadStream | xml::DocWriteStream | xml::DocAppend);
    return result;
}

} // namespace vetra::text
