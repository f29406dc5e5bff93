// code_pages.cpp - the table from code page numbers to iconv names, and its two lookups.
//
// Holds only pages that the GNU C library converts; the platform's UTF-16 and UTF-32 pages
// (1200, 1201, 12000, 12001) are left out on purpose, so that the converter refuses them
// as callers expect. No system call: whether a name really opens is checked by the tests.
#include "platform/code_pages.h"

#include <algorithm>
#include <iterator>

namespace vetra::platform {
namespace {

// Where glibc has no exact equivalent, the nearest one stands in and says so here:
// 708 is read as ISO-8859-6; 20002 (Big5 with the ETEN extensions) as glibc's Big5;
// 50221 and 50222 as ISO-2022-JP-3, which has the one-byte katakana of 50221 but not the
// shift-out form of 50222; 38598 (logical Hebrew) as ISO-8859-8, which has the same bytes.
// glibc's Mac tables are older than Apple's current ones: 10079 (MAC-IS) reads 12 bytes otherwise
// (0xDC/0xDD are U+0110/U+0111, not U+00D0/U+00F0; 0xA0 is U+2020, not U+00DD), and 10000,
// 10007 and 10017 have the currency sign where Apple's tables now have the euro (0xDB, 0xFF).
// Pages that glibc lacks altogether are not here, so they convert to nothing: 720, 853,
// the Mac pages 10001 to 10006, 10008, 10010, 10021, 10081 and 10082, 20000, 20001,
// 20003 to 20005, 20105, 29001, 52936 (HZ) and the ISCII pages 57002 to 57011.
constexpr CodePageName kTable[] = {
    {37, "IBM037", ""},
    {154, "PT154", ""},
    {437, "IBM437", ""},
    {500, "IBM500", ""},
    {708, "ASMO-708", ""},
    {737, "CP737", ""},
    {775, "CP775", ""},
    {850, "IBM850", ""},
    {852, "IBM852", ""},
    {855, "IBM855", ""},
    {857, "IBM857", ""},
    {858, "IBM858", ""},
    {860, "IBM860", ""},
    {861, "IBM861", ""},
    {862, "IBM862", ""},
    {863, "IBM863", ""},
    {864, "IBM864", ""},
    {865, "IBM865", ""},
    {866, "IBM866", ""},
    {869, "IBM869", ""},
    {870, "IBM870", ""},
    {874, "CP874", "TIS-620 TIS620"},
    {875, "IBM875", ""},
    {932, "CP932", "SHIFT_JIS SJIS"},
    {936, "CP936", "GBK"},
    {949, "CP949", "UHC"},
    {950, "CP950", "BIG5 BIG5-HKSCS"},
    {1026, "IBM1026", ""},
    {1047, "IBM1047", ""},
    {1125, "CP1125", ""},
    {1133, "IBM1133", ""},
    {1140, "IBM1140", ""},
    {1141, "IBM1141", ""},
    {1142, "IBM1142", ""},
    {1143, "IBM1143", ""},
    {1144, "IBM1144", ""},
    {1145, "IBM1145", ""},
    {1146, "IBM1146", ""},
    {1147, "IBM1147", ""},
    {1148, "IBM1148", ""},
    {1149, "IBM1149", ""},
    {1250, "CP1250", ""},
    {1251, "CP1251", ""},
    {1252, "CP1252", ""},
    {1253, "CP1253", ""},
    {1254, "CP1254", ""},
    {1255, "CP1255", ""},
    {1256, "CP1256", ""},
    {1257, "CP1257", ""},
    {1258, "CP1258", ""},
    {1361, "JOHAB", ""},
    {10000, "MACINTOSH", ""},
    {10007, "MS-MAC-CYRILLIC", ""},
    {10017, "MAC-UK", ""},
    {10029, "MAC-CENTRALEUROPE", ""},
    {10079, "MAC-IS", ""},
    {20002, "BIG5", ""},
    {20106, "ISO646-DE", ""},
    {20107, "ISO646-SE", ""},
    {20108, "ISO646-NO", ""},
    {20127, "ANSI_X3.4-1968", "ASCII US-ASCII"},
    {20261, "T.61-8BIT", ""},
    {20269, "ISO_6937", ""},
    {20866, "KOI8-R", ""},
    {20932, "EUC-JP", ""},
    {20936, "GB2312", ""},
    {20949, "EUC-KR", ""},
    {21025, "IBM1025", ""},
    {21866, "KOI8-U", ""},
    {28591, "ISO-8859-1", ""},
    {28592, "ISO-8859-2", ""},
    {28593, "ISO-8859-3", ""},
    {28594, "ISO-8859-4", ""},
    {28595, "ISO-8859-5", ""},
    {28596, "ISO-8859-6", ""},
    {28597, "ISO-8859-7", ""},
    {28598, "ISO-8859-8", ""},
    {28599, "ISO-8859-9", ""},
    {28603, "ISO-8859-13", ""},
    {28605, "ISO-8859-15", ""},
    {38598, "ISO-8859-8", ""},
    {50220, "ISO-2022-JP", ""},
    {50221, "ISO-2022-JP-3", ""},
    {50222, "ISO-2022-JP-3", ""},
    {50225, "ISO-2022-KR", ""},
    {50227, "ISO-2022-CN", ""},
    {51932, "EUC-JP-MS", ""},
    {51936, "EUC-CN", ""},
    {51949, "EUC-KR", ""},
    {54936, "GB18030", ""},
    {65000, "UTF-7", ""},
    {65001, "UTF-8", ""},
};

constexpr bool StrictlyAscending() {
    for (size_t i = 1; i < std::size(kTable); ++i) {
        if (kTable[i - 1].codePage >= kTable[i].codePage) return false;
    }
    return true;
}
static_assert(StrictlyAscending(), "IndexOfCodePage searches the table by halves");
static_assert(std::size(kTable) <= kMaxKnownCodePages, "the converter has a slot for each page");

inline char Fold(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

inline bool Ignored(char c) {
    return c == '-' || c == '_';
}

// Compares [a, aEnd) with the null-terminated `b`, skipping '-' and '_' in both.
bool SameCodeset(const char* a, const char* aEnd, const char* b) {
    for (;;) {
        while (a != aEnd && Ignored(*a))
            ++a;
        while (*b != '\0' && Ignored(*b))
            ++b;
        if (a == aEnd || *b == '\0') return a == aEnd && *b == '\0';
        if (Fold(*a++) != Fold(*b++)) return false;
    }
}

bool NamesCodeset(const char* name, const char* codeset) {
    const char* end = name;
    while (*end != '\0')
        ++end;
    return SameCodeset(name, end, codeset);
}

bool AliasesName(const char* aliases, const char* codeset) {
    while (*aliases != '\0') {
        const char* end = aliases;
        while (*end != '\0' && *end != ' ')
            ++end;
        if (end != aliases && SameCodeset(aliases, end, codeset)) return true;
        aliases = (*end == ' ') ? end + 1 : end;
    }
    return false;
}

} // namespace

int IndexOfCodePage(uint32_t codePage) noexcept {
    const CodePageName* hit =
        std::lower_bound(std::begin(kTable), std::end(kTable), codePage,
                         [](const CodePageName& e, uint32_t cp) { return e.codePage < cp; });
    return (hit != std::end(kTable) && hit->codePage == codePage)
               ? static_cast<int>(hit - std::begin(kTable))
               : -1;
}

const char* IconvNameOf(uint32_t codePage) noexcept {
    const int i = IndexOfCodePage(codePage);
    return i < 0 ? nullptr : kTable[i].iconvName;
}

uint32_t CodePageOfCodeset(const char* codeset) noexcept {
    if (codeset == nullptr) return 0;
    for (const CodePageName& e : kTable) {
        if (NamesCodeset(e.iconvName, codeset) || AliasesName(e.codesetAliases, codeset)) {
            return e.codePage;
        }
    }
    return 0;
}

} // namespace vetra::platform
