// wide_format.cpp - walks a UTF-16 format: strings and characters are copied here, with width
// and precision counted in UTF-16 units; every numeric conversion is rebuilt as a narrow
// directive ("%-08.3lld") and handed to snprintf with an argument of the matching type.
//
// A conversion is read as: flags, width (digits or '*'), precision ('.' then digits or '*'),
// length modifier, type. Whatever does not fit that pattern refuses the format.
#include "host/wide_format.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/utf8_codec.h"

namespace vetra::host {
namespace {

enum class Length { None, Hh, H, L, Ll, J, Z, T, LongDouble, W, I, I32, I64 };

struct Conversion {
    std::string flags; // any of "-+ #0", in the order written
    int width = -1;    // -1: none
    int precision = -1;
    Length length = Length::None;
    char16_t type = 0;
};

// A va_list inside a struct can be passed on by reference, on every ABI.
struct Arguments {
    va_list list;
};

// Reads a width or precision: digits, or '*' for the next int argument. False on overflow.
bool ReadCount(const char16_t*& p, Arguments& args, int* value) {
    if (*p == u'*') {
        ++p;
        *value = va_arg(args.list, int);
        return true;
    }
    long long count = 0;
    for (; *p >= u'0' && *p <= u'9'; ++p) {
        count = count * 10 + (*p - u'0');
        if (count > INT_MAX) return false;
    }
    *value = static_cast<int>(count);
    return true;
}

Length ReadLength(const char16_t*& p) {
    switch (*p) {
    case u'h':
        if (*++p != u'h') return Length::H;
        ++p;
        return Length::Hh;
    case u'l':
        if (*++p != u'l') return Length::L;
        ++p;
        return Length::Ll;
    case u'I':
        if (p[1] == u'3' && p[2] == u'2') {
            p += 3;
            return Length::I32;
        }
        if (p[1] == u'6' && p[2] == u'4') {
            p += 3;
            return Length::I64;
        }
        ++p;
        return Length::I;
    case u'j':
        ++p;
        return Length::J;
    case u'z':
        ++p;
        return Length::Z;
    case u't':
        ++p;
        return Length::T;
    case u'L':
        ++p;
        return Length::LongDouble;
    case u'w':
        ++p;
        return Length::W;
    default:
        return Length::None;
    }
}

// Reads one conversion behind its '%'. False if the format breaks off or a number overflows.
bool ReadConversion(const char16_t*& p, Arguments& args, Conversion& c) {
    for (; *p != 0 && *p < 0x80 && std::strchr("-+ #0", static_cast<char>(*p)); ++p) {
        c.flags += static_cast<char>(*p);
    }
    if (!ReadCount(p, args, &c.width)) return false;
    if (c.width < 0) {
        // A negative '*' width means left alignment.
        if (c.width == INT_MIN) return false;
        c.flags += '-';
        c.width = -c.width;
    }
    if (*p == u'.') {
        ++p;
        if (!ReadCount(p, args, &c.precision)) return false;
        if (c.precision < 0) c.precision = -1; // a negative '*' precision counts as none
    }
    c.length = ReadLength(p);
    c.type = *p;
    if (c.type == 0) return false;
    ++p;
    return true;
}

void AppendPadded(std::u16string& out, const Conversion& c, const char16_t* text, size_t n) {
    const size_t pad = c.width > 0 && static_cast<size_t>(c.width) > n ? c.width - n : 0;
    const bool left = c.flags.find('-') != std::string::npos;
    if (!left) out.append(pad, u' ');
    out.append(text, n);
    if (left) out.append(pad, u' ');
}

// A precision may stop inside a UTF-8 sequence; the split character is left out whole.
size_t WithoutSplitCharacter(const char* s, size_t n) {
    size_t lead = n;
    while (lead > 0 && n - lead < 3 && (static_cast<unsigned char>(s[lead - 1]) & 0xC0) == 0x80) {
        --lead;
    }
    if (lead == 0) return n;
    const unsigned char b = static_cast<unsigned char>(s[lead - 1]);
    const size_t need = b >= 0xF0 ? 4 : b >= 0xE0 ? 3 : b >= 0xC0 ? 2 : 1;
    return need > n - lead + 1 ? lead - 1 : n;
}

void AppendNarrowString(std::u16string& out, const Conversion& c, const char* s) {
    if (s == nullptr) s = "(null)";
    size_t n;
    if (c.precision < 0) {
        n = std::strlen(s);
    } else {
        n = ::strnlen(s, static_cast<size_t>(c.precision));
        if (n == static_cast<size_t>(c.precision)) n = WithoutSplitCharacter(s, n);
    }
    std::u16string text(n, u'\0');
    text.resize(platform::utf8::Decode(s, n, text.data(), n));
    AppendPadded(out, c, text.data(), text.size());
}

void AppendWideString(std::u16string& out, const Conversion& c, const char16_t* s) {
    if (s == nullptr) s = u"(null)";
    size_t n = 0;
    const size_t limit = c.precision < 0 ? SIZE_MAX : static_cast<size_t>(c.precision);
    while (n < limit && s[n] != 0)
        ++n;
    // Never split a surrogate pair, and never look past the precision to see whether the
    // last unit starts one.
    if (n == limit && n > 0 && s[n - 1] >= 0xD800 && s[n - 1] <= 0xDBFF) --n;
    AppendPadded(out, c, s, n);
}

template <typename T> bool AppendPrinted(std::u16string& out, const std::string& spec, T value) {
    char small[128];
    const int n = std::snprintf(small, sizeof small, spec.c_str(), value);
    if (n < 0) return false;
    if (static_cast<size_t>(n) < sizeof small) {
        out.append(small, small + n);
        return true;
    }
    std::string large(static_cast<size_t>(n), '\0');
    std::snprintf(large.data(), large.size() + 1, spec.c_str(), value);
    out.append(large.begin(), large.end());
    return true;
}

// The narrow directive of a numeric conversion ("%+5.2f"), with the length modifier that matches
// the type the argument is read as.
std::string NarrowSpec(const Conversion& c, const char* modifier) {
    std::string spec = "%" + c.flags;
    if (c.width >= 0) spec += std::to_string(c.width);
    if (c.precision >= 0) spec += "." + std::to_string(c.precision);
    spec += modifier;
    spec += static_cast<char>(c.type);
    return spec;
}

bool AppendInteger(std::u16string& out, const Conversion& c, Arguments& args) {
    const bool isSigned = c.type == u'd' || c.type == u'i';
    switch (c.length) {
    case Length::None:
    case Length::I32:
        return isSigned ? AppendPrinted(out, NarrowSpec(c, ""), va_arg(args.list, int))
                        : AppendPrinted(out, NarrowSpec(c, ""), va_arg(args.list, unsigned));
    case Length::Hh:
    case Length::H: {
        // The argument arrives promoted to int; snprintf narrows it again.
        const char* modifier = c.length == Length::Hh ? "hh" : "h";
        return AppendPrinted(out, NarrowSpec(c, modifier), va_arg(args.list, int));
    }
    case Length::L:
        return isSigned ? AppendPrinted(out, NarrowSpec(c, "l"), va_arg(args.list, long))
                        : AppendPrinted(out, NarrowSpec(c, "l"), va_arg(args.list, unsigned long));
    case Length::Ll:
    case Length::I64:
        return isSigned
                   ? AppendPrinted(out, NarrowSpec(c, "ll"), va_arg(args.list, long long))
                   : AppendPrinted(out, NarrowSpec(c, "ll"), va_arg(args.list, unsigned long long));
    case Length::J:
        return isSigned ? AppendPrinted(out, NarrowSpec(c, "j"), va_arg(args.list, intmax_t))
                        : AppendPrinted(out, NarrowSpec(c, "j"), va_arg(args.list, uintmax_t));
    case Length::Z:
    case Length::T:
    case Length::I:
        return isSigned ? AppendPrinted(out, NarrowSpec(c, "t"), va_arg(args.list, ptrdiff_t))
                        : AppendPrinted(out, NarrowSpec(c, "z"), va_arg(args.list, size_t));
    default:
        return false;
    }
}

bool AppendFloat(std::u16string& out, const Conversion& c, Arguments& args) {
    switch (c.length) {
    case Length::None:
    case Length::L:
        return AppendPrinted(out, NarrowSpec(c, ""), va_arg(args.list, double));
    case Length::LongDouble:
        return AppendPrinted(out, NarrowSpec(c, "L"), va_arg(args.list, long double));
    default:
        return false;
    }
}

// For %s and %c: whether the argument is narrow, from the type and the length modifier; false
// for a modifier that does not apply to text.
bool TextWidth(const Conversion& c, bool* narrow) {
    switch (c.length) {
    case Length::None:
        *narrow = c.type == u'S' || c.type == u'C';
        return true;
    case Length::H:
        *narrow = true;
        return true;
    case Length::L:
    case Length::W:
        *narrow = false;
        return true;
    default:
        return false;
    }
}

bool AppendConversion(std::u16string& out, const Conversion& c, Arguments& args) {
    bool narrow = false;
    switch (c.type) {
    case u's':
    case u'S':
        if (!TextWidth(c, &narrow)) return false;
        if (narrow) {
            AppendNarrowString(out, c, va_arg(args.list, const char*));
        } else {
            AppendWideString(out, c, va_arg(args.list, const char16_t*));
        }
        return true;
    case u'c':
    case u'C': {
        if (!TextWidth(c, &narrow)) return false;
        const int value = va_arg(args.list, int);
        char16_t unit = static_cast<char16_t>(value);
        if (narrow) unit = static_cast<unsigned char>(value) < 0x80 ? value & 0x7F : 0xFFFD;
        AppendPadded(out, c, &unit, 1);
        return true;
    }
    case u'd':
    case u'i':
    case u'u':
    case u'o':
    case u'x':
    case u'X':
        return AppendInteger(out, c, args);
    case u'e':
    case u'E':
    case u'f':
    case u'F':
    case u'g':
    case u'G':
    case u'a':
    case u'A':
        return AppendFloat(out, c, args);
    case u'p':
        return c.length == Length::None &&
               AppendPrinted(out, NarrowSpec(c, ""), va_arg(args.list, void*));
    default:
        return false; // %n among them: the trace writes into no argument
    }
}

} // namespace

bool FormatWide(const char16_t* format, va_list args, std::u16string& out) {
    Arguments arguments;
    va_copy(arguments.list, args);
    bool ok = true;
    try {
        for (const char16_t* p = format; *p != 0 && ok;) {
            const char16_t* run = p;
            while (*p != 0 && *p != u'%')
                ++p;
            out.append(run, p);
            if (*p == 0) break;
            if (*++p == u'%') {
                out += u'%';
                ++p;
                continue;
            }
            Conversion c;
            ok = ReadConversion(p, arguments, c) && AppendConversion(out, c, arguments);
        }
    } catch (...) {
        va_end(arguments.list);
        throw;
    }
    va_end(arguments.list);
    return ok;
}

} // namespace vetra::host
