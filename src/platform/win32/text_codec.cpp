// text_codec.cpp (Windows) - code page conversion by the system's own converters,
// MultiByteToWideChar and WideCharToMultiByte with flags 0, and GetACP for the default page.
//
// The system decides what becomes of bytes and characters it can't map, including its
// best-fit mappings (U+0101 is written as 'a' in 1252); this file only keeps the callers'
// contract on arguments and on the pages that are never converted here.
#include "platform/text_codec.h"

#include <windows.h>

namespace vetra::platform {
namespace {

// The UTF-16 and UTF-32 pages that the layer above converts by itself.
bool IsRefused(uint32_t codePage) {
    return codePage == 1200 || codePage == 1201 || codePage == 12000 || codePage == 12001;
}

// Pages for which WideCharToMultiByte refuses a used-default flag outright: it can't tell
// whether a default character was used there.
bool TakesNoDefaultFlag(uint32_t codePage) {
    return codePage == 42 || codePage == 65000 || codePage == 65001 || codePage == 52936 ||
           codePage == 54936 || (codePage >= 50220 && codePage <= 50229) ||
           (codePage >= 57002 && codePage <= 57011);
}

} // namespace

int32_t MultiByteToWide(uint32_t codePage, const char* bytes, int32_t length, char16_t* out,
                        int32_t capacity) {
    if (!HasConversionWork(bytes, length, out, capacity)) return 0;
    if (codePage == 0) codePage = SystemCodePage();
    if (IsRefused(codePage)) return 0;
    return ::MultiByteToWideChar(codePage, 0, bytes, length, reinterpret_cast<wchar_t*>(out),
                                 capacity);
}

int32_t WideToMultiByte(uint32_t codePage, const char16_t* text, int32_t length, char* out,
                        int32_t capacity, bool* usedDefault) {
    if (usedDefault != nullptr) *usedDefault = false;
    if (!HasConversionWork(text, length, out, capacity)) return 0;
    if (codePage == 0) codePage = SystemCodePage();
    if (IsRefused(codePage)) return 0;
    BOOL used = FALSE;
    BOOL* flag = usedDefault != nullptr && !TakesNoDefaultFlag(codePage) ? &used : nullptr;
    const int written = ::WideCharToMultiByte(codePage, 0, reinterpret_cast<const wchar_t*>(text),
                                              length, out, capacity, nullptr, flag);
    if (usedDefault != nullptr) *usedDefault = used != FALSE;
    return written;
}

uint32_t SystemCodePage() {
    return ::GetACP();
}

} // namespace vetra::platform
