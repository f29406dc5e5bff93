// text.cpp - UTF-8 <-> UTF-16 for the command line: short texts, so plain
// loops, strict about what they accept.
#include "text.h"

namespace cli {

namespace {

void PutUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += char(c);
    } else if (c < 0x800) {
        out += char(0xC0 | (c >> 6));
        out += char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += char(0xE0 | (c >> 12));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    } else {
        out += char(0xF0 | (c >> 18));
        out += char(0x80 | ((c >> 12) & 0x3F));
        out += char(0x80 | ((c >> 6) & 0x3F));
        out += char(0x80 | (c & 0x3F));
    }
}

void PutUtf16(Wide& out, char32_t c) {
    if (c < 0x10000) {
        out += vtchar(c);
    } else {
        out += vtchar(0xD800 | ((c - 0x10000) >> 10));
        out += vtchar(0xDC00 | (c & 0x3FF));
    }
}

} // namespace

std::string ToUtf8(const vtchar* text, size_t length) {
    std::string out;
    out.reserve(length);
    for (size_t i = 0; i < length; ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < length && text[i + 1] >= 0xDC00 &&
            text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (char32_t(text[++i]) - 0xDC00);
        } else if (c >= 0xD800 && c < 0xE000) {
            c = 0xFFFD;
        }
        PutUtf8(out, c);
    }
    return out;
}

Wide ToWide(const std::string& text) {
    Wide out;
    out.reserve(text.size());
    const auto* p = reinterpret_cast<const unsigned char*>(text.data());
    const size_t n = text.size();
    for (size_t i = 0; i < n;) {
        const unsigned char b = p[i];
        const int more = b < 0x80   ? 0
                         : b < 0xC2 ? -1
                         : b < 0xE0 ? 1
                         : b < 0xF0 ? 2
                         : b < 0xF5 ? 3
                                    : -1;
        char32_t c = more == 0 ? b : more == 1 ? b & 0x1F : more == 2 ? b & 0x0F : b & 0x07;
        size_t j = i + 1;
        bool ok = more >= 0;
        for (int k = 0; ok && k < more; ++k) {
            ok = j < n && (p[j] & 0xC0) == 0x80;
            if (ok) c = (c << 6) | (p[j++] & 0x3F);
        }
        // Overlong forms, surrogates and values beyond U+10FFFF are refused;
        // reading goes on at the byte that broke the sequence.
        static const char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
        if (!ok || c < kMin[more < 0 ? 0 : more] || (c >= 0xD800 && c < 0xE000) || c > 0x10FFFF)
            c = 0xFFFD;
        PutUtf16(out, c);
        i = j;
    }
    return out;
}

} // namespace cli
