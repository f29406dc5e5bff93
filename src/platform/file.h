// file.h - the files of the document reader and writer: open and read a whole file, and
// replace a file's content without ever leaving it half written.
//
// A replacement writes a temporary file beside the target and puts it in the target's place
// once every byte is out, so a failed save leaves the old file as it was. Paths are UTF-8. Failures
// are the system's own error numbers (errno, or GetLastError's codes on Windows), and their
// text is the system's own message. Nothing here buffers or converts text.
#ifndef VETRA_PLATFORM_FILE_H
#define VETRA_PLATFORM_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace vetra::platform {

/// The system's number for what went wrong (errno on POSIX, a system error code on
/// Windows); 0 is success.
using FileError = int;

/// The error of a path that names no file because it holds a lone surrogate, which the
/// UTF-8 paths of this layer can't carry: EILSEQ, ERROR_INVALID_NAME on Windows.
extern const FileError kUnnamablePath;

/// An open file: the system's descriptor (a FILE* on Windows), -1 for none.
struct FileHandle {
    intptr_t value = -1;
    bool IsOpen() const { return value != -1; }
};

/// A file being written in place of another.
struct FileReplacement {
    FileHandle file;       // where the bytes go now
    std::string target;    // the file that commitReplacement replaces (a link's final target)
    std::string temporary; // the temporary file that holds them; empty when writing in place
};

/// The operations of this layer, one table: the system's by default. Tests put their own
/// in to make a step fail (ActiveFileOps); every caller goes through the table. The
/// operations run once or twice per file, never per byte.
struct FileOps {
    /// Opens `path` for reading and gives its length in bytes. A directory gives EISDIR
    /// (ERROR_ACCESS_DENIED on Windows);
    /// a file that reports no size (a pipe, most of /proc) has length 0.
    FileError (*openForReading)(const char* path, FileHandle& file, int64_t& length);
    /// Reads exactly `bytes` bytes at `offset`. A file that ends sooner (it shrank since
    /// it was opened) gives EIO.
    FileError (*readAt)(FileHandle file, int64_t offset, void* buffer, size_t bytes);
    /// Closes the file, if open, and marks the handle closed in every case.
    FileError (*close)(FileHandle& file);

    /// Prepares to replace `path`. On Windows: a directory or a read-only file is refused
    /// with ERROR_ACCESS_DENIED and a missing folder with ERROR_PATH_NOT_FOUND, as an open
    /// for writing would refuse them; otherwise the bytes go to a temporary file
    /// ".NAME.vetra-XXXXXXXX" beside the target, which commitReplacement puts in its place
    /// with ReplaceFileW (keeping the target's attributes and security) or, for a new
    /// file, MoveFileExW. On POSIX systems: a symbolic link is followed to the file it finally
    /// names, which is what gets replaced; the link stays. A regular file, or a new one,
    /// is written to a temporary file ".NAME.vetra-XXXXXX" in the same folder, created with
    /// the old file's permission bits (and owner and group, where the process may set
    /// them) or, for a new file, 0666 less the umask. Anything else that exists (a device,
    /// a pipe) is opened and written in place. Fails, creating nothing, with EISDIR for a
    /// directory, with EACCES (or EROFS) for a file the process may not write, and with
    /// the system's error where no temporary file can be made in the folder.
    FileError (*beginReplacement)(const char* path, FileReplacement& out);
    /// Writes all `bytes`, going on after partial writes.
    FileError (*write)(FileHandle file, const void* bytes, size_t count);
    /// Closes the file and renames the temporary file over the target. On failure the
    /// temporary file is removed and the target is as it was.
    FileError (*commitReplacement)(FileReplacement& replacement);
    /// Closes the file and removes the temporary file; the target is as it was.
    void (*abandonReplacement)(FileReplacement& replacement);
};

/// The operations in use. Tests may change entries, but only while no file operation runs
/// on any thread, and must put the system's back (SystemFileOps) afterwards.
FileOps& ActiveFileOps() noexcept;
/// The system's own operations.
const FileOps& SystemFileOps() noexcept;

/// The first line of the system's message for `error`, without its line end, in UTF-16;
/// empty if the whole message would take more than 99 UTF-16 units. Safe from any thread.
std::u16string FileErrorMessage(FileError error);

} // namespace vetra::platform

#endif // VETRA_PLATFORM_FILE_H
