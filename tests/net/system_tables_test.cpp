// Tests against the real system: this machine's tables as `ip` and
// /sys/class/net show them, and a network namespace of our own (a veth pair,
// a secondary address, two default routes) where every row is known ahead.
#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "vetra/ip_info.h"

namespace {

using Lines = std::vector<std::string>;

std::string Dotted(uint32_t networkOrder) {
    char text[INET_ADDRSTRLEN];
    const in_addr addr{networkOrder};
    return inet_ntop(AF_INET, &addr, text, sizeof text);
}

// Runs a shell command into `out`; false if it failed.
bool Shell(const std::string& command, std::string* out) {
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    if (!pipe) return false;
    char buffer[4096];
    out->clear();
    for (size_t got; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        out->append(buffer, got);
    return pclose(pipe) == 0;
}

std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string w; in >> w;)
        words.push_back(w);
    return words;
}

std::string NameOf(const _VTIPI_QUERY_INFO& info, uint32_t index) {
    for (uint32_t i = 0; i < info.nInterfaceCount; ++i) {
        const _VTIPI_IF_INFO& itf = info.pInterfaces[i];
        if (itf.dwIndex == index) return std::string(itf.wszDescr, itf.wszDescr + itf.dwDescrLen);
    }
    return "-";
}

// The snapshot's addresses and routes as text, in the snapshot's order:
// "a 10.0.0.2/24 eth0 brd 10.0.0.255 type 1", "r 0.0.0.0/0 via 10.0.0.1 eth0
// metric 10 type 4 proto 3"; `full` adds what `ip -o` doesn't show plainly.
Lines Describe(const _VTIPI_QUERY_INFO& info, bool full) {
    Lines lines;
    auto prefix = [](uint32_t mask) { return "/" + std::to_string(__builtin_popcount(mask)); };
    for (uint32_t i = 0; i < info.nAddressCount; ++i) {
        const _VTIPI_ADDR_INFO& a = info.pAddresses[i];
        lines.push_back("a " + Dotted(a.dwAddr) + prefix(a.dwMask) + " " + NameOf(info, a.dwIndex) +
                        " brd " + Dotted(a.dwBCastAddr) + " type " + std::to_string(a.wType));
    }
    for (uint32_t i = 0; i < info.nRouteCount; ++i) {
        const _VTIPI_ROUTE_INFO& r = info.pRoutes[i];
        lines.push_back("r " + Dotted(r.dwForwardDest) + prefix(r.dwForwardMask) + " via " +
                        Dotted(r.dwForwardNextHop) + " " + NameOf(info, r.dwForwardIfIndex) +
                        " metric " + std::to_string(r.dwForwardMetric1) +
                        (full ? " type " + std::to_string(r.dwForwardType) + " proto " +
                                    std::to_string(r.dwForwardProto)
                              : ""));
    }
    return lines;
}

// `ip -4 -o addr` and `ip -4 -o route` in the same form, sorted.
Lines DescribeIp(const std::string& addrText, const std::string& routeText) {
    Lines lines;
    std::istringstream addrs(addrText), routes(routeText);
    for (std::string line; std::getline(addrs, line);) {
        const auto w = Words(line);
        const auto brd = std::find(w.begin(), w.end(), "brd");
        const bool secondary = std::count(w.begin(), w.end(), "secondary");
        const bool dynamic = std::count(w.begin(), w.end(), "dynamic");
        lines.push_back("a " + w[3] + " " + w[1] + " brd " + (brd != w.end() ? brd[1] : "0.0.0.0") +
                        " type " + std::to_string((secondary ? 0 : 1) | (dynamic ? 4 : 0)));
    }
    for (std::string line; std::getline(routes, line);) {
        auto w = Words(line);
        if (w[0] == "unicast" || w[0] == "blackhole" || w[0] == "unreachable" || w[0] == "prohibit")
            w.erase(w.begin());
        std::string dest = w[0] == "default" ? "0.0.0.0/0" : w[0];
        if (dest.find('/') == std::string::npos) dest += "/32";
        auto value = [&](const char* key, const char* otherwise) {
            const auto at = std::find(w.begin(), w.end(), key);
            return at != w.end() && at + 1 != w.end() ? at[1] : otherwise;
        };
        lines.push_back("r " + dest + " via " + value("via", "0.0.0.0") + " " + value("dev", "-") +
                        " metric " + value("metric", "0"));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string ReadSys(const std::string& name, const char* file) {
    std::ifstream in("/sys/class/net/" + name + "/" + file);
    std::string value;
    in >> value;
    return value;
}

TEST(SystemTables, AgreeWithIpAndSysfs) {
    std::string addrs, routes;
    if (!Shell("ip -4 -o addr show", &addrs) || !Shell("ip -4 -o route show table main", &routes))
        GTEST_SKIP() << "the ip command (iproute2) is not available";
    CVTIpInfo snapshot;
    const _VTIPI_QUERY_INFO& info = *snapshot.Query();
    Lines got = Describe(info, false);
    std::sort(got.begin(), got.end());
    EXPECT_EQ(got, DescribeIp(addrs, routes));

    size_t links = 0;
    if (DIR* dir = opendir("/sys/class/net")) {
        while (dirent* entry = readdir(dir))
            links += entry->d_name[0] != '.';
        closedir(dir);
    }
    EXPECT_EQ(info.nInterfaceCount, links);
    for (uint32_t i = 0; i < info.nInterfaceCount; ++i) {
        const _VTIPI_IF_INFO& itf = info.pInterfaces[i];
        const std::string name = NameOf(info, itf.dwIndex);
        EXPECT_EQ(ReadSys(name, "ifindex"), std::to_string(itf.dwIndex)) << name;
        EXPECT_EQ(ReadSys(name, "mtu"), std::to_string(itf.dwMtu)) << name;
        EXPECT_EQ(ReadSys(name, "addr_len"), std::to_string(itf.dwPhysAddrLen)) << name;
        const bool up = std::stoul(ReadSys(name, "flags"), nullptr, 16) & IFF_UP;
        EXPECT_EQ(itf.dwAdminStatus, up ? 1u : 2u) << name;
        // Counters only grow: a snapshot's lies between two reads of sysfs around it.
        const uint32_t before = std::stoul(ReadSys(name, "statistics/tx_bytes"));
        CVTIpInfo again;
        const uint32_t octets = again.Query()->pInterfaces[i].dwOutOctets;
        const uint32_t after = std::stoul(ReadSys(name, "statistics/tx_bytes"));
        EXPECT_LE(octets - before, after - before) << name; // as 32-bit counters wrap
    }
}

TEST(SystemTables, FirstAddressIsTheDefaultRoutesSource) {
    std::string route, addrs, defaults;
    // A lookup in the routing table: nothing is sent.
    if (!Shell("ip -4 -o route get 198.51.100.1", &route))
        GTEST_SKIP() << "no default route here, or no ip command";
    const auto w = Words(route);
    const auto dev = std::find(w.begin(), w.end(), "dev"),
               src = std::find(w.begin(), w.end(), "src");
    ASSERT_TRUE(dev + 1 < w.end() && src + 1 < w.end()) << route;
    Shell("ip -4 -o route show default", &defaults);
    Shell("ip -4 -o addr show dev " + dev[1], &addrs);
    if (std::count(addrs.begin(), addrs.end(), '\n') != 1 ||
        std::count(defaults.begin(), defaults.end(), '\n') != 1)
        GTEST_SKIP() << "several default routes or addresses: the kernel and the rule may differ";
    EXPECT_EQ(Dotted(VETRA_GetLocalFirstIP()), src[1]);
}

// Run in a child with a network namespace of its own: builds the links,
// addresses and routes with `ip`, and after each step writes what the library
// sees to `out`. A first line "skip: ..." says the namespace can't be made.
void DescribeNamespace(int out) {
    auto say = [&](const std::string& text) {
        if (write(out, (text + "\n").data(), text.size() + 1) < 0) _exit(1);
    };
    if (unshare(CLONE_NEWNET) != 0)
        return say(std::string("skip: no network namespace (") + std::strerror(errno) + ")");
    std::string ignored;
    for (const char* command :
         {"ip link set lo up", "ip link add vt0 type veth peer name vt1", "ip link set vt0 up",
          "ip link set vt1 up", "ip addr add 10.200.0.2/24 brd + dev vt0",
          "ip addr add 10.200.0.3/24 dev vt0", "ip addr add 10.201.0.2/24 dev vt1",
          "ip route add default via 10.200.0.1 dev vt0 metric 10",
          "ip route add default via 10.201.0.1 dev vt1 metric 20"}) {
        if (!Shell(command, &ignored)) return say(std::string("skip: '") + command + "' failed");
    }
    auto snapshot = [&](const char* step, bool rows) {
        CVTIpInfo ipInfo;
        const _VTIPI_QUERY_INFO& info = *ipInfo.Query();
        say(std::string(step) + " first " + Dotted(VETRA_GetLocalFirstIP()) + " gateway " +
            Dotted(info.dwDefaultGateway));
        if (!rows) return;
        for (const std::string& line : Describe(info, true))
            say(line);
        for (uint32_t i = 0; i < info.nInterfaceCount; ++i) {
            const _VTIPI_IF_INFO& itf = info.pInterfaces[i];
            say("i " + NameOf(info, itf.dwIndex) + " type " + std::to_string(itf.dwType) +
                " oper " + std::to_string(itf.dwOperStatus) + " speed " +
                std::to_string(itf.dwSpeed));
        }
    };
    snapshot("A", true);
    // The best interface's address gets a lifetime, as DHCP gives it.
    Shell("ip addr change 10.200.0.2/24 brd + dev vt0 valid_lft 3600 preferred_lft 3600", &ignored);
    snapshot("B", false);
}

TEST(SystemTables, NamespaceEndToEnd) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(fds[0]);
        DescribeNamespace(fds[1]);
        _exit(0);
    }
    close(fds[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = read(fds[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, got);
    close(fds[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    if (text.rfind("skip: ", 0) == 0) GTEST_SKIP() << text;

    Lines lines;
    for (std::istringstream in(text); std::getline(in, text);)
        lines.push_back(text);
    const Lines expected = {
        "A first 10.200.0.2 gateway 10.200.0.1",
        "a 10.200.0.2/24 vt0 brd 10.200.0.255 type 1",
        "a 10.200.0.3/24 vt0 brd 0.0.0.0 type 0",
        "a 10.201.0.2/24 vt1 brd 0.0.0.0 type 1",
        "a 127.0.0.1/8 lo brd 0.0.0.0 type 1",
        "r 0.0.0.0/0 via 10.200.0.1 vt0 metric 10 type 4 proto 3",
        "r 0.0.0.0/0 via 10.201.0.1 vt1 metric 20 type 4 proto 3",
        "r 10.200.0.0/24 via 0.0.0.0 vt0 metric 0 type 3 proto 2",
        "r 10.201.0.0/24 via 0.0.0.0 vt1 metric 0 type 3 proto 2",
        "i lo type 24 oper 4 speed 0",
        "i vt1 type 6 oper 5 speed 4294967295", // veth says 10 Gbit/s
        "i vt0 type 6 oper 5 speed 4294967295",
        // vt0's address is now dynamic (type 5): vt1's plainly primary one
        // wins although its route's metric is worse.
        "B first 10.201.0.2 gateway 10.200.0.1",
    };
    EXPECT_EQ(lines, expected);
}

} // namespace
