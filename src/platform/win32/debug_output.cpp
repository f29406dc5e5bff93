// debug_output.cpp (Windows) - traces go to the debugger's output, one call per text, which
// reaches a debugger attached to the process or a system-wide listener. With neither, the
// text goes nowhere.
#include "platform/debug_output.h"

#include <windows.h>

namespace vetra::platform {

void WriteDebugOutput(const char* text, size_t) noexcept {
    ::OutputDebugStringA(text);
}

void WriteDebugOutputWide(const char16_t* text, size_t) {
    ::OutputDebugStringW(reinterpret_cast<const wchar_t*>(text));
}

} // namespace vetra::platform
