// utf8_path.h - a UTF-16 path as the UTF-8 bytes that the file system takes.
#ifndef VETRA_HOST_UTF8_PATH_H
#define VETRA_HOST_UTF8_PATH_H

#include <string>

#include "platform/utf8_codec.h"

namespace vetra::host {

/// Converts `length` units at `path` to UTF-8 in `out`. False for a path with a lone
/// surrogate, which names no file on a UTF-8 file system; `out` then holds U+FFFD for it.
inline bool PathToUtf8(const char16_t* path, size_t length, std::string& out) {
    bool replaced = false;
    out.resize(platform::utf8::EncodedLength(path, length, &replaced));
    platform::utf8::Encode(path, length, out.data(), out.size(), nullptr);
    return !replaced;
}

} // namespace vetra::host

#endif // VETRA_HOST_UTF8_PATH_H
