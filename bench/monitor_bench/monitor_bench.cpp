// monitor_bench.cpp - the cost of one sampling pass of the CPU monitor, with
// 1, 10 and 100 watched processes (idle `sleep` children): the machine's
// times, the wall clock, and every process's times read and turned into
// figures, as the update thread does every 500 ms. The goal is under 2 ms of
// processor time for 100 processes. Run pinned: taskset -c 1 monitor_bench
#include <benchmark/benchmark.h>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

#include "monitor/cpu_sampling.h"
#include "platform/clock.h"
#include "platform/cpu_times.h"

extern char** environ;

namespace {

using vetra::monitor::UsageRecord;

// Idle child processes, watched by a list of records as AddProcess builds it.
class WatchedChildren {
  public:
    explicit WatchedChildren(int count) : records_(static_cast<size_t>(count)) {
        const char* args[] = {"sleep", "600", nullptr};
        for (UsageRecord& record : records_) {
            pid_t pid = 0;
            if (posix_spawnp(&pid, args[0], nullptr, nullptr, const_cast<char* const*>(args),
                             environ) != 0)
                continue;
            pids_.push_back(pid);
            record.dwId = static_cast<uint32_t>(pid);
            record.hObject = vetra::platform::OpenProcessTimes(record.dwId);
        }
        for (size_t i = 0; i + 1 < records_.size(); ++i)
            records_[i].pNext = &records_[i + 1];
    }
    ~WatchedChildren() {
        records_.clear(); // closes the handles
        for (pid_t pid : pids_)
            kill(pid, SIGKILL);
        for (pid_t pid : pids_)
            waitpid(pid, nullptr, 0);
    }
    UsageRecord* head() { return records_.empty() ? nullptr : &records_[0]; }

  private:
    std::vector<UsageRecord> records_;
    std::vector<pid_t> pids_;
};

void BM_SamplingPass(benchmark::State& state) {
    WatchedChildren children(static_cast<int>(state.range(0)));
    UsageRecord system;
    const vetra::platform::CpuTimeReaders readers = vetra::platform::FindCpuTimeReaders();
    for (auto _ : state) {
        vetra::monitor::SamplePass(system, children.head(), nullptr, readers,
                                   vetra::platform::SystemTimeAsFileTime());
    }
    benchmark::DoNotOptimize(system.nUsage);
    state.counters["processes"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_SamplingPass)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
