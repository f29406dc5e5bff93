// Tests of the first-local-address rule on made-up snapshots: which
// interfaces are candidates, which one is best, and when an address with
// further flags gives way to a plainly primary one elsewhere.
#include "net/first_address.h"

#include <gtest/gtest.h>
#include <vector>

namespace vetra::net {
namespace {

struct If {
    uint32_t index, status, inUcast, outUcast;
};
struct Route {
    uint32_t ifIndex, dest, metric;
};
struct Addr {
    uint32_t index, addr;
    uint16_t type;
};

struct Case {
    const char* name;
    std::vector<If> interfaces;
    std::vector<Route> routes;
    std::vector<Addr> addresses;
    uint32_t expected;
    uint32_t fillerRows = 0; // rows of interface 99 put before `addresses`
};

constexpr uint32_t kDefault = 0, kSubnet = 0x0002000A;

const Case kCases[] = {
    {"no connected interface",
     {{2, 2, 0, 0}, {3, 3, 0, 0}},
     {{2, kDefault, 1}, {3, kDefault, 1}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0},
    {"no default route",
     {{1, 4, 0, 0}, {2, 5, 0, 0}},
     {{2, kSubnet, 1}},
     {{1, 0xA, 1}, {2, 0xB, 1}},
     0},
    {"status 4 counts", {{2, 4, 0, 0}}, {{2, kDefault, 0}}, {{2, 0xA, 1}}, 0xA},
    {"status 5 counts", {{2, 5, 0, 0}}, {{2, kDefault, 0}}, {{2, 0xA, 1}}, 0xA},
    {"lower metric wins",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{3, kDefault, 20}, {2, kDefault, 10}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0xA},
    {"lower metric wins, later",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 20}, {3, kDefault, 10}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0xB},
    {"equal metrics: more packets",
     {{2, 5, 60, 40}, {3, 5, 100, 100}},
     {{2, kDefault, 10}, {3, kDefault, 10}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0xB},
    {"equal metrics and packets: the first",
     {{2, 5, 100, 100}, {3, 5, 150, 50}},
     {{2, kDefault, 10}, {3, kDefault, 10}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0xA},
    {"packets summed in 32 bits",
     {{2, 5, 0xFFFFFFFF, 2}, {3, 5, 1, 1}},
     {{2, kDefault, 10}, {3, kDefault, 10}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0xB},
    {"the interface's first default route gives its metric",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 30}, {3, kDefault, 20}, {2, kDefault, 10}},
     {{2, 0xA, 1}, {3, 0xB, 1}},
     0xB},
    {"one candidate, dynamic address", {{2, 5, 0, 0}}, {{2, kDefault, 0}}, {{2, 0xA, 5}}, 0xA},
    {"one candidate, no address", {{2, 5, 0, 0}}, {{2, kDefault, 0}}, {{3, 0xB, 1}}, 0},
    {"best dynamic, second plainly primary",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{2, 0xA, 5}, {3, 0xB, 1}},
     0xB},
    {"best dynamic, second dynamic",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{2, 0xA, 5}, {3, 0xB, 5}},
     0xA},
    {"best without address, second dynamic",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{3, 0xB, 5}},
     0},
    {"best without address, second plainly primary",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{3, 0xB, 1}},
     0xB},
    {"only an interface's first address counts",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{2, 0xA, 5}, {3, 0xB, 5}, {2, 0xC, 1}, {3, 0xD, 1}},
     0xA},
    {"other candidates in list order, not by metric",
     {{2, 5, 0, 0}, {3, 5, 0, 0}, {4, 5, 0, 0}},
     {{4, kDefault, 10}, {3, kDefault, 20}, {2, kDefault, 30}},
     {{4, 0xA, 5}, {3, 0xB, 1}, {2, 0xC, 1}},
     0xC},
    {"an interface not connected is no candidate",
     {{2, 5, 0, 0}, {3, 2, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{2, 0xA, 5}, {3, 0xB, 1}},
     0xA},
    {"best candidate of index 0",
     {{0, 5, 0, 0}, {3, 5, 0, 0}},
     {{0, kDefault, 10}, {3, kDefault, 20}},
     {{0, 0xA, 1}, {3, 0xB, 1}},
     0},
    {"the best one's address is looked for in the whole table",
     {{2, 5, 0, 0}},
     {{2, kDefault, 0}},
     {{2, 0xA, 5}},
     0xA,
     300},
    {"the others' only in the first 256 rows",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{3, 0xB, 1}, {2, 0xA, 5}},
     0xA,
     256},
    {"row 255 is still looked at",
     {{2, 5, 0, 0}, {3, 5, 0, 0}},
     {{2, kDefault, 10}, {3, kDefault, 20}},
     {{3, 0xB, 1}, {2, 0xA, 5}},
     0xB,
     255},
};

TEST(FirstLocalAddress, Rule) {
    for (const Case& c : kCases) {
        std::vector<_VTIPI_IF_INFO> interfaces(c.interfaces.size());
        for (size_t i = 0; i < interfaces.size(); ++i) {
            interfaces[i].dwIndex = c.interfaces[i].index;
            interfaces[i].dwOperStatus = c.interfaces[i].status;
            interfaces[i].dwInUcastPkts = c.interfaces[i].inUcast;
            interfaces[i].dwOutUcastPkts = c.interfaces[i].outUcast;
        }
        std::vector<_VTIPI_ROUTE_INFO> routes(c.routes.size());
        for (size_t i = 0; i < routes.size(); ++i) {
            routes[i].dwForwardIfIndex = c.routes[i].ifIndex;
            routes[i].dwForwardDest = c.routes[i].dest;
            routes[i].dwForwardMetric1 = c.routes[i].metric;
        }
        std::vector<_VTIPI_ADDR_INFO> addresses(c.fillerRows);
        for (_VTIPI_ADDR_INFO& filler : addresses)
            filler = {0x63, 99, 0, 0, 0, 1};
        for (const Addr& a : c.addresses)
            addresses.push_back({a.addr, a.index, 0, 0, 0, a.type});

        _VTIPI_QUERY_INFO info{};
        info.pInterfaces = interfaces.empty() ? nullptr : interfaces.data();
        info.pRoutes = routes.empty() ? nullptr : routes.data();
        info.pAddresses = addresses.empty() ? nullptr : addresses.data();
        info.nInterfaceCount = static_cast<uint32_t>(interfaces.size());
        info.nRouteCount = static_cast<uint32_t>(routes.size());
        info.nAddressCount = static_cast<uint32_t>(addresses.size());
        EXPECT_EQ(ChooseFirstLocalAddress(info), c.expected) << c.name;
    }
}

TEST(FirstLocalAddress, EmptySnapshot) {
    EXPECT_EQ(ChooseFirstLocalAddress({}), 0u);
}

} // namespace
} // namespace vetra::net
