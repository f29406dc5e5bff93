// local_path.h - creation of a directory path level by level, over a table of file-system
// operations that tests can replace.
//
// The table is read once per call; the exported VETRA_CreateLocalPath passes the platform's.
#ifndef VETRA_HOST_LOCAL_PATH_H
#define VETRA_HOST_LOCAL_PATH_H

#include <string>

#include "platform/file_system.h"

namespace vetra::host {

/// The file-system operations that CreateLocalPath needs, with the platform's meaning.
struct PathOperations {
    bool (*findLocalRoot)(const std::string& path, platform::filesys::LocalRoot* root);
    bool (*pathExists)(const char* path);
    void (*makeDirectory)(const char* path);
    bool (*isDirectory)(const char* path);
};

/// The platform's operations.
const PathOperations& PlatformPathOperations();

/// True for the UTF-16 units that count as white space around a path.
bool IsPathSpace(char16_t unit);

/// VETRA_CreateLocalPath with the operations `ops`: 1 if `path` names a directory (or, found
/// at once, anything) afterwards, 0 otherwise.
int CreateLocalPath(const char16_t* path, const PathOperations& ops);

} // namespace vetra::host

#endif // VETRA_HOST_LOCAL_PATH_H
