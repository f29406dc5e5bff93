// text_conversion.cpp - ConvertText's seven ways between two named encodings,
// the UTF-8 test of a block, and the search for a character cut off by a
// block's end.
//
// Sections: the platform table; the loose lead-byte rule; the hand-made
// UTF-32 ways; ConvertText; TestUtf8Block; MeasureBrokenTail.
// Every other page goes through the platform layer; this file never talks to
// the system itself.
#include "text/text_conversion.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>

#include "platform/text_codec.h"
#include "text/charset_names.h"

namespace vetra::text {
namespace {

constexpr int32_t kUtf16 = 1200;
constexpr int32_t kUtf8 = 65001;
constexpr uint32_t kQuestion = u'?';

// ---- The platform table ----------------------------------------------------

constexpr ConversionCalls kPlatformCalls = {
    platform::MultiByteToWide,
    platform::WideToMultiByte,
    platform::SystemCodePage,
};
ConversionCalls g_calls = kPlatformCalls;

int32_t ResolvedPage(int32_t codePage) {
    return codePage == 0 ? static_cast<int32_t>(g_calls.systemCodePage()) : codePage;
}

// ---- The loose lead-byte rule ---------------------------------------------

// A byte with the top bit set leads 1, 2 or 3 following bytes by bits 5, 4
// and 3 alone; with all three set it leads nothing. Overlong forms, surrogate
// values and stray continuation bytes in a lead position all pass.
struct LooseChar {
    int32_t next;   // behind the character; if not complete, the offending byte
    uint32_t value; // when complete
    bool complete;
};

LooseChar ReadLoose(const unsigned char* bytes, int32_t i, int32_t length) {
    const unsigned char lead = bytes[i];
    if (lead < 0x80) return {i + 1, lead, true};
    const int followers = (lead & 0x20) == 0   ? 1
                          : (lead & 0x10) == 0 ? 2
                          : (lead & 0x08) == 0 ? 3
                                               : 0;
    if (followers == 0) return {i, 0, false};
    uint32_t value = lead & (0x3Fu >> followers);
    int32_t j = i + 1;
    for (int k = 0; k < followers; ++k, ++j) {
        if (j == length || (bytes[j] & 0x80) == 0) return {j, 0, false};
        value = value << 6 | (bytes[j] & 0x3Fu);
    }
    return {j, value, true};
}

// ---- The hand-made UTF-32 ways --------------------------------------------

// Counts the units of a conversion, and writes them when it has a destination;
// a destination too small fails the whole conversion rather than cut it.
template <typename Unit> class UnitSink {
  public:
    UnitSink(void* dest, int32_t capacity) : dest_(static_cast<char*>(dest)), capacity_(capacity) {}

    void Put(uint32_t value) {
        if (dest_ != nullptr && count_ < capacity_) {
            const Unit unit = static_cast<Unit>(value);
            std::memcpy(dest_ + count_ * sizeof(Unit), &unit, sizeof unit);
        }
        ++count_;
    }

    int32_t Result() const {
        if (count_ > std::numeric_limits<int32_t>::max()) return 0;
        if (dest_ != nullptr && count_ > capacity_) return 0;
        return static_cast<int32_t>(count_);
    }

  private:
    char* dest_;
    int64_t capacity_;
    int64_t count_ = 0;
};

// Sources come from callers' byte buffers, so units are read without
// assuming their alignment.
template <typename Unit> uint32_t UnitAt(const void* source, int32_t i) {
    Unit unit;
    std::memcpy(&unit, static_cast<const char*>(source) + static_cast<size_t>(i) * sizeof(Unit),
                sizeof unit);
    return unit;
}

// The value is not checked: surrogates go out as they are, and values above
// U+10FFFF lose their high bits.
int32_t Utf32ToUtf8(const void* source, int32_t length, void* dest, int32_t capacity) {
    UnitSink<uint8_t> out(dest, capacity);
    for (int32_t i = 0; i < length; ++i) {
        const uint32_t v = UnitAt<uint32_t>(source, i);
        if (v < 0x80) {
            out.Put(v);
        } else if (v < 0x800) {
            out.Put(0xC0 | (v >> 6 & 0x1F));
            out.Put(0x80 | (v & 0x3F));
        } else if (v < 0x10000) {
            out.Put(0xE0 | (v >> 12 & 0xF));
            out.Put(0x80 | (v >> 6 & 0x3F));
            out.Put(0x80 | (v & 0x3F));
        } else {
            out.Put(0xF0 | (v >> 18 & 7));
            out.Put(0x80 | (v >> 12 & 0x3F));
            out.Put(0x80 | (v >> 6 & 0x3F));
            out.Put(0x80 | (v & 0x3F));
        }
    }
    return out.Result();
}

int32_t Utf32ToUtf16(const void* source, int32_t length, void* dest, int32_t capacity) {
    UnitSink<char16_t> out(dest, capacity);
    for (int32_t i = 0; i < length; ++i) {
        const uint32_t v = UnitAt<uint32_t>(source, i);
        if (v < 0x10000) {
            out.Put(v);
        } else {
            out.Put(0xD800 | ((v - 0x10000) >> 10 & 0x3FF));
            out.Put(0xDC00 | (v & 0x3FF));
        }
    }
    return out.Result();
}

// Any surrogate, high or low, pairs with the unit after it, whatever that is;
// only the text's end or a null unit leaves it alone, as '?'.
int32_t Utf16ToUtf32(const void* source, int32_t length, void* dest, int32_t capacity) {
    UnitSink<uint32_t> out(dest, capacity);
    for (int32_t i = 0; i < length; ++i) {
        const uint32_t u1 = UnitAt<char16_t>(source, i);
        if ((u1 & 0xF800) != 0xD800) {
            out.Put(u1);
            continue;
        }
        const uint32_t u2 = i + 1 < length ? UnitAt<char16_t>(source, i + 1) : 0;
        if (u2 == 0) {
            out.Put(kQuestion);
            continue;
        }
        out.Put(((u1 & 0x3FF) << 10 | (u2 & 0x3FF)) + 0x10000);
        ++i;
    }
    return out.Result();
}

// A bad sequence becomes one '?'; the byte that broke it starts the next one.
int32_t Utf8ToUtf32(const void* source, int32_t length, void* dest, int32_t capacity) {
    const auto* bytes = static_cast<const unsigned char*>(source);
    UnitSink<uint32_t> out(dest, capacity);
    for (int32_t i = 0; i < length;) {
        const LooseChar c = ReadLoose(bytes, i, length);
        out.Put(c.complete ? c.value : kQuestion);
        i = c.next == i ? i + 1 : c.next;
    }
    return out.Result();
}

// ---- ConvertText -----------------------------------------------------------

int32_t FromWide(int32_t toPage, const char16_t* text, int32_t length, void* dest, int32_t capacity,
                 uint32_t& lossy) {
    toPage = ResolvedPage(toPage);
    bool used = false;
    const int32_t n =
        g_calls.fromWide(static_cast<uint32_t>(toPage), text, length, static_cast<char*>(dest),
                         capacity, CodePageHidesLoss(toPage) ? nullptr : &used);
    lossy = (n != 0 && used) ? 1 : 0; // a failed call's flag means nothing
    return n;
}

int32_t ToWide(int32_t fromPage, const void* source, int32_t length, void* dest, int32_t capacity) {
    return g_calls.toWide(static_cast<uint32_t>(ResolvedPage(fromPage)),
                          static_cast<const char*>(source), length, static_cast<char16_t*>(dest),
                          capacity);
}

int32_t Convert(TextConversion& c, int32_t from, int32_t to, void* dest) {
    const bool measuring = dest == nullptr || c.destCapacity == 0;
    const int32_t capacity = measuring ? 0 : c.destCapacity;
    if (measuring) dest = nullptr;
    if (c.sourceLength <= 0) return 0;

    if (from == CodePageUtf32) {
        if (to == kUtf8) return Utf32ToUtf8(c.source, c.sourceLength, dest, capacity);
        if (to == kUtf16) return Utf32ToUtf16(c.source, c.sourceLength, dest, capacity);
        return 0;
    }
    if (from == kUtf16) {
        if (to == CodePageUtf32) return Utf16ToUtf32(c.source, c.sourceLength, dest, capacity);
        // The converter gets exactly the record's capacity, never a byte more:
        // a correctly measured destination ends where the text does, so no
        // room is missing, and a mis-measured call fails instead of writing
        // past the caller's buffer.
        return FromWide(to, static_cast<const char16_t*>(c.source), c.sourceLength, dest, capacity,
                        c.lossy);
    }
    if (to == kUtf16) return ToWide(from, c.source, c.sourceLength, dest, capacity);
    if (to == CodePageUtf32) {
        return from == kUtf8 ? Utf8ToUtf32(c.source, c.sourceLength, dest, capacity) : 0;
    }

    // Neither side is UTF-16: through wide text. No page gives more UTF-16
    // units than it has bytes.
    std::unique_ptr<char16_t[]> wide(new char16_t[static_cast<size_t>(c.sourceLength)]);
    const int32_t units = ToWide(from, c.source, c.sourceLength, wide.get(), c.sourceLength);
    if (units == 0) return 0;
    return FromWide(to, wide.get(), units, dest, capacity, c.lossy);
}

} // namespace

int32_t ConvertText(TextConversion& conversion, void* dest, const wchar* toName) {
    if (toName != nullptr) conversion.toEncoding = toName;
    const int32_t to = std::max(CodePageFromName(conversion.toEncoding.c_str()), 0);
    const int32_t from = std::max(CodePageFromName(conversion.fromEncoding.c_str()), 0);
    conversion.lossy = 0;
    conversion.destCapacity = Convert(conversion, from, to, dest);
    return conversion.destCapacity;
}

ConversionCalls SwapConversionCalls(const ConversionCalls* calls) {
    const ConversionCalls previous = g_calls;
    g_calls = calls != nullptr ? *calls : kPlatformCalls;
    return previous;
}

// ---- TestUtf8Block ---------------------------------------------------------

bool TestUtf8Block(const unsigned char* bytes, int32_t length, bool moreFollows) {
    for (int32_t i = 0; i < length;) {
        const LooseChar c = ReadLoose(bytes, i, length);
        // A fault on the block's last byte, or a sequence the end cuts off,
        // may be completed by the block that follows.
        if (!c.complete) return moreFollows && c.next >= length - 1;
        i = c.next;
    }
    return true;
}

// ---- MeasureBrokenTail -----------------------------------------------------

namespace {

// The pages whose characters can take more than one byte; every other page
// is read a byte at a time and never has a broken tail.
constexpr int32_t kMultiBytePages[] = {
    874,   932,   936,   949,   950,   1361,  10001, 10002, 10003, 10008, 10021, 20000,
    20001, 20002, 20003, 20004, 20833, 20932, 20936, 20949, 50220, 50221, 50222, 50225,
    50227, 50930, 50931, 50933, 50935, 50937, 50939, 51932, 51936, 51949, 52936, 54936,
};

constexpr bool Ascending() {
    for (size_t i = 1; i < std::size(kMultiBytePages); ++i) {
        if (kMultiBytePages[i - 1] >= kMultiBytePages[i]) return false;
    }
    return true;
}
static_assert(Ascending(), "searched by halves");

// The first byte is never tried: a block whose only clean boundary is its
// start gives itself back whole.
int32_t Utf8BrokenTail(const unsigned char* bytes, int32_t length) {
    for (int32_t i = length - 1; i > 0; --i) {
        const LooseChar c = ReadLoose(bytes, i, length);
        if (c.complete) return length - c.next;
    }
    return length;
}

constexpr int32_t kTailBytes = 40;
constexpr int32_t kTailUnits = 80;
constexpr int kAgreeingTails = 3;

// A tail is trusted once three of them convert to the end of the block's own
// conversion; then the first split of it whose two halves convert to the same
// text marks a character boundary, and what lies behind it is given back.
bool SearchBrokenTail(int32_t page, const char* bytes, int32_t length, int32_t& tail) {
    std::unique_ptr<char16_t[]> whole(new char16_t[static_cast<size_t>(length)]);
    const int32_t wholeUnits = ToWide(page, bytes, length, whole.get(), length);
    const char16_t* wholeEnd = whole.get() + wholeUnits;

    char16_t tailText[kTailUnits];
    char16_t splitText[kTailUnits];
    int agreeing = 0;
    for (int32_t n = 1; n <= std::min(kTailBytes, length); ++n) {
        const char* start = bytes + length - n;
        const int32_t units = ToWide(page, start, n, tailText, kTailUnits);
        if (units == 0 || units > wholeUnits ||
            !std::equal(tailText, tailText + units, wholeEnd - units)) {
            continue;
        }
        if (++agreeing < kAgreeingTails) continue;
        for (int32_t k = 1; k < n; ++k) {
            const int32_t a = ToWide(page, start, k, splitText, kTailUnits);
            if (a == 0 || a >= units) continue;
            const int32_t b = ToWide(page, start + k, n - k, splitText + a, kTailUnits - a);
            if (b == 0 || a + b != units) continue;
            if (std::equal(splitText, splitText + units, tailText)) {
                tail = n - k;
                return true;
            }
        }
    }
    return false;
}

} // namespace

bool MeasureBrokenTail(TextConversion& conversion, int32_t& tail) {
    tail = 0;
    const int32_t length = conversion.sourceLength;
    if (length <= 0) return true;
    int32_t page = CodePageFromName(conversion.fromEncoding.c_str());
    if (page == kUtf16) {
        const uint32_t last = UnitAt<char16_t>(conversion.source, length - 1);
        if ((last & 0xF800) == 0xD800) tail = 2;
        return true;
    }
    // The system's default is usually UTF-8 on Linux, which no byte-wise
    // reading would keep whole. A name the table lacks (-1) counts as a
    // single-byte page.
    if (page == 0) page = ResolvedPage(0);
    const auto* bytes = static_cast<const unsigned char*>(conversion.source);
    if (page == kUtf8) {
        tail = Utf8BrokenTail(bytes, length);
        return true;
    }
    if (!std::binary_search(std::begin(kMultiBytePages), std::end(kMultiBytePages), page)) {
        return true;
    }
    return SearchBrokenTail(page, static_cast<const char*>(conversion.source), length, tail);
}

} // namespace vetra::text
