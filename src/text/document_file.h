// document_file.h - DocumentFile, one reading or writing of a document file: the byte-order
// mark, the encoding, the blocks, and the result log of each step.
//
// LoadTextFile brings a whole file into a document's text as UTF-16, SaveTextFile writes a
// text back in the encoding the document calls for. Every system call goes through the
// platform's file layer. Reading and writing piece by piece (the stream modes) is not
// offered: nothing in the library enters those modes.
#ifndef VETRA_TEXT_DOCUMENT_FILE_H
#define VETRA_TEXT_DOCUMENT_FILE_H

#include <cstdint>
#include <string>

#include "platform/file.h"
#include "xml/doc_text.h"
#include "xml/xml_types.h"

namespace vetra::text {

using xml::wchar;
using xml::WideString;

/// A byte-order mark, the encoding it stands for and the document flag that records it.
struct ByteOrderMark {
    const char* bytes;
    int32_t length;
    const wchar* encoding;
    uint32_t flag;
};

/// The marks a file may start with, in the order they are looked for: UTF-8, UTF-16LE,
/// UTF-16BE. There is none for UTF-32: FF FE 00 00 is read as UTF-16LE and a null unit.
extern const ByteOrderMark ByteOrderMarks[3];

/// The largest file read: lengths and offsets of a document are 32-bit.
constexpr int64_t kLargestFile = INT32_MAX;

/// Converts a UTF-16 path to the UTF-8 bytes the file system takes. False, with `out`
/// empty, for a path holding a lone surrogate, which has no UTF-8 form.
bool WidePathToUtf8(const wchar* path, std::string& out);

/// Reads the whole file at `path` (UTF-8; null stands for a path that could not be
/// converted, and fails with platform::kUnnamablePath) into `text`, as UTF-16. `log` is replaced by
/// the reader's entries. In `flags` the mark bits (DocUtf16Le, DocUtf8Bom, DocUtf16Be) are set for
/// the mark found; if the file can't be opened they stay as they were. False if the file can't be
/// opened or read; `text` is then empty.
bool LoadTextFile(const char* path, xml::DocText& text, WideString& log, uint32_t& flags);

/// Writes the `length` units of `text` (null-terminated) to `path`, in the encoding of the
/// mark bits of `flags`, else the one the text declares, else UTF-8. The file is replaced
/// only once everything is written. `log` is replaced by the writer's entries; `flags`
/// come back as they were given. False if anything failed; the old file is then intact.
bool SaveTextFile(const char* path, const wchar* text, int32_t length, WideString& log,
                  uint32_t& flags);

/// One file operation, from the open to the close. Used by one call on one thread.
class DocumentFile {
  public:
    /// `flags` is the document's flag word with DocReadStream (reading) or
    /// DocWriteStream (writing) added.
    explicit DocumentFile(uint32_t flags) : m_flags(flags) {}
    ~DocumentFile() { Close(false); }
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;

    /// Opens for reading (looks at the head for a mark or a declaration) or for writing
    /// (starts the replacement, writes the mark of the flags). Empties m_log first.
    bool OpenDocumentFile(const char* path);
    /// Reads m_blockBytes (at most what is left) and converts them into `text`, which it
    /// replaces. Empties m_log first.
    bool ReadBlockAsText(xml::DocText& text);
    /// Reads m_blockBytes into `buffer`, then drops null characters and puts big-endian
    /// units into the machine's order.
    bool ReadRawBlock(char* buffer);
    /// When more of the file follows the block: gives back the bytes of a character that
    /// the block's end cuts in two, for the next block to read again.
    void TrimBlockTail(char* buffer);
    /// Converts `count` units of `text` to m_encoding and writes them. Empties m_log first.
    bool WriteTextBlock(const wchar* text, int32_t count);
    /// Writes m_blockChars characters of `constant`, or if that is null of `writable`
    /// (which is byte-swapped in place for a big-endian file).
    bool WriteRawBlock(char* writable, const char* constant);
    /// Logs `file_error` with the system's message for `error`. Always false.
    bool ReportFileError(platform::FileError error);
    /// Closes the file. A written file replaces its target only if `keep` is true and
    /// the close and the rename succeed; otherwise the target is left as it was. The
    /// stream bits leave m_flags. Gives `keep`, or false after a failure it logged.
    bool Close(bool keep);

    platform::FileHandle m_file;         // the open file, for reading
    platform::FileReplacement m_written; // the open file and its target, for writing
    uint32_t m_flags;                    // working copy of the document's flag word
    int32_t m_blockBytes = 0;            // bytes of the block being read or written
    int32_t m_fileLength = 0;            // length of the file read
    int32_t m_filePosition = 0;          // bytes of the file consumed, mark included
    int32_t m_charSize = 1;              // bytes a file character: 1, 2 (UTF-16), 4 (UTF-32)
    int32_t m_blockChars = 0;            // file characters of the block
    bool m_bigEndian = false;            // 16-bit units go out with their bytes exchanged
    WideString m_log;                    // the result log of the current step
    WideString m_encoding;               // the file's encoding; empty: the system's default

  private:
    bool ReadUtf8InPieces(xml::DocText& text);
    bool WriteUtf8InPieces(const wchar* text, int32_t count);
    int32_t ConvertBlock(const char* bytes, xml::DocText& text);
    bool WriteMark(const ByteOrderMark& mark);
};

} // namespace vetra::text

#endif // VETRA_TEXT_DOCUMENT_FILE_H
