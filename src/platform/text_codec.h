// text_codec.h - conversion between bytes in a numbered code page and UTF-16 text, and the
// system's default code page: the library's only door to the system's converters.
//
// Code page numbers are those of the Windows platform. These functions convert whole texts
// given with their lengths; they keep no state between calls, add or strip no byte-order
// mark and never treat a null byte as an end. The library's own UTF-32 number, 65005, is
// not a code page here. Safe to call from several threads at once.
#ifndef VETRA_PLATFORM_TEXT_CODEC_H
#define VETRA_PLATFORM_TEXT_CODEC_H

#include <cstdint>

namespace vetra::platform {

/// Converts `length` bytes in `codePage` to UTF-16 in the machine's byte order.
///
/// `capacity` 0 only measures: the result is the number of units the conversion needs, and
/// `out` is not touched (it may be null). Otherwise the text is written to `out`, which
/// holds `capacity` units, and the result is the number written.
///
/// Returns 0 on any failure: `length` 0, a negative `length` or `capacity`, `bytes` null, `out`
/// null with a non-zero `capacity`, a code page the system cannot convert, or a `capacity`
/// smaller than the text needs; after a failure `out` holds something unspecified.
///
/// Code page 0 is SystemCodePage(). The platform's own UTF-16 and UTF-32 pages, 1200, 1201,
/// 12000 and 12001, are refused with 0, as callers rely on; so is any page that the
/// system's converter lacks.
///
/// Input that is not valid in the code page does not fail the call. For 65001 each maximal
/// subpart of an ill-formed sequence (overlong form, encoded surrogate, value above
/// U+10FFFF, stray or missing continuation byte) becomes one U+FFFD. For other pages each
/// byte that the converter rejects becomes one U+FFFD, and an incomplete character at the
/// end of the input becomes one U+FFFD. Bytes that a page leaves undefined (0x81 in 1252,
/// say) count as rejected: they become U+FFFD, not the control character of the same value.
int32_t MultiByteToWide(uint32_t codePage, const char* bytes, int32_t length, char16_t* out,
                        int32_t capacity);

/// Whether a conversion's arguments leave anything to do: the calls above return 0 without
/// converting unless `length` is positive, `input` is given, and `capacity` is 0 (measure)
/// or positive with `out` given.
inline bool HasConversionWork(const void* input, int32_t length, const void* out,
                              int32_t capacity) {
    return length > 0 && capacity >= 0 && input != nullptr && (capacity == 0 || out != nullptr);
}

/// Converts `length` UTF-16 units in the machine's byte order to bytes in `codePage`.
///
/// `capacity` 0 only measures: the result is the number of bytes the conversion needs, and
/// `out` is not touched (it may be null). Otherwise the bytes are written to `out`, which
/// holds `capacity` bytes, and the result is the number written. Stateful pages (ISO-2022
/// forms, 65000) end in their initial shift state, and that closing sequence is counted.
///
/// Returns 0 on any failure, the same as MultiByteToWide's: `length` 0, a negative length or
/// capacity, `text` null, `out` null with a non-zero `capacity`, a refused code page (0 is
/// SystemCodePage(); 1200, 1201, 12000 and 12001 are refused), or a `capacity` too small;
/// after a failure `out` holds something unspecified.
///
/// A character that the page cannot hold becomes the page's question mark, one for a whole
/// surrogate pair; a lone surrogate counts as such a character too, except in 65001, where
/// it becomes U+FFFD (EF BF BD). There is no best-fit mapping: U+0101 is '?' in 1252, not
/// 'a'. `usedDefault`, if not null, is cleared at the start and set to true when such a
/// replacement was made; it is accepted for every page, 65001 and 65000 included; after a
/// failure its value means nothing.
int32_t WideToMultiByte(uint32_t codePage, const char16_t* text, int32_t length, char* out,
                        int32_t capacity, bool* usedDefault);

/// The system's default code page, never 0.
///
/// On POSIX systems this is the code page whose name matches the codeset of the C library's
/// current locale (LC_CTYPE, as the application set it with setlocale), read at each call.
/// A codeset that matches no known code page, and the plain ASCII of the "C" and "POSIX"
/// locales that a program has before it calls setlocale, give 65001: treating undeclared
/// text as UTF-8 reads ASCII the same and loses nothing else.
uint32_t SystemCodePage();

} // namespace vetra::platform

#endif // VETRA_PLATFORM_TEXT_CODEC_H
