// thread.h - the library's own thread and its lock: start a thread on a
// function, wait for it to end, and a lock that is not taken twice on one
// path.
//
// Threads and locks are opaque pointers. Only the CPU monitor starts a
// thread; nothing here names, detaches or kills one.
#ifndef VETRA_PLATFORM_THREAD_H
#define VETRA_PLATFORM_THREAD_H

namespace vetra::platform {

/// The body of a thread: its argument in, its exit code out.
using ThreadBody = unsigned int (*)(void* argument);

/// Starts a thread running `body(argument)` at once; null if the system
/// refuses one.
void* StartThread(ThreadBody body, void* argument);

/// Waits for the thread to end, however long that takes, and frees it; null
/// is ignored. Must not be called from the thread itself.
void JoinThread(void* thread);

/// A lock for short stretches of work: lock and unlock from any thread, never
/// twice on one path.
class Lock {
  public:
    /// Raises std::bad_alloc if the system has no memory for it.
    Lock();
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    void lock();
    void unlock();

  private:
    void* m_system; // the system's own lock object
};

} // namespace vetra::platform

#endif // VETRA_PLATFORM_THREAD_H
