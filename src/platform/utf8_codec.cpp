// utf8_codec.cpp - strict UTF-8 <-> UTF-16 conversion with a block-at-a-time ASCII path
// (SSE2 registers where the target has them, 64-bit words elsewhere).
//
// Counting and converting share one loop each, instantiated with and without output, so a
// measured length always equals the converted one. No allocation, no system call, no
// dependence on the byte order of the machine: the ASCII tests look at every byte or unit
// of a word alike.
#include "platform/utf8_codec.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>

#if defined(__SSE2__)
#include <emmintrin.h>
#define VETRA_UTF8_SSE2 1
#endif

namespace vetra::platform::utf8 {
namespace {

constexpr char16_t kReplacement = 0xFFFD;

#if !defined(VETRA_UTF8_SSE2)
inline uint64_t Load64(const void* p) {
    uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}
#endif

inline bool IsContinuation(unsigned char b) {
    return (b & 0xC0) == 0x80;
}

inline bool IsLowSurrogate(char16_t u) {
    return (u & 0xFC00) == 0xDC00;
}

#if defined(VETRA_UTF8_SSE2)
// Widens the `count` (below 16) ASCII bytes at `s` into `out`, writing nothing
// past them: two stores of eight or of four units that overlap in the middle.
inline void WidenHead(const unsigned char* s, char16_t* out, unsigned count) {
    // Between words of other scripts the head is a space or two.
    if (count < 4) {
        for (unsigned k = 0; k < count; ++k)
            out[k] = s[k];
        return;
    }
    const __m128i zero = _mm_setzero_si128();
    if (count < 8) {
        for (unsigned at : {0u, count - 4}) {
            int32_t four;
            std::memcpy(&four, s + at, sizeof four);
            const __m128i units = _mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out + at), units);
        }
        return;
    }
    for (unsigned at : {0u, count - 8}) {
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + at));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), _mm_unpacklo_epi8(bytes, zero));
    }
}
#endif

// kWrite false instantiates a pure counter: `out` and `capacity` are then ignored.
template <bool kWrite>
size_t DecodeUnits(const unsigned char* s, size_t n, char16_t* out, size_t capacity) {
    size_t i = 0;
    size_t o = 0;
    auto room = [&](size_t units) { return !kWrite || capacity - o >= units; };
    auto put = [&](char16_t u) {
        if constexpr (kWrite) out[o] = u;
        ++o;
    };
    while (i < n) {
        const unsigned lead = s[i];
        if (lead < 0x80) {
            // Two words per step: on markup-heavy text most 16-byte windows are pure ASCII,
            // and the second load is cheaper than another trip round the outer loop.
            while (n - i >= 16 && room(16)) {
#if defined(VETRA_UTF8_SSE2)
                // Sixteen bytes tested and widened in registers.
                const __m128i window = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
                const unsigned high = unsigned(_mm_movemask_epi8(window));
                if (high != 0) {
                    // The run ends inside the window: its ASCII head is widened here
                    // too, rather than a byte at a time below.
                    const unsigned head = unsigned(__builtin_ctz(high));
                    if constexpr (kWrite) WidenHead(s + i, out + o, head);
                    i += head;
                    o += head;
                    break;
                }
                if constexpr (kWrite) {
                    const __m128i zero = _mm_setzero_si128();
                    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o),
                                     _mm_unpacklo_epi8(window, zero));
                    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + o + 8),
                                     _mm_unpackhi_epi8(window, zero));
                }
#else
                // A local copy cannot alias `out`, which lets the compiler widen it with
                // vector instructions.
                constexpr uint64_t kAnyByteAboveAscii = 0x8080808080808080u;
                unsigned char window[16];
                std::memcpy(window, s + i, sizeof window);
                if ((Load64(window) | Load64(window + 8)) & kAnyByteAboveAscii) break;
                if constexpr (kWrite) {
                    for (size_t k = 0; k < 16; ++k)
                        out[o + k] = window[k];
                }
#endif
                i += 16;
                o += 16;
            }
            // The rest of the run ends within the next 16 bytes, unless capacity stopped
            // the loop above, in which case this runs out of room soon.
            while (i < n && s[i] < 0x80) {
                if (!room(1)) return kNoRoom;
                put(s[i++]);
            }
            continue;
        }

        // Well-formed two- and three-byte sequences, most of the text beyond ASCII, are
        // taken at once; the leads whose second byte has a narrower range (E0, ED), and
        // everything else, go through the checks below.
        if (lead >= 0xC2 && lead <= 0xDF && n - i >= 2 && IsContinuation(s[i + 1])) {
            if (!room(1)) return kNoRoom;
            put(static_cast<char16_t>((lead & 0x1Fu) << 6 | (s[i + 1] & 0x3Fu)));
            i += 2;
            continue;
        }
        if (lead >= 0xE1 && lead <= 0xEF && lead != 0xED && n - i >= 3 &&
            IsContinuation(s[i + 1]) && IsContinuation(s[i + 2])) {
            if (!room(1)) return kNoRoom;
            put(static_cast<char16_t>((lead & 0x0Fu) << 12 | (s[i + 1] & 0x3Fu) << 6 |
                                      (s[i + 2] & 0x3Fu)));
            i += 3;
            continue;
        }

        // `valid` counts the bytes of the well-formed prefix; anything short of a whole
        // sequence is one maximal subpart and yields one U+FFFD.
        size_t valid = 1;
        size_t whole = 0;
        unsigned low = 0x80;
        unsigned high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            whole = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            whole = 3;
            if (lead == 0xE0) low = 0xA0;  // overlong below U+0800
            if (lead == 0xED) high = 0x9F; // surrogates
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            whole = 4;
            if (lead == 0xF0) low = 0x90;  // overlong below U+10000
            if (lead == 0xF4) high = 0x8F; // above U+10FFFF
        }
        if (whole != 0 && i + 1 < n && s[i + 1] >= low && s[i + 1] <= high) {
            valid = 2;
            while (valid < whole && i + valid < n && IsContinuation(s[i + valid]))
                ++valid;
        }
        if (valid < whole || whole == 0) {
            if (!room(1)) return kNoRoom;
            put(kReplacement);
            i += valid;
            continue;
        }

        uint32_t c;
        if (whole == 2) {
            c = (lead & 0x1Fu) << 6 | (s[i + 1] & 0x3Fu);
        } else if (whole == 3) {
            c = (lead & 0x0Fu) << 12 | (s[i + 1] & 0x3Fu) << 6 | (s[i + 2] & 0x3Fu);
        } else {
            c = (lead & 0x07u) << 18 | (s[i + 1] & 0x3Fu) << 12 | (s[i + 2] & 0x3Fu) << 6 |
                (s[i + 3] & 0x3Fu);
        }
        i += whole;
        if (c < 0x10000) {
            if (!room(1)) return kNoRoom;
            put(static_cast<char16_t>(c));
        } else {
            if (!room(2)) return kNoRoom;
            c -= 0x10000;
            put(static_cast<char16_t>(0xD800 | c >> 10));
            put(static_cast<char16_t>(0xDC00 | (c & 0x3FF)));
        }
    }
    return o;
}

template <bool kWrite>
size_t EncodeBytes(const char16_t* t, size_t n, char* out, size_t capacity, bool* replaced) {
    size_t i = 0;
    size_t o = 0;
    auto room = [&](size_t bytes) { return !kWrite || capacity - o >= bytes; };
    auto put = [&](uint32_t byte) {
        if constexpr (kWrite) out[o] = static_cast<char>(byte);
        ++o;
    };
    while (i < n) {
        uint32_t c = t[i];
        if (c < 0x80) {
            while (n - i >= 8 && room(8)) {
#if defined(VETRA_UTF8_SSE2)
                // Eight units tested and narrowed in registers.
                const __m128i window = _mm_loadu_si128(reinterpret_cast<const __m128i*>(t + i));
                const __m128i high = _mm_and_si128(window, _mm_set1_epi16(short(0xFF80)));
                if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF) break;
                if constexpr (kWrite)
                    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + o),
                                     _mm_packus_epi16(window, window));
#else
                constexpr uint64_t kAnyUnitAboveAscii = 0xFF80FF80FF80FF80u;
                char16_t window[8];
                std::memcpy(window, t + i, sizeof window);
                if ((Load64(window) | Load64(window + 4)) & kAnyUnitAboveAscii) break;
                if constexpr (kWrite) {
                    for (size_t k = 0; k < 8; ++k)
                        out[o + k] = static_cast<char>(window[k]);
                }
#endif
                i += 8;
                o += 8;
            }
            while (i < n && t[i] < 0x80) {
                if (!room(1)) return kNoRoom;
                put(t[i++]);
            }
            continue;
        }
        ++i;
        if (c < 0x800) {
            if (!room(2)) return kNoRoom;
            put(0xC0 | c >> 6);
            put(0x80 | (c & 0x3F));
            continue;
        }
        if ((c & 0xF800) == 0xD800) {
            if (c < 0xDC00 && i < n && IsLowSurrogate(t[i])) {
                c = 0x10000 + ((c & 0x3FF) << 10 | (t[i++] & 0x3FFu));
                if (!room(4)) return kNoRoom;
                put(0xF0 | c >> 18);
                put(0x80 | (c >> 12 & 0x3F));
                put(0x80 | (c >> 6 & 0x3F));
                put(0x80 | (c & 0x3F));
                continue;
            }
            c = kReplacement;
            if (replaced != nullptr) *replaced = true;
        }
        if (!room(3)) return kNoRoom;
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    return o;
}

} // namespace

size_t DecodedLength(const char* bytes, size_t length) noexcept {
    return DecodeUnits<false>(reinterpret_cast<const unsigned char*>(bytes), length, nullptr, 0);
}

size_t Decode(const char* bytes, size_t length, char16_t* out, size_t capacity) noexcept {
    return DecodeUnits<true>(reinterpret_cast<const unsigned char*>(bytes), length, out, capacity);
}

size_t EncodedLength(const char16_t* text, size_t length, bool* replaced) noexcept {
    return EncodeBytes<false>(text, length, nullptr, 0, replaced);
}

size_t Encode(const char16_t* text, size_t length, char* out, size_t capacity,
              bool* replaced) noexcept {
    return EncodeBytes<true>(text, length, out, capacity, replaced);
}

} // namespace vetra::platform::utf8
