// file_system.cpp (Windows) - local directory paths on drive letters, and directory creation.
//
// A path is local when its drive letter names a removable, fixed or network drive
// (GetDriveTypeW); CD-ROMs, RAM disks, unknown drives and UNC paths are not. Paths arrive as
// UTF-8 and go to the wide calls as UTF-16.
#include "platform/file_system.h"

#include <io.h>

#include <windows.h>

#include "platform/win32/wide_path.h"

namespace vetra::platform::filesys {
namespace {

constexpr size_t kMaxPathUnits = 260;

} // namespace

bool FindLocalRoot(const std::string& path, LocalRoot* root) {
    const std::wstring wide = win32::WidePath(path.c_str());
    if (wide.empty() || wide.size() > kMaxPathUnits || wide.size() < 2 || wide[1] != L':') {
        return false;
    }
    switch (::GetDriveTypeW(wide.substr(0, 3).c_str())) {
    case DRIVE_REMOVABLE:
    case DRIVE_FIXED:
    case DRIVE_REMOTE:
        break;
    default:
        return false;
    }
    // The separator is chosen once: in a path with any backslash, slashes are plain
    // characters. The drive letter and ':' take the UTF-8 bytes before the one at index 2.
    const size_t from = path.find(':') + 1;
    size_t first = path.find('\\', from);
    char separator = '\\';
    if (first == std::string::npos) {
        first = path.find('/', from);
        separator = '/';
    }
    if (first == std::string::npos) return false;
    root->firstSeparator = first;
    root->separator = separator;
    return true;
}

bool PathExists(const char* path) {
    return ::_waccess(win32::WidePath(path).c_str(), 0) == 0;
}

bool IsDirectory(const char* path) {
    const DWORD attributes = ::GetFileAttributesW(win32::WidePath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void MakeDirectory(const char* path) {
    ::CreateDirectoryW(win32::WidePath(path).c_str(), nullptr);
}

} // namespace vetra::platform::filesys
