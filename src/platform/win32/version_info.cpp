// version_info.cpp (Windows) - a file's version through the system's version service, and the
// browser library's version through DllGetVersion of "shdocvw.dll".
//
// Both are read afresh at each call: the browser library is loaded and freed every time.
#include "platform/version_info.h"

#include <vector>

#include <windows.h>

#include <shlwapi.h>

namespace vetra::platform {

VersionQuery SystemFileVersion(const char16_t* path, uint32_t* ms, uint32_t* ls) {
    const auto* file = reinterpret_cast<const wchar_t*>(path);
    DWORD handle = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(file, &handle);
    if (size == 0) return VersionQuery::none;
    std::vector<unsigned char> block(size_t{size} + 1);
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT fixedSize = 0;
    if (::GetFileVersionInfoW(file, 0, size, block.data()) != 1 ||
        ::VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &fixedSize) != 1 ||
        fixed == nullptr || fixedSize < sizeof *fixed) {
        return VersionQuery::none;
    }
    *ms = fixed->dwFileVersionMS;
    *ls = fixed->dwFileVersionLS;
    return VersionQuery::found;
}

bool BrowserVersion(uint32_t* major, uint32_t* minor) {
    *major = 0;
    *minor = 0;
    const HMODULE library = ::LoadLibraryW(L"shdocvw.dll");
    if (library == nullptr) return false;
    bool found = false;
    const auto getVersion = reinterpret_cast<DLLGETVERSIONPROC>(
        reinterpret_cast<void (*)()>(::GetProcAddress(library, "DllGetVersion")));
    if (getVersion != nullptr) {
        DLLVERSIONINFO info{};
        info.cbSize = sizeof info;
        if (getVersion(&info) >= 0) {
            *major = info.dwMajorVersion;
            *minor = info.dwMinorVersion;
            found = true;
        }
    }
    ::FreeLibrary(library);
    return found;
}

} // namespace vetra::platform
