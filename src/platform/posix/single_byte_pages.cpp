// single_byte_pages.cpp (POSIX) - tables that convert single-byte code pages (windows-125x,
// ISO-8859-x, KOI8, the DOS and EBCDIC pages...) without iconv, at memory speed.
//
// Each page's tables are built from iconv itself on first use, so they give exactly what
// the iconv path gives; a page whose bytes don't each stand alone for one character gets
// no table and stays on iconv. Built once under a lock, then read without one.
#include <iconv.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/code_pages.h"
#include "platform/posix/code_page_paths.h"

namespace vetra::platform::posix {

struct DecodeTable {
    char16_t unit[256];
    bool asciiSame; // bytes under 0x80 read as themselves
};

// A two-level map from UTF-16 unit to byte: the high byte of the unit picks a block of 256
// entries, and every block with nothing in it is block 0. An entry is the byte, or kNone.
struct EncodeTable {
    static constexpr uint16_t kNone = 0x100;
    uint8_t blockOf[256];
    int question;   // the byte the page writes for '?', or -1 if it has none
    bool asciiSame; // units under 0x80 are written as themselves
    std::vector<uint16_t> entries;
};

namespace {

constexpr char16_t kReplacement = 0xFFFD;

inline bool IsSurrogate(char16_t u) {
    return IsHighSurrogate(u) || IsLowSurrogate(u);
}

// ---- Building, once per page ----------------------------------------------

class Converter {
  public:
    Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (ok()) iconv_close(cd_);
    }
    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(static_cast<intptr_t>(-1)); }

    // Converts one piece from the initial state, with the closing shift sequence: the
    // number of bytes out, or -1 when iconv rejects the piece (EILSEQ), or -2 for any
    // other stop (a piece that wants more input, say).
    int Convert(const void* piece, size_t size, char* out, size_t room) {
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        char* in = static_cast<char*>(const_cast<void*>(piece));
        char* next = out;
        if (iconv(cd_, &in, &size, &next, &room) == static_cast<size_t>(-1)) {
            return errno == EILSEQ ? -1 : -2;
        }
        if (iconv(cd_, nullptr, nullptr, &next, &room) == static_cast<size_t>(-1)) return -2;
        return static_cast<int>(next - out);
    }

  private:
    iconv_t cd_;
};

std::unique_ptr<DecodeTable> BuildDecoder(uint32_t codePage) {
    Converter toWide(kWideName, IconvNameOf(codePage));
    if (!toWide.ok()) return nullptr;
    auto table = std::make_unique<DecodeTable>();
    for (int b = 0; b < 256; ++b) {
        const char byte = static_cast<char>(b);
        char16_t out[4];
        const int n = toWide.Convert(&byte, 1, reinterpret_cast<char*>(out), sizeof out);
        if (n == -1) {
            table->unit[b] = kReplacement;
            continue;
        }
        if (n != static_cast<int>(sizeof(char16_t)) || IsSurrogate(out[0])) return nullptr;
        table->unit[b] = out[0];
    }
    // Some converters join neighbours (a base letter and a combining mark in 1255 and
    // 1258): every ordered pair of bytes, read in one run, must read as the bytes alone.
    std::vector<char> pairs;
    pairs.reserve(2 * 256 * 256);
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            pairs.push_back(static_cast<char>(a));
            pairs.push_back(static_cast<char>(b));
        }
    }
    std::vector<char16_t> read(pairs.size());
    if (IconvToWide(codePage, pairs.data(), pairs.size(), read.data(), read.size()) !=
        static_cast<int32_t>(pairs.size())) {
        return nullptr;
    }
    for (size_t i = 0; i < pairs.size(); ++i) {
        if (read[i] != table->unit[static_cast<unsigned char>(pairs[i])]) return nullptr;
    }
    table->asciiSame = true;
    for (int b = 0; b < 0x80; ++b)
        table->asciiSame = table->asciiSame && table->unit[b] == b;
    return table;
}

std::unique_ptr<EncodeTable> BuildEncoder(uint32_t codePage) {
    Converter fromWide(IconvNameOf(codePage), kWideName);
    if (!fromWide.ok()) return nullptr;
    std::vector<uint16_t> flat(0x10000, EncodeTable::kNone);
    for (uint32_t u = 0; u < 0x10000; ++u) {
        const char16_t unit = static_cast<char16_t>(u);
        if (IsSurrogate(unit)) continue; // pairs and lone halves are never a single byte
        char out[16];
        const int n = fromWide.Convert(&unit, sizeof unit, out, sizeof out);
        if (n == -1) continue;
        if (n != 1) return nullptr;
        flat[u] = static_cast<unsigned char>(out[0]);
    }
    auto map = std::make_unique<EncodeTable>();
    map->entries.assign(256, EncodeTable::kNone); // block 0: nothing
    for (int high = 0; high < 256; ++high) {
        const uint16_t* block = &flat[static_cast<size_t>(high) * 256];
        bool any = false;
        for (int low = 0; low < 256 && !any; ++low)
            any = block[low] != EncodeTable::kNone;
        map->blockOf[high] = 0;
        if (!any) continue;
        map->blockOf[high] = static_cast<uint8_t>(map->entries.size() / 256);
        map->entries.insert(map->entries.end(), block, block + 256);
    }
    map->question = flat[u'?'] == EncodeTable::kNone ? -1 : flat[u'?'];
    map->asciiSame = true;
    for (uint32_t u = 0; u < 0x80; ++u)
        map->asciiSame = map->asciiSame && flat[u] == u;
    return map;
}

// ---- One slot per known page ----------------------------------------------

// A slot holds null until the page was looked at, then its table or kNoTable.
template <typename Table> class Slots {
  public:
    template <typename Build> const Table* Get(uint32_t codePage, Build build) {
        const int i = IndexOfCodePage(codePage);
        if (i < 0) return nullptr;
        const Table* table = slots_[i].load(std::memory_order_acquire);
        if (table == nullptr) {
            std::lock_guard<std::mutex> lock(mutex_);
            table = slots_[i].load(std::memory_order_relaxed);
            if (table == nullptr) {
                table = build(codePage).release();
                if (table == nullptr) table = NoTable();
                slots_[i].store(table, std::memory_order_release);
            }
        }
        return table == NoTable() ? nullptr : table;
    }

  private:
    static const Table* NoTable() {
        static const Table none{};
        return &none;
    }

    std::atomic<const Table*> slots_[kMaxKnownCodePages] = {};
    std::mutex mutex_;
};

Slots<DecodeTable> g_decoders;
Slots<EncodeTable> g_encoders;

} // namespace

const DecodeTable* SingleByteDecoder(uint32_t codePage) {
    return g_decoders.Get(codePage, BuildDecoder);
}

const EncodeTable* SingleByteEncoder(uint32_t codePage) {
    return g_encoders.Get(codePage, [](uint32_t page) {
        return SingleByteDecoder(page) != nullptr ? BuildEncoder(page) : nullptr;
    });
}

// ---- Converting -------------------------------------------------------------

// Documents are mostly ASCII markup: where a page reads ASCII as itself, blocks of 16 bytes
// (8 units) without a high bit are widened (narrowed) in SSE2 registers, and only the other
// blocks go through the table.
int32_t DecodeSingleBytes(const DecodeTable& table, const char* bytes, size_t length, char16_t* out,
                          size_t capacity) {
    if (out == nullptr) return static_cast<int32_t>(length);
    if (capacity < length) return 0;
    const auto* in = reinterpret_cast<const unsigned char*>(bytes);
    size_t i = 0;
#if defined(__SSE2__)
    if (table.asciiSame) {
        const __m128i zero = _mm_setzero_si128();
        for (; i + 16 <= length; i += 16) {
            const __m128i window = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
            if (_mm_movemask_epi8(window) == 0) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i),
                                 _mm_unpacklo_epi8(window, zero));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 8),
                                 _mm_unpackhi_epi8(window, zero));
            } else {
                for (size_t j = i; j < i + 16; ++j)
                    out[j] = table.unit[in[j]];
            }
        }
    }
#endif
    for (; i < length; ++i)
        out[i] = table.unit[in[i]];
    return static_cast<int32_t>(length);
}

namespace {

// Whether the 8 units at `text` are all under 0x80.
inline bool AsciiBlock(const char16_t* text) {
#if defined(__SSE2__)
    const __m128i window = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    const __m128i high = _mm_and_si128(window, _mm_set1_epi16(static_cast<short>(0xFF80)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) == 0xFFFF;
#else
    uint16_t any = 0;
    for (int k = 0; k < 8; ++k)
        any |= text[k];
    return any < 0x80;
#endif
}

inline void NarrowBlock(const char16_t* text, char* out) {
#if defined(__SSE2__)
    const __m128i window = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(window, window));
#else
    for (int k = 0; k < 8; ++k)
        out[k] = static_cast<char>(text[k]);
#endif
}

// The number of bytes, or 0 where a character can't be replaced. With kWrite, `out` has
// room for all of them (the caller measured first when it wasn't sure).
template <bool kWrite>
int32_t Encode(const EncodeTable& map, const char16_t* text, size_t length, char* out,
               bool* usedDefault) {
    const uint16_t* entries = map.entries.data();
    size_t n = 0;
    size_t i = 0;
    while (i < length) {
        // Up to the end of the next block of 8, unit by unit, unless it is all ASCII.
        const size_t stop = i + 8 <= length ? i + 8 : length;
        if (map.asciiSame && stop == i + 8 && AsciiBlock(text + i)) {
            if (kWrite) NarrowBlock(text + i, out + n);
            n += 8;
            i += 8;
            continue;
        }
        for (; i < stop; ++i) {
            const char16_t u = text[i];
            uint16_t byte = entries[map.blockOf[u >> 8] * 256u + (u & 0xFFu)];
            if (byte == EncodeTable::kNone) {
                // Without a question mark of its own the page can't replace anything, and
                // iconv's way fails the conversion there too.
                if (map.question < 0) return 0;
                byte = static_cast<uint16_t>(map.question);
                if (usedDefault != nullptr) *usedDefault = true;
                if (IsHighSurrogate(u) && i + 1 < length && IsLowSurrogate(text[i + 1])) ++i;
            }
            if (kWrite) out[n] = static_cast<char>(byte);
            ++n;
        }
    }
    return static_cast<int32_t>(n);
}

} // namespace

int32_t EncodeSingleBytes(const EncodeTable& map, const char16_t* text, size_t length, char* out,
                          size_t capacity, bool* usedDefault) {
    if (out == nullptr) return Encode<false>(map, text, length, out, usedDefault);
    // Every unit gives at most one byte; only a room smaller than the text needs a count.
    if (capacity < length) {
        const int32_t n = Encode<false>(map, text, length, out, nullptr);
        if (n == 0 || static_cast<size_t>(n) > capacity) return 0;
    }
    return Encode<true>(map, text, length, out, usedDefault);
}

} // namespace vetra::platform::posix
