// wide_format.h - printf for UTF-16 formats, by the wide printf rules of the library's
// original platform: %s takes a UTF-16 string and %S a narrow one.
//
// glibc's wprintf works on 32-bit wchar_t and reads %s the other way round, so the format
// is walked here; numeric conversions go one by one to the narrow snprintf, which gives
// the same digits. The rules, and what is refused, are listed at VETRA_Trace in host.h.
#ifndef VETRA_HOST_WIDE_FORMAT_H
#define VETRA_HOST_WIDE_FORMAT_H

#include <cstdarg>
#include <string>

namespace vetra::host {

/// Appends the text of `format` with `args` to `out`. Returns false, with the text of the
/// conversions before it appended, at the first conversion that the rules refuse. Throws
/// std::bad_alloc when `out` cannot grow.
bool FormatWide(const char16_t* format, va_list args, std::u16string& out);

} // namespace vetra::host

#endif // VETRA_HOST_WIDE_FORMAT_H
