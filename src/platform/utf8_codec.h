// utf8_codec.h - strict UTF-8 <-> UTF-16 conversion, independent of the operating system.
//
// Runs of ASCII go through a word-at-a-time path, since documents are mostly ASCII markup.
// Ill-formed input never fails: it is replaced by U+FFFD. This codec knows nothing of code
// pages, byte-order marks or null terminators; callers strip or add those themselves.
#ifndef VETRA_PLATFORM_UTF8_CODEC_H
#define VETRA_PLATFORM_UTF8_CODEC_H

#include <cstddef>

namespace vetra::platform::utf8 {

/// The result of Decode and Encode when the output does not fit in `capacity`.
constexpr size_t kNoRoom = static_cast<size_t>(-1);

/// Number of UTF-16 units that Decode gives for the `length` bytes at `bytes`; never more
/// than `length`, so a buffer of `length` units always suffices. 0 for `length` 0.
size_t DecodedLength(const char* bytes, size_t length) noexcept;

/// Decodes `length` bytes of UTF-8 into `out`, which holds `capacity` units.
/// Returns the number of units written, or kNoRoom if they would exceed `capacity`; what
/// `out` then holds is unspecified. Characters above U+FFFF become surrogate pairs.
/// Each maximal subpart of an ill-formed sequence becomes one U+FFFD: a stray continuation
/// byte, an overlong form, an encoded surrogate, a value above U+10FFFF, a lead byte
/// without enough continuation bytes (also at the end of the input), and the bytes C0, C1
/// and F5 to FF. So E1 80 41 gives U+FFFD 'A', and ED A0 80 gives three U+FFFD.
size_t Decode(const char* bytes, size_t length, char16_t* out, size_t capacity) noexcept;

/// Number of bytes that Encode gives for the `length` units at `text`; at most three per
/// unit. `replaced`, if not null, is set to true if a lone surrogate is met and left alone
/// otherwise.
size_t EncodedLength(const char16_t* text, size_t length, bool* replaced) noexcept;

/// Encodes `length` UTF-16 units into `out`, which holds `capacity` bytes.
/// Returns the number of bytes written, or kNoRoom if they would exceed `capacity`; what
/// `out` then holds is unspecified. A surrogate pair becomes one four-byte sequence; a lone
/// surrogate becomes U+FFFD (EF BF BD) and sets `*replaced` to true if `replaced` is not
/// null, which is otherwise left alone.
size_t Encode(const char16_t* text, size_t length, char* out, size_t capacity,
              bool* replaced) noexcept;

} // namespace vetra::platform::utf8

#endif // VETRA_PLATFORM_UTF8_CODEC_H
