// file_system.cpp - local directory paths and directory creation on POSIX.
//
// A path is judged by the file system of its nearest existing ancestor, read with statfs:
// the system's own pseudo file systems and optical media play the part of the drive types
// that refuse directories. Everything else, including file systems unknown here, is accepted.
#include "platform/file_system.h"

#include <cstdint>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace vetra::platform::filesys {
namespace {

constexpr size_t kMaxPathBytes = 4095;

// Magic numbers (statfs f_type) of file systems where an application's directories have no
// place: the kernel's views of itself, and read-only optical media.
constexpr uint32_t kRefusedFileSystems[] = {
    0x9fa0,     // proc
    0x62656572, // sysfs
    0x1cd1,     // devpts
    0x27e0eb,   // cgroup
    0x63677270, // cgroup2
    0x64626720, // debugfs
    0x74726163, // tracefs
    0x73636673, // securityfs
    0xf97cff8c, // selinuxfs
    0x43415d53, // smackfs
    0x6165676c, // pstore
    0xcafe4a11, // bpf
    0x62656570, // configfs
    0xde5e81e4, // efivarfs
    0x19800202, // mqueue
    0x958458f6, // hugetlbfs
    0x65735543, // fusectl
    0x42494e4d, // binfmt_misc
    0x0187,     // autofs (the mount point itself, before anything is mounted on it)
    0x6e736673, // nsfs
    0x67596969, // rpc_pipefs
    0x9660,     // iso9660
    0x15013346, // udf
};

bool IsRefused(uint32_t magic) {
    for (uint32_t refused : kRefusedFileSystems) {
        if (magic == refused) return true;
    }
    return false;
}

} // namespace

bool FindLocalRoot(const std::string& path, LocalRoot* root) {
    if (path.empty() || path.size() > kMaxPathBytes || path[0] != '/') return false;
    // Shorten the path level by level until statfs finds something; each round drops at
    // least one character, and "/" itself always exists.
    std::string probe = path;
    struct statfs info;
    while (::statfs(probe.c_str(), &info) != 0) {
        const size_t end = probe.find_last_not_of('/');
        if (end == std::string::npos) return false;
        probe.resize(probe.rfind('/', end) + 1);
    }
    if (IsRefused(static_cast<uint32_t>(info.f_type))) return false;
    root->firstSeparator = 0;
    root->separator = '/';
    return true;
}

bool PathExists(const char* path) {
    return ::access(path, F_OK) == 0;
}

bool IsDirectory(const char* path) {
    struct stat info;
    return ::stat(path, &info) == 0 && S_ISDIR(info.st_mode);
}

void MakeDirectory(const char* path) {
    ::mkdir(path, 0777);
}

} // namespace vetra::platform::filesys
