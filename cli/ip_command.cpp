// ip_command.cpp - `vetra ip`: the machine's IPv4 snapshot as three tables
// (interfaces, addresses, routes), its default gateway, and the address the
// library picks as the machine's first local one.
#include <arpa/inet.h>

#include <cstdio>
#include <string>

#include <vetra/host.h>
#include <vetra/ip_info.h>

#include "commands.h"
#include "text.h"

namespace cli {

namespace {

// A dotted quad of an address kept in network byte order.
std::string Dotted(uint32_t address) {
    char text[INET_ADDRSTRLEN];
    in_addr a{};
    a.s_addr = address;
    return inet_ntop(AF_INET, &a, text, sizeof text) != nullptr ? text : "?";
}

const char* OperStatus(uint32_t status) {
    switch (status) {
    case 5:
        return "up";
    case 4:
        return "unknown";
    case 3:
        return "dormant";
    case 2:
        return "down";
    default:
        return "other";
    }
}

const char* InterfaceType(uint32_t type) {
    switch (type) {
    case 6:
        return "ethernet";
    case 24:
        return "loopback";
    case 131:
        return "tunnel";
    default:
        return "other";
    }
}

std::string Hardware(const _VTIPI_IF_INFO& i) {
    std::string out;
    for (uint32_t b = 0; b < i.dwPhysAddrLen && b < sizeof i.bPhysAddr; ++b) {
        char part[4];
        std::snprintf(part, sizeof part, "%s%02x", b ? ":" : "", i.bPhysAddr[b]);
        out += part;
    }
    return out.empty() ? "-" : out;
}

std::string NameOf(const _VTIPI_QUERY_INFO& info, uint32_t index) {
    for (uint32_t i = 0; i < info.nInterfaceCount; ++i)
        if (info.pInterfaces[i].dwIndex == index) return ToUtf8(info.pInterfaces[i].wszDescr);
    return std::to_string(index);
}

} // namespace

int RunIp(Args& args) {
    args.Operands(0, 0);
    CVTIpInfo ip;
    const _VTIPI_QUERY_INFO& info = *ip.Query();

    std::printf("interfaces\n  %-5s %-16s %-9s %-8s %6s %12s  %s\n", "index", "name", "type",
                "status", "mtu", "speed", "hardware");
    for (uint32_t n = 0; n < info.nInterfaceCount; ++n) {
        const _VTIPI_IF_INFO& i = info.pInterfaces[n];
        std::printf("  %-5u %-16s %-9s %-8s %6u %12u  %s\n", i.dwIndex, ToUtf8(i.wszDescr).c_str(),
                    InterfaceType(i.dwType), OperStatus(i.dwOperStatus), i.dwMtu, i.dwSpeed,
                    Hardware(i).c_str());
    }
    std::printf("addresses\n  %-15s %-15s %-15s %-16s %s\n", "address", "mask", "broadcast",
                "interface", "type");
    for (uint32_t n = 0; n < info.nAddressCount; ++n) {
        const _VTIPI_ADDR_INFO& a = info.pAddresses[n];
        std::printf("  %-15s %-15s %-15s %-16s %u\n", Dotted(a.dwAddr).c_str(),
                    Dotted(a.dwMask).c_str(), Dotted(a.dwBCastAddr).c_str(),
                    NameOf(info, a.dwIndex).c_str(), a.wType);
    }
    std::printf("routes\n  %-15s %-15s %-15s %-16s %6s\n", "destination", "mask", "next hop",
                "interface", "metric");
    for (uint32_t n = 0; n < info.nRouteCount; ++n) {
        const _VTIPI_ROUTE_INFO& r = info.pRoutes[n];
        std::printf("  %-15s %-15s %-15s %-16s %6u\n", Dotted(r.dwForwardDest).c_str(),
                    Dotted(r.dwForwardMask).c_str(), Dotted(r.dwForwardNextHop).c_str(),
                    NameOf(info, r.dwForwardIfIndex).c_str(), r.dwForwardMetric1);
    }
    std::printf("default gateway:     %s\n",
                info.dwDefaultGateway ? Dotted(info.dwDefaultGateway).c_str() : "none");
    const uint32_t first = VETRA_GetLocalFirstIP();
    std::printf("first local address: %s\n", first ? Dotted(first).c_str() : "none");
    return kOk;
}

int RunVersion(Args& args) {
    const std::string file = args.Operands(1, 1)[0];
    uint32_t ms = 0, ls = 0;
    if (!VETRA_GetFileVersion(ToWide(file).c_str(), &ms, &ls))
        Fail(file + ": no version resource (not a readable Windows executable or DLL with one)",
             kNo);
    std::printf("%u.%u.%u.%u\n", ms >> 16, ms & 0xFFFF, ls >> 16, ls & 0xFFFF);
    return kOk;
}

} // namespace cli
