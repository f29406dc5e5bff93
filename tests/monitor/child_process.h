// child_process.h - a child process for the monitor's tests: `sh` spinning
// one core, or `sleep` doing nothing. Started with posix_spawn (no fork of
// a threaded test), killed and reaped when the object goes.
#ifndef VETRA_TESTS_MONITOR_CHILD_PROCESS_H
#define VETRA_TESTS_MONITOR_CHILD_PROCESS_H

#include <cstdint>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

class ChildProcess {
  public:
    enum Kind { busy, idle };

    explicit ChildProcess(Kind kind) {
        const char* busyArgs[] = {"sh", "-c", "while :; do :; done", nullptr};
        const char* idleArgs[] = {"sleep", "600", nullptr};
        const char* const* args = kind == busy ? busyArgs : idleArgs;
        if (posix_spawnp(&pid_, args[0], nullptr, nullptr, const_cast<char* const*>(args),
                         environ) != 0)
            pid_ = 0;
    }
    ~ChildProcess() {
        Kill();
        Reap();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    uint32_t pid() const { return static_cast<uint32_t>(pid_); }
    /// Ends the child; it stays a zombie until Reap.
    void Kill() {
        if (pid_ > 0 && !killed_) kill(pid_, SIGKILL);
        killed_ = true;
    }
    /// Waits for the ended child; afterwards its pid may be given to another process.
    void Reap() {
        if (pid_ > 0 && !reaped_) waitpid(pid_, nullptr, 0);
        reaped_ = true;
    }
    /// Waits until the killed child is a zombie, without reaping it.
    void WaitZombie() {
        siginfo_t info{};
        if (pid_ > 0) waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT);
    }

  private:
    pid_t pid_ = 0;
    bool killed_ = false;
    bool reaped_ = false;
};

#endif // VETRA_TESTS_MONITOR_CHILD_PROCESS_H
