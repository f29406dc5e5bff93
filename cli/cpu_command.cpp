// cpu_command.cpp - `vetra cpu`: the CPU monitor's figures, one line per
// interval, for the machine and the processes and threads asked for.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <vetra/cpu_usage.h>

#include "commands.h"

namespace cli {

int RunCpu(Args& args) {
    std::vector<uint32_t> pids, tids;
    for (const std::string& p : args.TakeAll("--pid"))
        pids.push_back(uint32_t(ParseNumber(p, "--pid", 1, 0x7FFFFFFF)));
    for (const std::string& t : args.TakeAll("--thread"))
        tids.push_back(uint32_t(ParseNumber(t, "--thread", 1, 0x7FFFFFFF)));
    const std::string intervalText = args.Take("--interval", "1");
    const long long count = ParseNumber(args.Take("--count", "0"), "--count", 0, 1LL << 40);
    args.Operands(0, 0);
    char* end = nullptr;
    const double interval = std::strtod(intervalText.c_str(), &end);
    if (intervalText.empty() || *end != '\0' || !(interval >= 0.5 && interval <= 3600))
        Fail("--interval must be a number of seconds from 0.5 to 3600, not '" + intervalText + "'");

    CVTCpuUsage monitor;
    for (uint32_t pid : pids)
        if (!monitor.AddProcess(pid)) Fail("no process " + std::to_string(pid) + " to watch");
    for (uint32_t tid : tids)
        if (!monitor.AddThread(tid, 0)) Fail("no thread " + std::to_string(tid) + " to watch");

    // One column per figure, each value right-aligned under its title.
    struct Column {
        std::string title;
        std::function<int()> value;
    };
    std::vector<Column> columns = {{"system%", [&] { return monitor.GetSystemCpuUsage(); }}};
    for (uint32_t pid : pids)
        columns.push_back({"pid " + std::to_string(pid) + "%",
                           [&monitor, pid] { return monitor.GetProcessCpuUsage(pid); }});
    for (uint32_t tid : tids)
        columns.push_back({"tid " + std::to_string(tid) + "%",
                           [&monitor, tid] { return monitor.GetThreadCpuUsage(tid); }});
    for (const Column& c : columns)
        std::printf("%s%s", &c == &columns[0] ? "" : "  ", c.title.c_str());
    std::printf("\n");

    // The monitor needs two passes, about a second, before its first figure.
    const std::chrono::duration<double> period(interval);
    std::this_thread::sleep_for(std::max(period, std::chrono::duration<double>(1.1)));
    for (long long line = 0; count == 0 || line < count; ++line) {
        if (line > 0) std::this_thread::sleep_for(period);
        for (const Column& c : columns)
            std::printf("%s%*d", &c == &columns[0] ? "" : "  ", int(c.title.size()), c.value());
        std::printf("\n");
        std::fflush(stdout);
    }
    return kOk;
}

} // namespace cli
