// charset_names.h - encoding names to code page numbers, by a fixed table of
// 365 aliases, and which code pages cannot report a lossy conversion.
//
// Pure lookup over constant data: no state, no allocation, no system call.
#ifndef VETRA_TEXT_CHARSET_NAMES_H
#define VETRA_TEXT_CHARSET_NAMES_H

#include <cstdint>

#include "xml/xml_types.h"

namespace vetra::text {

using xml::wchar;

/// The library's own number for UTF-32 in the machine's byte order, which
/// the system's converters don't know; the text converter handles it itself.
constexpr int32_t CodePageUtf32 = 65005;

/// The code page that `name` (null-terminated, not null) stands for: 0 for
/// the empty name, 65005 for any name that begins with exactly "UTF-32"
/// (capitals), the table's number for one of its names in any ASCII case,
/// and -1 for every other name (callers read -1 as the system's default).
int32_t CodePageFromName(const wchar* name);

/// True for the code pages whose conversion from UTF-16 must not be asked
/// whether it replaced characters (UTF-7, UTF-8, the ISO-2022 forms, HZ,
/// GB18030, ISCII): their loss goes unreported.
bool CodePageHidesLoss(int32_t codePage);

} // namespace vetra::text

#endif // VETRA_TEXT_CHARSET_NAMES_H
