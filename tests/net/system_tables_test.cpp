// Tests of the snapshot and the first local address against the real system:
// this machine's tables as `ip` and /sys/class/net show them, and a network
// namespace of our own with a veth pair, a secondary address and two default
// routes, where every row can be known in advance.
#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <net/if.h>
#include <sched.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "vetra/ip_info.h"

namespace {

std::string Dotted(uint32_t networkOrder) {
    char text[INET_ADDRSTRLEN];
    in_addr addr{networkOrder};
    return inet_ntop(AF_INET, &addr, text, sizeof text);
}

std::string MaskOf(int prefix) {
    return Dotted(prefix == 0 ? 0 : htonl(~uint32_t{0} << (32 - prefix)));
}

// Runs a shell command into `out`; false if it failed.
bool Shell(const std::string& command, std::string* out) {
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    if (!pipe) return false;
    char buffer[4096];
    size_t got;
    out->clear();
    while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        out->append(buffer, got);
    return pclose(pipe) == 0;
}

std::vector<std::vector<std::string>> Lines(const std::string& text) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::vector<std::string> tokens;
        for (std::string word; words >> word;)
            tokens.push_back(word);
        if (!tokens.empty()) lines.push_back(tokens);
    }
    return lines;
}

std::string ReadSys(const std::string& name, const char* file) {
    std::ifstream in("/sys/class/net/" + name + "/" + file);
    std::string value;
    in >> value;
    return value;
}

std::string NameOf(const _VTIPI_QUERY_INFO& info, uint32_t index) {
    for (uint32_t i = 0; i < info.nInterfaceCount; ++i) {
        if (info.pInterfaces[i].dwIndex != index) continue;
        const vtchar* text = info.pInterfaces[i].wszDescr;
        return std::string(text, text + info.pInterfaces[i].dwDescrLen);
    }
    return index ? "#" + std::to_string(index) : "-";
}

// The snapshot as text, one line per row in the snapshot's order; interfaces
// named, so that a test can spell out what it expects.
std::vector<std::string> AddressLines(const _VTIPI_QUERY_INFO& info) {
    std::vector<std::string> lines;
    for (uint32_t i = 0; i < info.nAddressCount; ++i) {
        const _VTIPI_ADDR_INFO& a = info.pAddresses[i];
        lines.push_back(Dotted(a.dwAddr) + "/" + Dotted(a.dwMask) + " " + NameOf(info, a.dwIndex) +
                        " brd " + Dotted(a.dwBCastAddr) + " type " + std::to_string(a.wType));
    }
    return lines;
}

std::vector<std::string> RouteLines(const _VTIPI_QUERY_INFO& info) {
    std::vector<std::string> lines;
    for (uint32_t i = 0; i < info.nRouteCount; ++i) {
        const _VTIPI_ROUTE_INFO& r = info.pRoutes[i];
        lines.push_back(Dotted(r.dwForwardDest) + "/" + Dotted(r.dwForwardMask) + " via " +
                        Dotted(r.dwForwardNextHop) + " " + NameOf(info, r.dwForwardIfIndex) +
                        " type " + std::to_string(r.dwForwardType) + " proto " +
                        std::to_string(r.dwForwardProto) + " metric " +
                        std::to_string(r.dwForwardMetric1));
    }
    return lines;
}

// `ip -4 -o addr` in the same form: "secondary" and "dynamic" are the flags.
std::vector<std::string> AddressLinesOfIp(const std::string& text) {
    std::vector<std::string> lines;
    for (const auto& t : Lines(text)) {
        std::string brd = "0.0.0.0";
        int type = 1;
        for (size_t i = 4; i < t.size(); ++i) {
            if (t[i] == "brd" && i + 1 < t.size()) brd = t[i + 1];
            if (t[i] == "secondary") type &= ~1;
            if (t[i] == "dynamic") type |= 4;
        }
        const size_t slash = t[3].find('/');
        lines.push_back(t[3].substr(0, slash) + "/" + MaskOf(std::stoi(t[3].substr(slash + 1))) +
                        " " + t[1] + " brd " + brd + " type " + std::to_string(type));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

// `ip -4 -o route show table main` in the same form.
std::vector<std::string> RouteLinesOfIp(const std::string& text) {
    static const std::map<std::string, int> kProtos = {
        {"kernel", 2}, {"boot", 3}, {"static", 3}, {"dhcp", 3}, {"redirect", 4}};
    std::vector<std::string> lines;
    for (const auto& t : Lines(text)) {
        size_t i = 0;
        int type = 0;
        if (t[i] == "blackhole" || t[i] == "unreachable" || t[i] == "prohibit" || t[i] == "throw")
            type = 2, ++i;
        else if (t[i] == "unicast")
            ++i;
        std::string dest = t[i] == "default" ? "0.0.0.0/0" : t[i];
        if (dest.find('/') == std::string::npos) dest += "/32";
        std::map<std::string, std::string> keys = {
            {"via", "0.0.0.0"}, {"dev", "-"}, {"proto", "boot"}, {"metric", "0"}};
        for (++i; i + 1 < t.size(); ++i)
            if (keys.count(t[i])) keys[t[i]] = t[i + 1];
        if (!type) type = keys["via"] == "0.0.0.0" ? 3 : 4;
        const auto proto = kProtos.find(keys["proto"]);
        const size_t slash = dest.find('/');
        lines.push_back(dest.substr(0, slash) + "/" + MaskOf(std::stoi(dest.substr(slash + 1))) +
                        " via " + keys["via"] + " " + keys["dev"] + " type " +
                        std::to_string(type) + " proto " +
                        std::to_string(proto != kProtos.end() ? proto->second : 1) + " metric " +
                        keys["metric"]);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::vector<std::string> Sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

TEST(SystemTables, AgreeWithIpAndSysfs) {
    std::string addrText, routeText;
    if (!Shell("ip -4 -o addr show", &addrText) ||
        !Shell("ip -4 -o route show table main", &routeText))
        GTEST_SKIP() << "the ip command (iproute2) is not available";

    CVTIpInfo snapshot;
    const _VTIPI_QUERY_INFO& info = *snapshot.Query();
    EXPECT_EQ(Sorted(AddressLines(info)), AddressLinesOfIp(addrText));
    EXPECT_EQ(Sorted(RouteLines(info)), RouteLinesOfIp(routeText));

    // The default gateway is that of the default route of the lowest metric.
    std::string gateway = "0.0.0.0";
    long best = LONG_MAX;
    for (const std::string& line : RouteLinesOfIp(routeText)) {
        const auto t = Lines(line)[0];
        if (t[0] == "0.0.0.0/0.0.0.0" && std::stol(t.back()) < best)
            best = std::stol(t.back()), gateway = t[2];
    }
    EXPECT_EQ(Dotted(info.dwDefaultGateway), gateway);

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
        EXPECT_EQ(itf.dwType == 24, ReadSys(name, "type") == "772") << name;
        // Counters only grow: the snapshot's lies between two reads of sysfs around it.
        const unsigned long before = std::stoul(ReadSys(name, "statistics/tx_bytes"));
        CVTIpInfo again;
        const _VTIPI_QUERY_INFO& later = *again.Query();
        const unsigned long after = std::stoul(ReadSys(name, "statistics/tx_bytes"));
        ASSERT_EQ(later.nInterfaceCount, info.nInterfaceCount);
        EXPECT_GE(later.pInterfaces[i].dwOutOctets, static_cast<uint32_t>(before)) << name;
        EXPECT_LE(later.pInterfaces[i].dwOutOctets, static_cast<uint32_t>(after)) << name;
    }
}

TEST(SystemTables, FirstAddressIsTheDefaultRoutesSource) {
    std::string routeText, addrText;
    // A lookup in the routing table only: nothing is sent.
    if (!Shell("ip -4 -o route get 198.51.100.1", &routeText))
        GTEST_SKIP() << "no default route here, or no ip command";
    const auto t = Lines(routeText)[0];
    const auto dev = std::find(t.begin(), t.end(), "dev"),
               src = std::find(t.begin(), t.end(), "src");
    ASSERT_TRUE(dev != t.end() && src != t.end()) << routeText;
    std::string defaults;
    Shell("ip -4 -o route show default", &defaults);
    if (Shell("ip -4 -o addr show dev " + dev[1], &addrText) && Lines(addrText).size() != 1)
        GTEST_SKIP() << dev[1] << " has several addresses: the kernel and the rule may differ";
    for (const auto& line : Lines(defaults))
        if (std::find(line.begin(), line.end(), dev[1]) == line.end())
            GTEST_SKIP() << "default routes through several interfaces";
    EXPECT_EQ(Dotted(VETRA_GetLocalFirstIP()), src[1]);
}

// In a child process with a network namespace of its own: builds the links,
// addresses and routes with `ip`, and after each step writes the snapshot as
// text to `out`. A first line "skip: ..." says the namespace can't be made.
void DescribeNamespace(int out) {
    auto say = [&](const std::string& text) {
        const std::string line = text + "\n";
        if (write(out, line.data(), line.size()) < 0) _exit(1);
    };
    if (unshare(CLONE_NEWNET) != 0) {
        say(std::string("skip: no network namespace (") + std::strerror(errno) + ")");
        return;
    }
    const char* setup[] = {
        "ip link set lo up",
        "ip link add vt0 type veth peer name vt1",
        "ip link set vt0 up",
        "ip link set vt1 up",
        "ip addr add 10.200.0.2/24 brd + dev vt0",
        "ip addr add 10.200.0.3/24 dev vt0",
        "ip addr add 10.201.0.2/24 dev vt1",
        "ip route add default via 10.200.0.1 dev vt0 metric 10",
        "ip route add default via 10.201.0.1 dev vt1 metric 20",
    };
    std::string ignored;
    for (const char* command : setup) {
        if (!Shell(command, &ignored)) {
            say(std::string("skip: '") + command + "' failed");
            return;
        }
    }
    auto snapshot = [&](const char* step) {
        CVTIpInfo ipInfo;
        const _VTIPI_QUERY_INFO& info = *ipInfo.Query();
        say(std::string(step) + " first " + Dotted(VETRA_GetLocalFirstIP()) + " gateway " +
            Dotted(info.dwDefaultGateway));
        for (const std::string& line : AddressLines(info))
            say(std::string(step) + " addr " + line);
        for (const std::string& line : RouteLines(info))
            say(std::string(step) + " route " + line);
        for (uint32_t i = 0; i < info.nInterfaceCount; ++i) {
            const _VTIPI_IF_INFO& itf = info.pInterfaces[i];
            say(std::string(step) + " if " + NameOf(info, itf.dwIndex) + " type " +
                std::to_string(itf.dwType) + " oper " + std::to_string(itf.dwOperStatus) +
                " speed " + std::to_string(itf.dwSpeed));
        }
    };
    snapshot("A");
    // The best interface's address becomes a DHCP-like one, with a lifetime.
    Shell("ip addr change 10.200.0.2/24 brd + dev vt0 valid_lft 3600 preferred_lft 3600", &ignored);
    snapshot("B");
    // Taking one end down leaves both without carrier: no candidate. The
    // kernel notes vt0's loss of carrier a moment later.
    Shell("ip link set vt1 down", &ignored);
    for (int tries = 0; tries < 200; ++tries) {
        CVTIpInfo ipInfo;
        const _VTIPI_QUERY_INFO& info = *ipInfo.Query();
        if (std::all_of(info.pInterfaces, info.pInterfaces + info.nInterfaceCount,
                        [](const _VTIPI_IF_INFO& itf) { return itf.dwOperStatus != 5; }))
            break;
        usleep(10000);
    }
    snapshot("C");
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
    ssize_t got;
    while ((got = read(fds[0], buffer, sizeof buffer)) > 0)
        text.append(buffer, got);
    close(fds[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    if (text.rfind("skip: ", 0) == 0) GTEST_SKIP() << text;

    std::vector<std::string> lines;
    for (std::istringstream in(text); std::getline(in, text);)
        lines.push_back(text);
    const std::vector<std::string> expected = {
        "A first 10.200.0.2 gateway 10.200.0.1",
        "A addr 10.200.0.2/255.255.255.0 vt0 brd 10.200.0.255 type 1",
        "A addr 10.200.0.3/255.255.255.0 vt0 brd 0.0.0.0 type 0",
        "A addr 10.201.0.2/255.255.255.0 vt1 brd 0.0.0.0 type 1",
        "A addr 127.0.0.1/255.0.0.0 lo brd 0.0.0.0 type 1",
        "A route 0.0.0.0/0.0.0.0 via 10.200.0.1 vt0 type 4 proto 3 metric 10",
        "A route 0.0.0.0/0.0.0.0 via 10.201.0.1 vt1 type 4 proto 3 metric 20",
        "A route 10.200.0.0/255.255.255.0 via 0.0.0.0 vt0 type 3 proto 2 metric 0",
        "A route 10.201.0.0/255.255.255.0 via 0.0.0.0 vt1 type 3 proto 2 metric 0",
        "A if lo type 24 oper 4 speed 0",
        "A if vt1 type 6 oper 5 speed 4294967295", // veth says 10 Gbit/s
        "A if vt0 type 6 oper 5 speed 4294967295",
        // vt0's address now has a lifetime: vt1's plainly primary one wins
        // although its route's metric is worse.
        "B first 10.201.0.2 gateway 10.200.0.1",
        "B addr 10.200.0.2/255.255.255.0 vt0 brd 10.200.0.255 type 5",
        "B addr 10.200.0.3/255.255.255.0 vt0 brd 0.0.0.0 type 0",
        "B addr 10.201.0.2/255.255.255.0 vt1 brd 0.0.0.0 type 1",
        "B addr 127.0.0.1/255.0.0.0 lo brd 0.0.0.0 type 1",
        "B route 0.0.0.0/0.0.0.0 via 10.200.0.1 vt0 type 4 proto 3 metric 10",
        "B route 0.0.0.0/0.0.0.0 via 10.201.0.1 vt1 type 4 proto 3 metric 20",
        "B route 10.200.0.0/255.255.255.0 via 0.0.0.0 vt0 type 3 proto 2 metric 0",
        "B route 10.201.0.0/255.255.255.0 via 0.0.0.0 vt1 type 3 proto 2 metric 0",
        "B if lo type 24 oper 4 speed 0",
        "B if vt1 type 6 oper 5 speed 4294967295",
        "B if vt0 type 6 oper 5 speed 4294967295",
        // vt1 is down and its routes are gone; vt0 has lost its carrier.
        "C first 0.0.0.0 gateway 10.200.0.1",
        "C addr 10.200.0.2/255.255.255.0 vt0 brd 10.200.0.255 type 5",
        "C addr 10.200.0.3/255.255.255.0 vt0 brd 0.0.0.0 type 0",
        "C addr 10.201.0.2/255.255.255.0 vt1 brd 0.0.0.0 type 1",
        "C addr 127.0.0.1/255.0.0.0 lo brd 0.0.0.0 type 1",
        "C route 0.0.0.0/0.0.0.0 via 10.200.0.1 vt0 type 4 proto 3 metric 10",
        "C route 10.200.0.0/255.255.255.0 via 0.0.0.0 vt0 type 3 proto 2 metric 0",
        "C if lo type 24 oper 4 speed 0",
        "C if vt1 type 6 oper 2 speed 0",
        "C if vt0 type 6 oper 2 speed 4294967295",
    };
    EXPECT_EQ(lines, expected);
}

} // namespace
