// first_address.cpp - VETRA_GetLocalFirstIP: which of the machine's IPv4
// addresses it presents as its own. The rule reads a snapshot only, so it can
// be tried on made-up ones.
#include "net/first_address.h"

#include <algorithm>
#include <vector>

namespace vetra::net {

namespace {

// A connected interface with a default route.
struct Candidate {
    uint32_t ifIndex;
    uint32_t metric;  // of its first default route
    uint32_t packets; // unicast in and out, wrapping at 32 bits
};

constexpr uint32_t kStatusConnected = 4;
constexpr uint32_t kStatusOperational = 5;
constexpr uint16_t kPlainPrimary = 1; // primary, and no other flag
// Where the other candidates' addresses are looked for; the best one's are
// looked for in the whole table.
constexpr uint32_t kOtherCandidateRows = 256;

std::vector<Candidate> FindCandidates(const _VTIPI_QUERY_INFO& info) {
    std::vector<Candidate> candidates;
    for (uint32_t i = 0; i < info.nInterfaceCount; ++i) {
        const _VTIPI_IF_INFO& itf = info.pInterfaces[i];
        if (itf.dwOperStatus != kStatusConnected && itf.dwOperStatus != kStatusOperational)
            continue;
        const _VTIPI_ROUTE_INFO* begin = info.pRoutes;
        const _VTIPI_ROUTE_INFO* end = begin + info.nRouteCount;
        const _VTIPI_ROUTE_INFO* route = std::find_if(begin, end, [&](const _VTIPI_ROUTE_INFO& r) {
            return r.dwForwardIfIndex == itf.dwIndex && r.dwForwardDest == 0;
        });
        if (route != end)
            candidates.push_back(
                {itf.dwIndex, route->dwForwardMetric1, itf.dwInUcastPkts + itf.dwOutUcastPkts});
    }
    return candidates;
}

// The first address of interface `ifIndex` among the first `rows` records, or null.
const _VTIPI_ADDR_INFO* FirstAddress(const _VTIPI_QUERY_INFO& info, uint32_t ifIndex,
                                     uint32_t rows) {
    const _VTIPI_ADDR_INFO* begin = info.pAddresses;
    const _VTIPI_ADDR_INFO* end = begin + std::min<uint32_t>(rows, info.nAddressCount);
    const _VTIPI_ADDR_INFO* found =
        std::find_if(begin, end, [&](const _VTIPI_ADDR_INFO& a) { return a.dwIndex == ifIndex; });
    return found != end ? found : nullptr;
}

} // namespace

uint32_t ChooseFirstLocalAddress(const _VTIPI_QUERY_INFO& info) {
    const std::vector<Candidate> candidates = FindCandidates(info);
    if (candidates.empty()) return 0;

    const Candidate* best = &candidates[0];
    for (const Candidate& c : candidates) {
        if (c.metric < best->metric || (c.metric == best->metric && c.packets > best->packets))
            best = &c;
    }
    if (best->ifIndex == 0) return 0;

    uint32_t result = 0;
    if (const _VTIPI_ADDR_INFO* addr = FirstAddress(info, best->ifIndex, info.nAddressCount)) {
        result = addr->dwAddr;
        if (addr->wType == kPlainPrimary) return result;
    }
    if (candidates.size() == 1) return result;

    // A plainly primary address on another candidate beats one with further
    // flags on the best interface. Only each interface's first address counts.
    for (const Candidate& c : candidates) {
        if (c.ifIndex == best->ifIndex) continue;
        const _VTIPI_ADDR_INFO* addr = FirstAddress(info, c.ifIndex, kOtherCandidateRows);
        if (addr && addr->wType == kPlainPrimary) return addr->dwAddr;
    }
    return result;
}

} // namespace vetra::net

vtdword VETRA_GetLocalFirstIP() {
    CVTIpInfo snapshot;
    return vetra::net::ChooseFirstLocalAddress(*snapshot.Query());
}
