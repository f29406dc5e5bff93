// thread_name.cpp (Windows) - names the calling thread for debuggers: the published
// thread-naming exception, which an attached debugger reads, and the thread's description
// (SetThreadDescription, where the system has it), which newer tools and crash dumps show.
//
// mingw-w64 has no structured exception guard, so a vectored handler stands in for it: it is
// added for the time of the call and lets execution go on behind RaiseException when no
// debugger took the exception. A debugger sees the exception before any vectored handler.
#include "platform/thread_name.h"

#include <string>

#include <windows.h>

namespace vetra::platform {
namespace {

constexpr DWORD kNameThreadException = 0x406D1388;

// The record a debugger reads, in its published layout.
struct ThreadNameInfo {
    DWORD dwType; // 0x1000
    const char* szName;
    DWORD dwThreadID; // 0xFFFFFFFF: the calling thread
    DWORD dwFlags;    // 0
};

LONG CALLBACK GoOnAfterName(EXCEPTION_POINTERS* exception) {
    return exception->ExceptionRecord->ExceptionCode == kNameThreadException
               ? EXCEPTION_CONTINUE_EXECUTION
               : EXCEPTION_CONTINUE_SEARCH;
}

void RaiseNameException(const char* name) {
    ThreadNameInfo info{0x1000, name, 0xFFFFFFFF, 0};
    void* handler = ::AddVectoredExceptionHandler(1, GoOnAfterName);
    if (handler == nullptr) return; // without the guard the exception would end the process
    ::RaiseException(kNameThreadException, 0, sizeof info / sizeof(ULONG_PTR),
                     reinterpret_cast<const ULONG_PTR*>(&info));
    ::RemoveVectoredExceptionHandler(handler);
}

void SetDescription(const char* name) {
    using SetThreadDescriptionFun = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    const auto set = kernel == nullptr
                         ? nullptr
                         : reinterpret_cast<SetThreadDescriptionFun>(reinterpret_cast<void (*)()>(
                               ::GetProcAddress(kernel, "SetThreadDescription")));
    if (set == nullptr) return;
    const int units = ::MultiByteToWideChar(CP_ACP, 0, name, -1, nullptr, 0);
    if (units <= 0) return;
    std::wstring wide(static_cast<size_t>(units), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, name, -1, wide.data(), units);
    set(::GetCurrentThread(), wide.c_str());
}

} // namespace

void SetCurrentThreadName(const char* name) noexcept {
    RaiseNameException(name);
    try {
        SetDescription(name);
    } catch (...) {
        // No memory for the wide copy: the debugger has the name already.
    }
}

} // namespace vetra::platform
