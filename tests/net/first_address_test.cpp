// Tests of the first-local-address rule on made-up snapshots: which
// interfaces are candidates, which one is best, and when an address with
// further flags gives way to a plainly primary one elsewhere.
#include "net/first_address.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace vetra::net {
namespace {

// A snapshot written as words, in array order:
//   I<index>:<status>[:<in>:<out>]  an interface with its unicast packets
//   D<index>:<metric>                a default route; S<index>:<metric> a subnet route
//   A<index>:<hex address>:<type>    an address; F<n> n addresses of interface 99
struct Snapshot {
    std::vector<_VTIPI_IF_INFO> interfaces;
    std::vector<_VTIPI_ROUTE_INFO> routes;
    std::vector<_VTIPI_ADDR_INFO> addresses;

    explicit Snapshot(const std::string& words) {
        std::istringstream in(words);
        for (std::string w; in >> w;) {
            unsigned a = 0, b = 0, c = 0, d = 0;
            std::sscanf(w.c_str() + 1, w[0] == 'A' ? "%u:%x:%u" : "%u:%u:%u:%u", &a, &b, &c, &d);
            if (w[0] == 'I') {
                interfaces.push_back({});
                interfaces.back().dwIndex = a;
                interfaces.back().dwOperStatus = b;
                interfaces.back().dwInUcastPkts = c;
                interfaces.back().dwOutUcastPkts = d;
            } else if (w[0] == 'D' || w[0] == 'S') {
                routes.push_back({w[0] == 'D' ? 0u : 0x0002000Au, 0, 0, a, 0, 0, 0, b, 0, 0, 0, 0});
            } else if (w[0] == 'A') {
                addresses.push_back({b, a, 0, 0, 0, static_cast<uint16_t>(c)});
            } else {
                addresses.insert(addresses.end(), a, _VTIPI_ADDR_INFO{0x63, 99, 0, 0, 0, 1});
            }
        }
    }
    _VTIPI_QUERY_INFO Info() {
        return {interfaces.data(),
                addresses.data(),
                routes.data(),
                static_cast<uint32_t>(interfaces.size()),
                static_cast<uint32_t>(addresses.size()),
                static_cast<uint32_t>(routes.size()),
                0};
    }
};

TEST(FirstLocalAddress, Rule) {
    const struct {
        const char* name;
        const char* snapshot;
        uint32_t expected;
    } cases[] = {
        {"nothing at all", "", 0},
        {"no connected interface", "I2:2 I3:3 D2:1 D3:1 A2:a:1 A3:b:1", 0},
        {"no default route", "I1:4 I2:5 S2:1 A1:a:1 A2:b:1", 0},
        {"status 4 counts", "I2:4 D2:0 A2:a:1", 0xa},
        {"lower metric wins", "I2:5 I3:5 D2:20 D3:10 A2:a:1 A3:b:1", 0xb},
        {"equal metrics: more packets", "I2:5:60:40 I3:5:100:100 D2:10 D3:10 A2:a:1 A3:b:1", 0xb},
        {"all equal: the first", "I2:5:100:100 I3:5:150:50 D2:10 D3:10 A2:a:1 A3:b:1", 0xa},
        {"packets summed in 32 bits", "I2:5:4294967295:2 I3:5:1:1 D2:10 D3:10 A2:a:1 A3:b:1", 0xb},
        {"an interface's first default route counts", "I2:5 I3:5 D2:30 D3:20 D2:10 A2:a:1 A3:b:1",
         0xb},
        {"one candidate, dynamic address", "I2:5 D2:0 A2:a:5", 0xa},
        {"one candidate, no address", "I2:5 D2:0 A3:b:1", 0},
        {"best dynamic, second plainly primary", "I2:5 I3:5 D2:10 D3:20 A2:a:5 A3:b:1", 0xb},
        {"best dynamic, second dynamic", "I2:5 I3:5 D2:10 D3:20 A2:a:5 A3:b:5", 0xa},
        {"best without address, second dynamic", "I2:5 I3:5 D2:10 D3:20 A3:b:5", 0},
        {"best without address, second primary", "I2:5 I3:5 D2:10 D3:20 A3:b:1", 0xb},
        {"only an interface's first address counts",
         "I2:5 I3:5 D2:10 D3:20 A2:a:5 A3:b:5 A2:c:1 A3:d:1", 0xa},
        {"the others in list order, not by metric",
         "I2:5 I3:5 I4:5 D4:10 D3:20 D2:30 A4:a:5 A3:b:1 A2:c:1", 0xc},
        {"a disconnected interface is no candidate", "I2:5 I3:2 D2:10 D3:20 A2:a:5 A3:b:1", 0xa},
        {"best candidate of index 0", "I0:5 I3:5 D0:10 D3:20 A0:a:1 A3:b:1", 0},
        {"the best one's address anywhere in the table", "I2:5 D2:0 F300 A2:a:5", 0xa},
        {"the others' only in the first 256 rows", "I2:5 I3:5 D2:10 D3:20 F256 A3:b:1 A2:a:5", 0xa},
        {"row 255 is still read", "I2:5 I3:5 D2:10 D3:20 F255 A3:b:1 A2:a:5", 0xb},
    };
    for (const auto& c : cases) {
        Snapshot snapshot(c.snapshot);
        EXPECT_EQ(ChooseFirstLocalAddress(snapshot.Info()), c.expected) << c.name;
    }
}

} // namespace
} // namespace vetra::net
