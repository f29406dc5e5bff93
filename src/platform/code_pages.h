// code_pages.h - the code pages that the text converter knows, by number, with the name a
// C library's converter (iconv) uses for each and the codeset names a locale may report.
//
// Pure constant data and lookups: no system call. Which converter runs a code page is the
// business of the system's own text_codec.cpp, not of this table.
#ifndef VETRA_PLATFORM_CODE_PAGES_H
#define VETRA_PLATFORM_CODE_PAGES_H

#include <cstddef>
#include <cstdint>

namespace vetra::platform {

struct CodePageName {
    uint32_t codePage;
    const char* iconvName;      // as iconv_open takes it
    const char* codesetAliases; // further names a locale reports, blank-separated; may be ""
};

/// The most code pages the table may hold; the converter keeps one slot for each.
constexpr size_t kMaxKnownCodePages = 128;

/// The position of `codePage` in the table (ascending by number, each number once, at most
/// kMaxKnownCodePages entries), or -1 if the table lacks it.
int IndexOfCodePage(uint32_t codePage) noexcept;

/// The iconv name of `codePage`, or null if the table lacks it. The pointer is static.
const char* IconvNameOf(uint32_t codePage) noexcept;

/// The code page whose iconv name or alias is `codeset`, compared without regard to case,
/// '-' or '_' (so "utf8" finds 65001); the lowest such number if several share the name.
/// 0 if none matches or `codeset` is null.
uint32_t CodePageOfCodeset(const char* codeset) noexcept;

} // namespace vetra::platform

#endif // VETRA_PLATFORM_CODE_PAGES_H
