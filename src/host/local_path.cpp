// local_path.cpp - VETRA_CreateLocalPath: trims the path, lets the platform judge it, and
// creates its missing levels from the top down, then asks whether a directory is there.
//
// The creation calls' own results are never used: a level that exists already, or one
// that cannot be made, shows in the final check alone.
#include "host/local_path.h"

#include "host/utf8_path.h"
#include "vetra/host.h"

namespace vetra::host {

const PathOperations& PlatformPathOperations() {
    static const PathOperations ops = {
        platform::filesys::FindLocalRoot, platform::filesys::PathExists,
        platform::filesys::MakeDirectory, platform::filesys::IsDirectory};
    return ops;
}

bool IsPathSpace(char16_t unit) {
    return (unit >= 0x09 && unit <= 0x0D) || unit == 0x20 || unit == 0x85 || unit == 0xA0 ||
           unit == 0x1680 || (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 ||
           unit == 0x2029 || unit == 0x202F || unit == 0x205F || unit == 0x3000;
}

namespace {

// The trimmed path in UTF-8; false for a lone surrogate, which names no file.
bool TrimmedUtf8(const char16_t* path, std::string& out) {
    size_t end = path ? std::char_traits<char16_t>::length(path) : 0;
    while (end > 0 && IsPathSpace(path[end - 1]))
        --end;
    size_t start = 0;
    while (start < end && IsPathSpace(path[start]))
        ++start;
    return PathToUtf8(path + start, end - start, out);
}

} // namespace

int CreateLocalPath(const char16_t* path, const PathOperations& ops) {
    std::string local;
    platform::filesys::LocalRoot root;
    if (!TrimmedUtf8(path, local) || local.empty() || !ops.findLocalRoot(local, &root)) {
        return 0;
    }
    if (ops.pathExists(local.c_str())) return 1;
    const char separator = root.separator;
    if (local.back() != separator) local += separator;

    // Each level is the path up to and including a separator. The walk ends at the end of
    // the path or at an empty name, where a separator follows right behind the last one.
    size_t start = root.firstSeparator + 1;
    for (size_t next = local.find(separator, start); next != std::string::npos && next > start;
         next = local.find(separator, start)) {
        ops.makeDirectory(local.substr(0, next + 1).c_str());
        start = next + 1;
    }
    ops.makeDirectory(local.c_str());
    return ops.isDirectory(local.c_str()) ? 1 : 0;
}

} // namespace vetra::host

extern "C" int VETRA_CreateLocalPath(const vtchar* path) {
    return vetra::host::CreateLocalPath(reinterpret_cast<const char16_t*>(path),
                                        vetra::host::PlatformPathOperations());
}
