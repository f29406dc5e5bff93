// code_page_paths.h (POSIX) - the two ways text_codec.cpp converts a code page other than
// UTF-8: glibc's iconv, and, for pages whose every byte stands alone for one character,
// 256-entry tables built from iconv once and used instead of it.
//
// Internal to the POSIX platform layer (and its tests). Arguments are checked by the
// public functions of text_codec.h before they get here.
#ifndef VETRA_PLATFORM_POSIX_CODE_PAGE_PATHS_H
#define VETRA_PLATFORM_POSIX_CODE_PAGE_PATHS_H

#include <cstddef>
#include <cstdint>

namespace vetra::platform::posix {

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
constexpr char kWideName[] = "UTF-16BE";
#else
constexpr char kWideName[] = "UTF-16LE";
#endif

inline bool IsHighSurrogate(char16_t u) {
    return (u & 0xFC00) == 0xD800;
}
inline bool IsLowSurrogate(char16_t u) {
    return (u & 0xFC00) == 0xDC00;
}

/// MultiByteToWide through iconv alone, for a code page other than 0 and 65001: `length`
/// bytes (not 0) into `out`, which holds `capacity` units; `out` null measures. 0 on any
/// failure, as MultiByteToWide. Uses this thread's cached descriptor.
int32_t IconvToWide(uint32_t codePage, const char* bytes, size_t length, char16_t* out,
                    size_t capacity);

/// WideToMultiByte through iconv alone, on the same terms; `usedDefault`, if not null, is
/// set when a character became the page's question mark (and otherwise left alone).
int32_t IconvFromWide(uint32_t codePage, const char16_t* text, size_t length, char* out,
                      size_t capacity, bool* usedDefault);

struct DecodeTable;
struct EncodeTable;

/// The byte-to-UTF-16 table of `codePage`, or null if the page isn't single-byte and
/// stateless: every byte alone must give exactly one UTF-16 unit or be rejected, and no
/// byte may change how its neighbour reads. Built from iconv on the first call for the
/// page, under a lock; every later call only loads a pointer. The table lives as long as
/// the process.
const DecodeTable* SingleByteDecoder(uint32_t codePage);

/// The UTF-16-to-byte map of `codePage`, or null if the page has no decoding table or a
/// character that iconv writes as more or less than one byte. Built on first use like the
/// decoding table (the first build takes some milliseconds: every UTF-16 unit is asked).
const EncodeTable* SingleByteEncoder(uint32_t codePage);

/// What IconvToWide gives, by the table: one unit a byte, U+FFFD for a rejected one.
int32_t DecodeSingleBytes(const DecodeTable& table, const char* bytes, size_t length, char16_t* out,
                          size_t capacity);

/// What IconvFromWide gives, by the map: a character the page lacks, a whole surrogate pair
/// or a lone surrogate becomes the page's own question mark and sets `*usedDefault`.
int32_t EncodeSingleBytes(const EncodeTable& map, const char16_t* text, size_t length, char* out,
                          size_t capacity, bool* usedDefault);

} // namespace vetra::platform::posix

#endif // VETRA_PLATFORM_POSIX_CODE_PAGE_PATHS_H
