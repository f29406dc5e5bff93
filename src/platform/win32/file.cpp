// file.cpp (Windows) - the document files through the C runtime's streams (_wfopen, fseek,
// ftell, fread, fwrite, fclose) in byte mode, with the system's error codes and messages.
//
// A save opens the target itself with "wb" and writes it in place: no temporary file, so a
// save that fails half way leaves the target cut short. Offsets are 32-bit, as ftell gives
// them: a file of 2 GiB or more can't be read.
#include "platform/file.h"

#include <cstdio>

#include <windows.h>

#include "platform/win32/wide_path.h"

namespace vetra::platform {
namespace {

FILE* Stream(FileHandle file) {
    return reinterpret_cast<FILE*>(file.value);
}

// The system's code for the call that just failed; `otherwise` where the runtime failed
// without one.
FileError LastError(DWORD otherwise) {
    const DWORD error = ::GetLastError();
    return static_cast<FileError>(error != 0 ? error : otherwise);
}

FileError Open(const char* path, const wchar_t* mode, FileHandle& file) {
    ::SetLastError(0);
    FILE* stream = ::_wfopen(win32::WidePath(path).c_str(), mode);
    if (stream == nullptr) return LastError(ERROR_OPEN_FAILED);
    file.value = reinterpret_cast<intptr_t>(stream);
    return 0;
}

FileError Close(FileHandle& file) {
    if (!file.IsOpen()) return 0;
    FILE* stream = Stream(file);
    file.value = -1;
    ::SetLastError(0);
    return ::fclose(stream) == 0 ? 0 : LastError(ERROR_WRITE_FAULT);
}

FileError OpenForReading(const char* path, FileHandle& file, int64_t& length) {
    length = 0;
    if (const FileError error = Open(path, L"rb", file)) return error;
    FILE* stream = Stream(file);
    long end = -1;
    if (::fseek(stream, 0, SEEK_END) == 0) end = ::ftell(stream);
    if (end < 0 || ::fseek(stream, 0, SEEK_SET) != 0) {
        Close(file);
        return ERROR_FILE_TOO_LARGE;
    }
    length = end;
    return 0;
}

FileError ReadAt(FileHandle file, int64_t offset, void* buffer, size_t bytes) {
    if (bytes == 0) return 0;
    FILE* stream = Stream(file);
    if (offset > 0x7FFFFFFF || ::fseek(stream, static_cast<long>(offset), SEEK_SET) != 0) {
        return ERROR_SEEK;
    }
    ::SetLastError(0);
    if (::fread(buffer, bytes, 1, stream) == 1) return 0;
    // A file that ends sooner than its length shrank since it was opened.
    return ::ferror(stream) ? LastError(ERROR_READ_FAULT) : ERROR_HANDLE_EOF;
}

FileError BeginReplacement(const char* path, FileReplacement& out) {
    out = FileReplacement();
    out.target = path;
    return Open(path, L"wb", out.file);
}

FileError Write(FileHandle file, const void* bytes, size_t count) {
    if (count == 0) return 0;
    ::SetLastError(0);
    return ::fwrite(bytes, count, 1, Stream(file)) == 1 ? 0 : LastError(ERROR_WRITE_FAULT);
}

FileError CommitReplacement(FileReplacement& replacement) {
    return Close(replacement.file);
}

void AbandonReplacement(FileReplacement& replacement) {
    Close(replacement.file);
}

constexpr FileOps kSystemOps = {
    OpenForReading, ReadAt, Close, BeginReplacement, Write, CommitReplacement, AbandonReplacement};

} // namespace

const FileError kUnnamablePath = ERROR_INVALID_NAME;

const FileOps& SystemFileOps() noexcept {
    return kSystemOps;
}

std::u16string FileErrorMessage(FileError error) {
    // From the system, ignoring inserts, in the system's own language; a message that
    // doesn't fit the 100 units gives nothing.
    wchar_t text[100];
    const DWORD units = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                         nullptr, static_cast<DWORD>(error), 0, text, 100, nullptr);
    std::u16string message(reinterpret_cast<const char16_t*>(text), units);
    const size_t end = message.find_first_of(u"\r\n");
    if (end != std::u16string::npos) message.resize(end);
    return message;
}

} // namespace vetra::platform
