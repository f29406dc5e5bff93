// wide_path.h (Windows) - a UTF-8 path of the layers above as the UTF-16 path that the
// system's wide calls take, and back. The layers above made the UTF-8 from UTF-16 without loss, so
// the conversion back gives the caller's path.
#ifndef VETRA_PLATFORM_WIN32_WIDE_PATH_H
#define VETRA_PLATFORM_WIN32_WIDE_PATH_H

#include <cstring>
#include <string>

#include "platform/utf8_codec.h"

namespace vetra::platform::win32 {

/// `path` (UTF-8, null-terminated) in UTF-16. Throws std::bad_alloc.
inline std::wstring WidePath(const char* path) {
    const size_t length = std::strlen(path);
    std::wstring wide(length, L'\0');
    wide.resize(utf8::Decode(path, length, reinterpret_cast<char16_t*>(wide.data()), length));
    return wide;
}

/// `path` (UTF-16) as the UTF-8 path of the layers above. Throws std::bad_alloc.
inline std::string NarrowPath(const std::wstring& path) {
    const auto* units = reinterpret_cast<const char16_t*>(path.data());
    std::string narrow(utf8::EncodedLength(units, path.size(), nullptr), '\0');
    narrow.resize(utf8::Encode(units, path.size(), narrow.data(), narrow.size(), nullptr));
    return narrow;
}

} // namespace vetra::platform::win32

#endif // VETRA_PLATFORM_WIN32_WIDE_PATH_H
