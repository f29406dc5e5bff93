// net_bench.cpp - Google Benchmark on CVTIpInfo::Query and VETRA_GetLocalFirstIP
// against the usual way of reading the same on Linux without vetra: getifaddrs
// (interfaces and their addresses, with statistics) plus the routes parsed from
// /proc/net/route. Each of the three table reads is measured alone as well.
//
// Everything is a round trip to the kernel, so timings move with the machine's
// load: run pinned (taskset -c 1) and compare figures of the same run.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <ifaddrs.h>
#include <memory>
#include <netinet/in.h>
#include <vector>

#include "platform/net_tables.h"
#include "vetra/ip_info.h"

namespace {

void BM_Query(benchmark::State& state) {
    CVTIpInfo info;
    for (auto _ : state)
        benchmark::DoNotOptimize(info.Query()->nInterfaceCount);
}
BENCHMARK(BM_Query);

void BM_GetLocalFirstIP(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(VETRA_GetLocalFirstIP());
}
BENCHMARK(BM_GetLocalFirstIP);

struct ProcRoute {
    char name[16];
    unsigned dest, gateway, flags, mask;
    int metric;
};

// getifaddrs and /proc/net/route, parsed into plain rows as a caller would.
void BM_GetifaddrsAndProcRoute(benchmark::State& state) {
    std::vector<ProcRoute> routes;
    for (auto _ : state) {
        ifaddrs* list = nullptr;
        if (getifaddrs(&list) != 0) state.SkipWithError("getifaddrs failed");
        unsigned ipv4 = 0;
        for (ifaddrs* a = list; a; a = a->ifa_next)
            ipv4 += a->ifa_addr && a->ifa_addr->sa_family == AF_INET;
        freeifaddrs(list);
        benchmark::DoNotOptimize(ipv4);

        routes.clear();
        FILE* file = std::fopen("/proc/net/route", "re");
        if (!file) state.SkipWithError("no /proc/net/route");
        char line[256];
        std::fgets(line, sizeof line, file); // the heading
        ProcRoute r;
        int refs, use, mtu, window, irtt;
        while (std::fgets(line, sizeof line, file)) {
            if (std::sscanf(line, "%15s %x %x %x %d %d %d %x %d %d %d", r.name, &r.dest, &r.gateway,
                            &r.flags, &refs, &use, &r.metric, &r.mask, &mtu, &window, &irtt) == 11)
                routes.push_back(r);
        }
        std::fclose(file);
        benchmark::DoNotOptimize(routes.data());
    }
}
BENCHMARK(BM_GetifaddrsAndProcRoute);

// Each table alone, on a source that keeps its socket between reads.
template <class Row, class Read> void ReadTable(benchmark::State& state, Read read) {
    std::unique_ptr<vetra::platform::NetTableSource> source =
        vetra::platform::OpenSystemNetTables();
    std::vector<Row> rows;
    for (auto _ : state)
        benchmark::DoNotOptimize(read(*source, &rows));
}
void BM_ReadAddresses(benchmark::State& state) {
    ReadTable<vetra::platform::NetAddressRow>(
        state, [](auto& source, auto* rows) { return source.ReadAddresses(rows); });
}
void BM_ReadRoutes(benchmark::State& state) {
    ReadTable<vetra::platform::NetRouteRow>(
        state, [](auto& source, auto* rows) { return source.ReadRoutes(rows); });
}
void BM_ReadInterfaces(benchmark::State& state) {
    ReadTable<vetra::platform::NetInterfaceRow>(
        state, [](auto& source, auto* rows) { return source.ReadInterfaces(rows); });
}
BENCHMARK(BM_ReadAddresses);
BENCHMARK(BM_ReadRoutes);
BENCHMARK(BM_ReadInterfaces);

} // namespace

BENCHMARK_MAIN();
