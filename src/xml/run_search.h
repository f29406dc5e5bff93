// run_search.h - finds the next of a few given characters in a
// null-terminated UTF-16 text, eight units at a time where SSE2 is there.
//
// The scanners pass over long runs (text, attribute values, comments) with
// it. Loads are aligned, so they never cross into a page the text doesn't
// touch; they may read before the start or past the NUL within an aligned
// block, which the address sanitizer can't tell from an overrun, so it is
// told to look away.
#ifndef VETRA_XML_RUN_SEARCH_H
#define VETRA_XML_RUN_SEARCH_H

#include <cstdint>

#include "xml/xml_types.h"

#if defined(__SSE2__) && (defined(__GNUC__) || defined(__clang__))
#include <emmintrin.h>
#define VETRA_RUN_SEARCH_SSE2 1
#endif

#if defined(__clang__) || defined(__GNUC__)
#define VETRA_NO_ASAN __attribute__((no_sanitize_address))
#define VETRA_NO_INLINE __attribute__((noinline))
#define VETRA_FLATTEN __attribute__((flatten)) // everything it calls is inlined
#define VETRA_ALWAYS_INLINE __attribute__((always_inline)) inline
#else
#define VETRA_NO_ASAN
#define VETRA_NO_INLINE
#define VETRA_FLATTEN
#define VETRA_ALWAYS_INLINE inline
#endif

namespace vetra::xml {

/// The first offset from `i` whose character is NUL or one of `chars`.
template <typename... Chars>
VETRA_NO_ASAN inline int32_t FindAny(const wchar* text, int32_t i, Chars... chars) {
    static_assert(sizeof...(Chars) >= 1, "at least one character besides the NUL");
#if defined(VETRA_RUN_SEARCH_SSE2)
    // The first block starts at the 16-byte boundary at or before text + i;
    // the hits in front of i are masked off.
    const auto at = reinterpret_cast<uintptr_t>(text + i);
    const unsigned skipped = unsigned(at & 15);
    auto block = reinterpret_cast<const __m128i*>(at - skipped);
    const __m128i zero = _mm_setzero_si128();
    // (No lambda: the sanitizer would instrument its loads.)
    unsigned mask = 0xFFFFu << skipped;
    for (;; ++block) {
        const __m128i v = _mm_load_si128(block);
        __m128i hit = _mm_cmpeq_epi16(v, zero);
        ((hit = _mm_or_si128(hit, _mm_cmpeq_epi16(v, _mm_set1_epi16(short(chars))))), ...);
        mask &= unsigned(_mm_movemask_epi8(hit));
        if (mask != 0) break;
        mask = 0xFFFFu;
    }
    const auto found = reinterpret_cast<const char*>(block) + __builtin_ctz(mask);
    return int32_t((found - reinterpret_cast<const char*>(text)) / 2);
#else
    for (;; ++i) {
        const wchar u = text[i];
        if (u == 0 || ((u == wchar(chars)) || ...)) return i;
    }
#endif
}

/// The first offset in [i, end) whose character is one of `chars`, or `end`.
/// Reads nothing at or beyond `end`, but may read up to eight units in front
/// of i, never in front of `text`. Each character costs a comparison per
/// eight units: pass each once.
template <typename... Chars>
VETRA_ALWAYS_INLINE int32_t FindAnyBefore(const wchar* text, int32_t i, int32_t end,
                                          Chars... chars) {
    static_assert(sizeof...(Chars) >= 1, "at least one character");
#if defined(VETRA_RUN_SEARCH_SSE2)
    auto hits = [&](int32_t at) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at));
        __m128i hit = _mm_setzero_si128();
        ((hit = _mm_or_si128(hit, _mm_cmpeq_epi16(v, _mm_set1_epi16(short(chars))))), ...);
        return hit;
    };
    if (end - i < 8 && end >= 8 && i < end) {
        // A short range is searched in the block that ends where it ends;
        // the units in front of i, read from the text before it, don't count.
        const unsigned mask =
            unsigned(_mm_movemask_epi8(hits(end - 8))) & (0xFFFFu << (2 * (i - (end - 8))));
        return mask != 0 ? end - 8 + (__builtin_ctz(mask) >> 1) : end;
    }
    if (end - i >= 8) {
        // Sixteen units a step, their two hit vectors packed to one bit per unit.
        for (; i + 16 <= end; i += 16) {
            const int mask = _mm_movemask_epi8(_mm_packs_epi16(hits(i), hits(i + 8)));
            if (mask != 0) return i + __builtin_ctz(unsigned(mask));
        }
        if (i + 8 <= end) {
            const int mask = _mm_movemask_epi8(hits(i));
            if (mask != 0) return i + (__builtin_ctz(unsigned(mask)) >> 1);
            i += 8;
        }
        // The last few units in a block that ends at `end`: its units in
        // front of i were searched already.
        if (i < end) {
            const int mask = _mm_movemask_epi8(hits(end - 8));
            return mask != 0 ? end - 8 + (__builtin_ctz(unsigned(mask)) >> 1) : end;
        }
        return end;
    }
#endif
    for (; i < end; ++i) {
        const wchar u = text[i];
        if (((u == wchar(chars)) || ...)) return i;
    }
    return end;
}

} // namespace vetra::xml

#endif // VETRA_XML_RUN_SEARCH_H
