// thread.cpp (Windows) - the library's thread with _beginthreadex and a
// critical section as its lock.
#include "platform/thread.h"

#include <new>
#include <process.h>

#include <windows.h>

namespace vetra::platform {
namespace {

struct Start {
    ThreadBody body;
    void* argument;
};

// _beginthreadex's calling convention, around the library's plain function.
unsigned __stdcall Run(void* start) {
    const Start what = *static_cast<Start*>(start);
    delete static_cast<Start*>(start);
    return what.body(what.argument);
}

} // namespace

void* StartThread(ThreadBody body, void* argument) {
    auto* start = new (std::nothrow) Start{body, argument};
    if (start == nullptr) return nullptr;
    const uintptr_t thread = ::_beginthreadex(nullptr, 0, Run, start, 0, nullptr);
    if (thread == 0) {
        delete start;
        return nullptr;
    }
    return reinterpret_cast<void*>(thread);
}

void JoinThread(void* thread) {
    if (thread == nullptr) return;
    ::WaitForSingleObject(static_cast<HANDLE>(thread), INFINITE);
    ::CloseHandle(static_cast<HANDLE>(thread));
}

Lock::Lock() : m_system(new CRITICAL_SECTION) {
    ::InitializeCriticalSection(static_cast<CRITICAL_SECTION*>(m_system));
}

Lock::~Lock() {
    ::DeleteCriticalSection(static_cast<CRITICAL_SECTION*>(m_system));
    delete static_cast<CRITICAL_SECTION*>(m_system);
}

void Lock::lock() {
    ::EnterCriticalSection(static_cast<CRITICAL_SECTION*>(m_system));
}

void Lock::unlock() {
    ::LeaveCriticalSection(static_cast<CRITICAL_SECTION*>(m_system));
}

} // namespace vetra::platform
