// file.cpp (Windows) - the document files through the C runtime's streams (_wfopen, fseek,
// ftell, fread, fwrite, fclose) in byte mode, with the system's error codes and messages.
//
// A save writes a temporary file ".NAME.vetra-XXXXXXXX" beside the target and puts it in
// the target's place once every byte is out (ReplaceFileW, which keeps the target's
// attributes and security, or MoveFileExW for a new file), so a failed save leaves the old
// file as it was. Offsets are 32-bit, as ftell gives them: a file of 2 GiB or more can't
// be read.
#include "platform/file.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>

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

// The folder part of `path`, with its separator; empty for a bare name.
std::wstring FolderOf(const std::wstring& path) {
    const size_t cut = path.find_last_of(L"\\/:");
    return cut == std::wstring::npos ? std::wstring() : path.substr(0, cut + 1);
}

FileError BeginReplacement(const char* path, FileReplacement& out) {
    out = FileReplacement();
    out.target = path;
    const std::wstring target = win32::WidePath(path);
    // Refused as an open for writing would refuse it, before anything is made.
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0)
        return ERROR_ACCESS_DENIED;
    const std::wstring folder = FolderOf(target);
    if (!folder.empty() && ::GetFileAttributesW(folder.c_str()) == INVALID_FILE_ATTRIBUTES)
        return ERROR_PATH_NOT_FOUND;
    // A name of its own beside the target, made with CREATE_NEW so that no other file is
    // ever taken over.
    const std::wstring stem = folder + L"." + target.substr(folder.size()) + L".vetra-";
    static volatile LONG s_counter = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        wchar_t suffix[16];
        const unsigned long salt = (::GetCurrentProcessId() << 16) ^ ::GetTickCount() ^
                                   unsigned(::InterlockedIncrement(&s_counter)) * 2654435761u;
        ::swprintf(suffix, 16, L"%08lx", salt);
        const std::wstring temporary = stem + suffix;
        const HANDLE handle = ::CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr,
                                            CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            if (::GetLastError() == ERROR_FILE_EXISTS) continue;
            return LastError(ERROR_CANNOT_MAKE);
        }
        const int descriptor = ::_open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
        FILE* stream = descriptor != -1 ? ::_fdopen(descriptor, "wb") : nullptr;
        if (stream == nullptr) {
            descriptor != -1 ? ::_close(descriptor) : ::CloseHandle(handle);
            ::DeleteFileW(temporary.c_str());
            return ERROR_CANNOT_MAKE;
        }
        out.file.value = reinterpret_cast<intptr_t>(stream);
        out.temporary = win32::NarrowPath(temporary);
        return 0;
    }
    return ERROR_CANNOT_MAKE;
}

FileError Write(FileHandle file, const void* bytes, size_t count) {
    if (count == 0) return 0;
    ::SetLastError(0);
    return ::fwrite(bytes, count, 1, Stream(file)) == 1 ? 0 : LastError(ERROR_WRITE_FAULT);
}

void RemoveTemporary(FileReplacement& replacement) {
    if (!replacement.temporary.empty())
        ::DeleteFileW(win32::WidePath(replacement.temporary.c_str()).c_str());
    replacement.temporary.clear();
}

FileError CommitReplacement(FileReplacement& replacement) {
    FileError error = Close(replacement.file);
    if (error == 0) {
        const std::wstring target = win32::WidePath(replacement.target.c_str());
        const std::wstring temporary = win32::WidePath(replacement.temporary.c_str());
        const bool exists = ::GetFileAttributesW(target.c_str()) != INVALID_FILE_ATTRIBUTES;
        ::SetLastError(0);
        const BOOL moved =
            exists ? ::ReplaceFileW(target.c_str(), temporary.c_str(), nullptr,
                                    REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)
                   : ::MoveFileExW(temporary.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING);
        if (moved) {
            replacement.temporary.clear();
            return 0;
        }
        error = LastError(ERROR_WRITE_FAULT);
    }
    RemoveTemporary(replacement);
    return error;
}

void AbandonReplacement(FileReplacement& replacement) {
    Close(replacement.file);
    RemoveTemporary(replacement);
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
