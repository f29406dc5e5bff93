// file.cpp (POSIX) - the document files on open/pread/write, and replacement by a temporary
// file in the target's folder renamed over it.
//
// Interrupted calls are retried and partial reads and writes go on, so a failure here is
// always a real one. Nothing is synced to the disk: a save costs what stdio's fopen,
// fwrite and fclose would, and rename makes the new content appear whole or not at all.
#include "platform/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/text_codec.h"

namespace vetra::platform {
namespace {

int Fd(FileHandle file) {
    return static_cast<int>(file.value);
}

FileError OpenForReading(const char* path, FileHandle& file, int64_t& length) {
    length = 0;
    // O_NONBLOCK keeps a pipe without writer from stalling the open; a regular file
    // ignores it, and nothing else is read since its length is 0.
    int fd;
    do
        fd = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    while (fd == -1 && errno == EINTR);
    if (fd == -1) return errno;
    struct stat st;
    const FileError error = ::fstat(fd, &st) != 0 ? errno : S_ISDIR(st.st_mode) ? EISDIR : 0;
    if (error != 0) {
        ::close(fd);
        return error;
    }
    file.value = fd;
    if (S_ISREG(st.st_mode)) length = st.st_size;
    return 0;
}

FileError ReadAt(FileHandle file, int64_t offset, void* buffer, size_t bytes) {
    auto* at = static_cast<char*>(buffer);
    while (bytes > 0) {
        const ssize_t got = ::pread(Fd(file), at, bytes, off_t(offset));
        if (got < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (got == 0) return EIO; // the file ended before its length
        at += got;
        offset += got;
        bytes -= size_t(got);
    }
    return 0;
}

FileError Close(FileHandle& file) {
    if (!file.IsOpen()) return 0;
    const int fd = Fd(file);
    file.value = -1;
    // On Linux the descriptor is gone even when close is interrupted.
    return ::close(fd) != 0 && errno != EINTR ? errno : 0;
}

FileError Write(FileHandle file, const void* bytes, size_t count) {
    const auto* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t put = ::write(Fd(file), at, count);
        if (put < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        at += put;
        count -= size_t(put);
    }
    return 0;
}

std::string Folder(const std::string& path) {
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Follows symbolic links from `path` to the name that is no link (which may not exist
// yet), as opening it would; `st` describes it and `exists` says whether it does.
FileError FinalTarget(const char* path, std::string& target, struct stat& st, bool& exists) {
    target = path;
    for (int hops = 0;; ++hops) {
        if (::lstat(target.c_str(), &st) != 0) {
            if (errno != ENOENT) return errno;
            exists = false;
            return 0;
        }
        if (!S_ISLNK(st.st_mode)) {
            exists = true;
            return 0;
        }
        if (hops == 40) return ELOOP;
        std::string link(size_t(st.st_size > 0 ? st.st_size : 255) + 1, '\0');
        const ssize_t n = ::readlink(target.c_str(), link.data(), link.size());
        if (n < 0) return errno;
        link.resize(size_t(n));
        target = link[0] == '/' ? link : Folder(target) + "/" + link;
    }
}

// The process's umask, read without changing it (umask() can only be read by setting
// it, which races with other threads creating files).
mode_t CurrentUmask() {
    mode_t mask = 022;
    if (FILE* f = std::fopen("/proc/self/status", "re")) {
        char line[256];
        while (std::fgets(line, sizeof line, f) != nullptr) {
            if (std::strncmp(line, "Umask:", 6) == 0) {
                mask = mode_t(std::strtoul(line + 6, nullptr, 8));
                break;
            }
        }
        std::fclose(f);
    }
    return mask & 0777;
}

FileError BeginReplacement(const char* path, FileReplacement& out) {
    out = FileReplacement();
    struct stat st;
    bool exists = false;
    if (const FileError error = FinalTarget(path, out.target, st, exists)) return error;
    if (exists) {
        if (S_ISDIR(st.st_mode)) return EISDIR;
        // Refused before anything is written, as opening it for writing would be.
        if (::faccessat(AT_FDCWD, out.target.c_str(), W_OK, AT_EACCESS) != 0) return errno;
        if (!S_ISREG(st.st_mode)) {
            int fd;
            do
                fd = ::open(out.target.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOCTTY);
            while (fd == -1 && errno == EINTR);
            if (fd == -1) return errno;
            out.file.value = fd;
            return 0;
        }
    }
    // A name that shows what it is for, short enough for the file system's limit.
    const size_t slash = out.target.rfind('/');
    const std::string base = out.target.substr(slash == std::string::npos ? 0 : slash + 1);
    out.temporary = Folder(out.target) + "/." + base.substr(0, 200) + ".vetra-XXXXXX";
    const int fd = ::mkostemp(out.temporary.data(), O_CLOEXEC);
    if (fd == -1) {
        out.temporary.clear();
        return errno;
    }
    out.file.value = fd;
    // Owner and group first: changing them clears the set-id bits that fchmod restores.
    // Both are best effort; a file the process may not give away stays its own.
    if (exists) {
        if ((st.st_uid != ::geteuid() || st.st_gid != ::getegid()) &&
            ::fchown(fd, st.st_uid, st.st_gid) != 0)
            (void)::fchown(fd, uid_t(-1), st.st_gid);
        (void)::fchmod(fd, st.st_mode & 07777);
    } else {
        (void)::fchmod(fd, 0666 & ~CurrentUmask());
    }
    return 0;
}

FileError CommitReplacement(FileReplacement& replacement) {
    FileError error = Close(replacement.file);
    if (replacement.temporary.empty()) return error;
    if (error == 0 && ::rename(replacement.temporary.c_str(), replacement.target.c_str()) != 0)
        error = errno;
    if (error != 0) ::unlink(replacement.temporary.c_str());
    replacement.temporary.clear();
    return error;
}

void AbandonReplacement(FileReplacement& replacement) {
    Close(replacement.file);
    if (!replacement.temporary.empty()) ::unlink(replacement.temporary.c_str());
    replacement.temporary.clear();
}

constexpr FileOps kSystemOps = {
    OpenForReading, ReadAt, Close, BeginReplacement, Write, CommitReplacement, AbandonReplacement};

} // namespace

const FileError kUnnamablePath = EILSEQ;

const FileOps& SystemFileOps() noexcept {
    return kSystemOps;
}

std::u16string FileErrorMessage(FileError error) {
    char buffer[256];
    // The GNU strerror_r, which may give a static text instead of filling the buffer.
    const char* text = ::strerror_r(error, buffer, sizeof buffer);
    const auto length = int32_t(std::strlen(text));
    char16_t wide[100];
    // Messages are in the locale's code page, as the system's default is.
    const int32_t units = length == 0 ? 0 : MultiByteToWide(0, text, length, wide, 99);
    std::u16string message(wide, size_t(units));
    const size_t end = message.find_first_of(u"\r\n");
    if (end != std::u16string::npos) message.resize(end);
    return message;
}

} // namespace vetra::platform
