// file_reader.cpp - LoadTextFile and the reading side of DocumentFile: a file's bytes to
// the document's UTF-16 text, with the steps logged.
//
// The text is written straight into the document's own block: UTF-16 files are read into
// it, UTF-8 is decoded into it a piece at a time (so the file's bytes and the whole text
// are never held at once), other encodings are converted into it from one block of the
// file's bytes, freed before the parse. Line ends and other characters pass unchanged.
#include <algorithm>
#include <cstring>
#include <memory>

#include "text/charset_names.h"
#include "text/document_file.h"
#include "text/result_log.h"
#include "text/text_conversion.h"

namespace vetra::text {

using xml::DocText;

namespace {

constexpr int32_t kUtf8 = 65001;
// UTF-8 is read and decoded in pieces of this many bytes, which stay in the cache.
constexpr int32_t kPieceBytes = 256 * 1024;

// The first zero unit of `units` at or after `from`, or `count` if there is none.
int32_t FindZero(const char* units, int32_t from, int32_t count) {
    const void* zero = std::memchr(units + from, 0, size_t(count - from));
    return zero != nullptr ? int32_t(static_cast<const char*>(zero) - units) : count;
}
int32_t FindZero(const char16_t* units, int32_t from, int32_t count) {
    // Four units a step while none of them is zero.
    constexpr uint64_t kLow = 0x0001000100010001, kHigh = 0x8000800080008000;
    int32_t i = from;
    for (; i + 4 <= count; i += 4) {
        uint64_t word;
        std::memcpy(&word, units + i, sizeof word);
        if (((word - kLow) & ~word & kHigh) != 0) break;
    }
    while (i < count && units[i] != 0)
        ++i;
    return i;
}
int32_t FindZero(const char32_t* units, int32_t from, int32_t count) {
    while (from < count && units[from] != 0)
        ++from;
    return from;
}

// Closes up `units` over its zero units, moving each run between two of them once.
// Gives the number removed.
template <typename Unit> int32_t DropZeros(Unit* units, int32_t count) {
    int32_t out = FindZero(units, 0, count);
    for (int32_t i = out; i < count;) {
        while (i < count && units[i] == 0)
            ++i;
        const int32_t end = FindZero(units, i, count);
        std::memmove(units + out, units + i, size_t(end - i) * sizeof(Unit));
        out += end - i;
        i = end;
    }
    return count - out;
}

int32_t DropZeros(char* buffer, int32_t chars, int32_t charSize) {
    switch (charSize) {
    case 2:
        return DropZeros(reinterpret_cast<char16_t*>(buffer), chars);
    case 4:
        return DropZeros(reinterpret_cast<char32_t*>(buffer), chars);
    default:
        return DropZeros(buffer, chars);
    }
}

// Where a piece of UTF-8 may end: before the lead byte of a last character that the
// next piece may complete. A cut before any byte that continues no sequence splits no
// maximal ill-formed sequence either, so the pieces decode as the whole would.
int32_t PieceEnd(const char* bytes, int32_t length) {
    for (int32_t i = length - 1; i >= 0 && i >= length - 3; --i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte < 0x80) return i + 1;
        if (byte >= 0xC0) return i;
    }
    return length;
}

// The text becomes `units` long; a block much larger than that is given back.
void FitText(DocText& text, int32_t units) {
    text.resize_for_overwrite(size_t(units));
    if (text.size() < text.capacity() - text.capacity() / 4) text.shrink_to_fit();
}

} // namespace

bool LoadTextFile(const char* path, DocText& text, WideString& log, uint32_t& flags) {
    DocumentFile file(flags | xml::DocReadStream);
    const bool opened = file.OpenDocumentFile(path);
    log = file.m_log;
    // The old text's memory goes before the new text is read.
    DocText().swap(text);
    if (!opened) return false;
    file.m_blockBytes = file.m_fileLength - file.m_filePosition;
    const bool read = file.ReadBlockAsText(text);
    file.Close(read);
    log += file.m_log;
    flags = file.m_flags;
    return read;
}

bool DocumentFile::ReadBlockAsText(DocText& text) {
    m_log.clear();
    if (m_blockBytes == 0) {
        LogResult(m_log, u"read", m_encoding.c_str(), LogEncoding | LogLength, 0, -1);
        return true;
    }
    bool moreFollows = true;
    const int32_t left = m_fileLength - m_filePosition;
    if (m_blockBytes >= left) {
        m_blockBytes = left;
        moreFollows = false;
    }

    if (m_flags & (xml::DocUtf16Le | xml::DocUtf16Be)) {
        // The file's text is wide already. One unit more takes an odd last byte.
        auto* buffer =
            reinterpret_cast<char*>(text.resize_for_overwrite(size_t(m_blockBytes / 2) + 1));
        if (!ReadRawBlock(buffer)) {
            DocText().swap(text);
            return false;
        }
        if (moreFollows && m_blockChars != 0) TrimBlockTail(buffer);
        text.resize_for_overwrite(size_t(m_blockChars));
        return true;
    }
    if (!moreFollows && m_charSize == 1 && CodePageFromName(m_encoding.c_str()) == kUtf8)
        return ReadUtf8InPieces(text);

    const std::unique_ptr<char[]> buffer(new char[size_t(m_blockBytes)]);
    if (!ReadRawBlock(buffer.get())) return false;
    if (m_encoding.empty()) {
        if (TestUtf8Block(reinterpret_cast<const unsigned char*>(buffer.get()), m_blockChars,
                          moreFollows)) {
            m_encoding = u"UTF-8";
            LogResult(m_log, u"read", u"UTF-8", LogUpdate | LogEncoding, -1, -1);
        }
        LogResult(m_log, u"utf8_detection", nullptr, 0, -1, -1);
    }
    if (moreFollows && m_blockChars != 0) TrimBlockTail(buffer.get());
    const int32_t units = ConvertBlock(buffer.get(), text);
    LogResult(m_log, u"converted_to", u"UTF-16", LogEncoding | LogLength, units, -1);
    return true;
}

int32_t DocumentFile::ConvertBlock(const char* bytes, DocText& text) {
    TextConversion conversion(m_encoding.c_str(), bytes, m_blockChars);
    int32_t units = 0;
    if (m_blockChars > 0 && m_charSize == 1) {
        // One unit a byte is room enough for nearly every page, so the text is converted
        // without measuring it first; a page that needs more is measured.
        conversion.destCapacity = m_blockChars;
        units = ConvertText(conversion, text.resize_for_overwrite(size_t(m_blockChars)), u"UTF-16");
    }
    if (units == 0 && m_blockChars > 0) {
        conversion.destCapacity = 0;
        const int32_t needed = ConvertText(conversion, nullptr, u"UTF-16");
        if (needed > 0) {
            conversion.destCapacity = needed;
            units = ConvertText(conversion, text.resize_for_overwrite(size_t(needed)), nullptr);
            if (units != needed) units = 0;
        }
    }
    FitText(text, units);
    return units;
}

bool DocumentFile::ReadUtf8InPieces(DocText& text) {
    const platform::FileOps& ops = platform::ActiveFileOps();
    const int32_t total = m_blockBytes;
    // UTF-8 never decodes to more units than it has bytes.
    wchar* out = text.resize_for_overwrite(size_t(total));
    // Room for a piece and the start of a character carried over from the last one.
    const std::unique_ptr<char[]> piece(new char[size_t(std::min(kPieceBytes, total)) + 3]);
    int32_t done = 0, carried = 0, units = 0, nulls = 0;
    bool converted = true;
    while (done < total) {
        const int32_t want = std::min(kPieceBytes, total - done);
        char* fresh = piece.get() + carried;
        if (const platform::FileError error =
                ops.readAt(m_file, int64_t(m_filePosition) + done, fresh, size_t(want))) {
            DocText().swap(text);
            return ReportFileError(error);
        }
        done += want;
        const int32_t removed = DropZeros(fresh, want);
        nulls += removed;
        const int32_t have = carried + want - removed;
        const int32_t end = done < total ? PieceEnd(piece.get(), have) : have;
        if (end > 0) {
            TextConversion conversion(m_encoding.c_str(), piece.get(), end);
            conversion.destCapacity = total - units;
            const int32_t n = ConvertText(conversion, out + units, u"UTF-16");
            converted = converted && n > 0;
            units += n;
        }
        carried = have - end;
        std::memmove(piece.get(), piece.get() + end, size_t(carried));
    }
    m_filePosition += total;
    m_blockChars = total;
    LogResult(m_log, u"read", m_encoding.c_str(), LogEncoding | LogLength, m_blockChars, -1);
    if (nulls != 0) {
        LogResult(m_log, u"nulls_removed", nullptr, LogCount, nulls, -1);
        m_blockChars -= nulls;
    }
    if (!converted) units = 0;
    FitText(text, units);
    LogResult(m_log, u"converted_to", u"UTF-16", LogEncoding | LogLength, units, -1);
    return true;
}

bool DocumentFile::ReadRawBlock(char* buffer) {
    if (const platform::FileError error =
            platform::ActiveFileOps().readAt(m_file, m_filePosition, buffer, size_t(m_blockBytes)))
        return ReportFileError(error);
    // A last odd byte of a UTF-16 file is read and then ignored.
    m_blockChars = m_blockBytes / m_charSize;
    m_filePosition += m_blockBytes;
    LogResult(m_log, u"read", m_encoding.c_str(), LogEncoding | LogLength, m_blockChars, -1);
    if (const int32_t removed = DropZeros(buffer, m_blockChars, m_charSize)) {
        LogResult(m_log, u"nulls_removed", nullptr, LogCount, removed, -1);
        m_blockChars -= removed;
    }
    if (m_charSize == 2 && (m_flags & xml::DocUtf16Be)) {
        auto* units = reinterpret_cast<char16_t*>(buffer);
        for (int32_t i = 0; i < m_blockChars; ++i)
            units[i] = char16_t(units[i] << 8 | units[i] >> 8);
        LogResult(m_log, u"endian_swap", nullptr, 0, -1, -1);
    }
    return true;
}

void DocumentFile::TrimBlockTail(char* buffer) {
    TextConversion conversion(m_encoding.c_str(), buffer, m_blockChars);
    int32_t tail = 0;
    if (!MeasureBrokenTail(conversion, tail)) {
        // The character cut in two is left to the conversion.
        LogResult(m_log, u"truncation_error", m_encoding.empty() ? u"ANSI" : m_encoding.c_str(),
                  LogEncoding, -1, -1);
        return;
    }
    if (tail == 0) return;
    // The next block reads these bytes again.
    m_filePosition -= tail;
    m_blockBytes -= tail;
    m_blockChars -= tail / m_charSize;
    LogResult(m_log, u"read", nullptr, LogUpdate | LogLength, m_blockChars, -1);
}

} // namespace vetra::text
