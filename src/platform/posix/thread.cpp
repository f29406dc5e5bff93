// thread.cpp (POSIX) - the library's thread and lock on the standard
// library's, which run on pthreads here.
#include "platform/thread.h"

#include <mutex>
#include <new>
#include <thread>

namespace vetra::platform {

void* StartThread(ThreadBody body, void* argument) {
    try {
        return new std::thread(body, argument);
    } catch (...) {
        return nullptr;
    }
}

void JoinThread(void* thread) {
    auto* running = static_cast<std::thread*>(thread);
    if (running == nullptr) return;
    running->join();
    delete running;
}

Lock::Lock() : m_system(new std::mutex) {}

Lock::~Lock() {
    delete static_cast<std::mutex*>(m_system);
}

void Lock::lock() {
    static_cast<std::mutex*>(m_system)->lock();
}

void Lock::unlock() {
    static_cast<std::mutex*>(m_system)->unlock();
}

} // namespace vetra::platform
