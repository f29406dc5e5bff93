// text_codec.cpp (POSIX) - code page conversion on the C library's iconv, UTF-8 by the
// library's own codec, single-byte pages by tables (single_byte_pages.cpp), and the
// default code page from the locale's codeset.
//
// iconv stops at the first character it cannot convert; the loops here replace that
// character and go on, so that a conversion only fails for want of room or of a converter.
// Measuring converts into a small stack chunk that is counted and reused, never into a
// buffer of the whole output.
#include "platform/text_codec.h"

#include <iconv.h>
#include <langinfo.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <limits>

#include "platform/code_pages.h"
#include "platform/posix/code_page_paths.h"
#include "platform/utf8_codec.h"

namespace vetra::platform {
namespace {

constexpr uint32_t kUtf8 = 65001;
constexpr uint32_t kAscii = 20127;
constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kQuestionMark = u'?';

using posix::IsHighSurrogate;
using posix::IsLowSurrogate;
using posix::kWideName;

inline iconv_t NoDescriptor() {
    return reinterpret_cast<iconv_t>(static_cast<intptr_t>(-1));
}

// iconv_open reads the converter modules' configuration and costs far more than a small
// conversion; the tail search of the file reader makes dozens of those per block. So each
// thread keeps its last descriptor for each direction and only resets its shift state.
class CachedDescriptor {
  public:
    CachedDescriptor() = default;
    CachedDescriptor(const CachedDescriptor&) = delete;
    CachedDescriptor& operator=(const CachedDescriptor&) = delete;
    ~CachedDescriptor() { Close(); }

    // The descriptor for `codePage`, in its initial state, or NoDescriptor().
    iconv_t Get(uint32_t codePage, bool toWide) {
        if (cd_ != NoDescriptor() && codePage_ == codePage) {
            iconv(cd_, nullptr, nullptr, nullptr, nullptr);
            return cd_;
        }
        const char* name = IconvNameOf(codePage);
        if (name == nullptr) return NoDescriptor();
        iconv_t cd = toWide ? iconv_open(kWideName, name) : iconv_open(name, kWideName);
        if (cd == NoDescriptor()) return cd;
        Close();
        cd_ = cd;
        codePage_ = codePage;
        return cd_;
    }

  private:
    void Close() {
        if (cd_ != NoDescriptor()) iconv_close(cd_);
        cd_ = NoDescriptor();
    }

    iconv_t cd_ = NoDescriptor();
    uint32_t codePage_ = 0;
};

thread_local CachedDescriptor t_toWide;
thread_local CachedDescriptor t_fromWide;

// Where iconv writes: the caller's buffer, or, with `out` null, a stack chunk whose
// contents are counted and dropped whenever it fills.
class Sink {
  public:
    Sink(char* out, size_t capacity)
        : measuring_(out == nullptr), base_(measuring_ ? chunk_ : out),
          capacity_(measuring_ ? sizeof chunk_ : capacity), next_(base_), left_(capacity_) {}
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    char** next() { return &next_; }
    size_t* left() { return &left_; }

    // False when the caller's buffer is full; a chunk with nothing in it cannot be
    // emptied either, which stops a converter that would never fit.
    bool MakeRoom() {
        if (!measuring_ || next_ == base_) return false;
        counted_ += static_cast<size_t>(next_ - base_);
        next_ = base_;
        left_ = capacity_;
        return true;
    }

    bool Put(const void* bytes, size_t n) {
        if (left_ < n && (!MakeRoom() || left_ < n)) return false;
        std::memcpy(next_, bytes, n);
        next_ += n;
        left_ -= n;
        return true;
    }

    uint64_t Total() const { return counted_ + static_cast<size_t>(next_ - base_); }

  private:
    bool measuring_;
    char chunk_[1024];
    char* base_;
    size_t capacity_;
    char* next_;
    size_t left_;
    uint64_t counted_ = 0;
};

enum class Stop { kDone, kInvalid, kIncomplete, kFailed };

// Runs iconv until the input is used up, making room as it goes. With `in` null it writes
// what returns a stateful encoding to its initial state. kInvalid and kIncomplete leave
// `*in` at the character concerned.
Stop Pump(iconv_t cd, char** in, size_t* inLeft, Sink& sink) {
    for (;;) {
        if (iconv(cd, in, inLeft, sink.next(), sink.left()) != static_cast<size_t>(-1)) {
            return Stop::kDone;
        }
        switch (errno) {
        case E2BIG:
            if (!sink.MakeRoom()) return Stop::kFailed;
            break;
        case EILSEQ:
            return Stop::kInvalid;
        case EINVAL:
            return Stop::kIncomplete;
        default:
            return Stop::kFailed;
        }
    }
}

int32_t Narrow(uint64_t n) {
    return n > static_cast<uint64_t>(std::numeric_limits<int32_t>::max()) ? 0
                                                                          : static_cast<int32_t>(n);
}

int32_t ToWide(iconv_t cd, const char* bytes, size_t length, char16_t* out, size_t capacity) {
    Sink sink(reinterpret_cast<char*>(out), capacity * sizeof(char16_t));
    char* in = const_cast<char*>(bytes); // iconv's signature; it never writes the input
    size_t inLeft = length;
    while (inLeft != 0) {
        const Stop stop = Pump(cd, &in, &inLeft, sink);
        if (stop == Stop::kDone) break;
        if (stop == Stop::kFailed || !sink.Put(&kReplacement, sizeof kReplacement)) return 0;
        if (stop == Stop::kInvalid) {
            ++in;
            --inLeft;
        } else {
            inLeft = 0; // one replacement for the cut-off character
        }
    }
    if (Pump(cd, nullptr, nullptr, sink) != Stop::kDone) return 0;
    return Narrow(sink.Total() / sizeof(char16_t));
}

int32_t FromWide(iconv_t cd, const char16_t* text, size_t length, char* out, size_t capacity,
                 bool* usedDefault) {
    Sink sink(out, capacity);
    char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text));
    size_t inLeft = length * sizeof(char16_t);
    while (inLeft != 0) {
        const Stop stop = Pump(cd, &in, &inLeft, sink);
        if (stop == Stop::kDone) break;
        if (stop == Stop::kFailed) return 0;
        // The unconvertible character is a whole pair, a lone surrogate, or, when iconv
        // calls the input incomplete, a high surrogate at the very end.
        size_t skip = sizeof(char16_t);
        if (stop == Stop::kIncomplete) {
            skip = inLeft;
        } else if (inLeft >= 2 * sizeof(char16_t)) {
            char16_t pair[2];
            std::memcpy(pair, in, sizeof pair);
            if (IsHighSurrogate(pair[0]) && IsLowSurrogate(pair[1])) skip = sizeof pair;
        }
        in += skip;
        inLeft -= skip;
        // Through the converter, so that the question mark comes out in the page's own
        // bytes (0x6F in EBCDIC) and in the right shift state.
        char* question = reinterpret_cast<char*>(const_cast<char16_t*>(&kQuestionMark));
        size_t questionLeft = sizeof kQuestionMark;
        if (Pump(cd, &question, &questionLeft, sink) != Stop::kDone) return 0;
        if (usedDefault != nullptr) *usedDefault = true;
    }
    if (Pump(cd, nullptr, nullptr, sink) != Stop::kDone) return 0;
    return Narrow(sink.Total());
}

} // namespace

namespace posix {

int32_t IconvToWide(uint32_t codePage, const char* bytes, size_t length, char16_t* out,
                    size_t capacity) {
    iconv_t cd = t_toWide.Get(codePage, true);
    if (cd == NoDescriptor()) return 0;
    return ToWide(cd, bytes, length, out, capacity);
}

int32_t IconvFromWide(uint32_t codePage, const char16_t* text, size_t length, char* out,
                      size_t capacity, bool* usedDefault) {
    iconv_t cd = t_fromWide.Get(codePage, false);
    if (cd == NoDescriptor()) return 0;
    return FromWide(cd, text, length, out, capacity, usedDefault);
}

} // namespace posix

int32_t MultiByteToWide(uint32_t codePage, const char* bytes, int32_t length, char16_t* out,
                        int32_t capacity) {
    if (!HasConversionWork(bytes, length, out, capacity)) return 0;
    if (codePage == 0) codePage = SystemCodePage();
    const size_t n = static_cast<size_t>(length);
    if (codePage == kUtf8) {
        const size_t units =
            capacity == 0 ? utf8::DecodedLength(bytes, n) : utf8::Decode(bytes, n, out, capacity);
        return units == utf8::kNoRoom ? 0 : Narrow(units);
    }
    char16_t* const into = capacity == 0 ? nullptr : out;
    if (const posix::DecodeTable* table = posix::SingleByteDecoder(codePage)) {
        return posix::DecodeSingleBytes(*table, bytes, n, into, static_cast<size_t>(capacity));
    }
    return posix::IconvToWide(codePage, bytes, n, into, static_cast<size_t>(capacity));
}

int32_t WideToMultiByte(uint32_t codePage, const char16_t* text, int32_t length, char* out,
                        int32_t capacity, bool* usedDefault) {
    if (usedDefault != nullptr) *usedDefault = false;
    if (!HasConversionWork(text, length, out, capacity)) return 0;
    if (codePage == 0) codePage = SystemCodePage();
    const size_t n = static_cast<size_t>(length);
    if (codePage == kUtf8) {
        const size_t bytes = capacity == 0 ? utf8::EncodedLength(text, n, usedDefault)
                                           : utf8::Encode(text, n, out, capacity, usedDefault);
        return bytes == utf8::kNoRoom ? 0 : Narrow(bytes);
    }
    char* const into = capacity == 0 ? nullptr : out;
    if (const posix::EncodeTable* map = posix::SingleByteEncoder(codePage)) {
        return posix::EncodeSingleBytes(*map, text, n, into, static_cast<size_t>(capacity),
                                        usedDefault);
    }
    return posix::IconvFromWide(codePage, text, n, into, static_cast<size_t>(capacity),
                                usedDefault);
}

uint32_t SystemCodePage() {
    const uint32_t codePage = CodePageOfCodeset(nl_langinfo(CODESET));
    return (codePage == 0 || codePage == kAscii) ? kUtf8 : codePage;
}

} // namespace vetra::platform
