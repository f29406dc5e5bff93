// Tests of the snapshot on made-up tables: stages that fail alone, the
// default gateway, the description's conversion, and CVTIpInfo's ownership.
#include "net/ip_snapshot.h"

#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <string>

namespace vetra::net {
namespace {

using platform::NetAddressRow;
using platform::NetInterfaceRow;
using platform::NetRouteRow;

NetRouteRow Route(uint32_t dest, uint32_t nextHop) {
    NetRouteRow row{};
    row.dest = dest;
    row.nextHop = nextHop;
    return row;
}

// What the fake readers hand out; a reader whose flag is false fails.
struct FakeTables {
    bool addressesOk = true, routesOk = true, interfacesOk = true, interfacesThrow = false;
    std::vector<NetAddressRow> addresses{{0x0100007F, 1, 0xFF, 0, 65535, 1}};
    std::vector<NetRouteRow> routes{Route(0x000000C0, 0x050200C0), Route(0, 0x010200C0),
                                    Route(0, 2)};
    std::vector<NetInterfaceRow> interfaces{{}};
} g_tables;

struct FakeSource : platform::NetTableSource {
    bool ReadAddresses(std::vector<NetAddressRow>* rows) override {
        return *rows = g_tables.addresses, g_tables.addressesOk;
    }
    bool ReadRoutes(std::vector<NetRouteRow>* rows) override {
        return *rows = g_tables.routes, g_tables.routesOk;
    }
    bool ReadInterfaces(std::vector<NetInterfaceRow>* rows) override {
        if (g_tables.interfacesThrow) throw std::bad_alloc();
        return *rows = g_tables.interfaces, g_tables.interfacesOk;
    }
} g_fake;

class SnapshotTest : public ::testing::Test {
  protected:
    void SetUp() override { g_tables = FakeTables{}; }
    void TearDown() override { FreeSnapshot(&info_); }
    _VTIPI_QUERY_INFO info_{};
};

TEST_F(SnapshotTest, EachStageStandsAlone) {
    for (int failing = 0; failing < 4; ++failing) {
        g_tables.addressesOk = failing != 0;
        g_tables.routesOk = failing != 1;
        g_tables.interfacesOk = failing != 2;
        if (failing == 3) g_tables.routes.clear(); // read, but empty
        const bool routes = failing != 1 && failing != 3;
        TakeSnapshot(g_fake, &info_);
        EXPECT_EQ(info_.nAddressCount, failing == 0 ? 0u : 1u);
        EXPECT_EQ(info_.pAddresses != nullptr, failing != 0);
        EXPECT_EQ(info_.nRouteCount, routes ? 3u : 0u);
        EXPECT_EQ(info_.pRoutes != nullptr, routes);
        // The first default route gives the gateway, not a later one.
        EXPECT_EQ(info_.dwDefaultGateway, routes ? 0x010200C0u : 0u);
        EXPECT_EQ(info_.nInterfaceCount, failing == 2 ? 0u : 1u);
        EXPECT_EQ(info_.pInterfaces != nullptr, failing != 2);
        FreeSnapshot(&info_);
    }
}

TEST_F(SnapshotTest, Description) {
    const struct {
        std::string bytes;
        uint32_t descrLen, storedLen;
        std::u16string text; // with the first null unit, or all 256 units
    } cases[] = {
        {"w\xC3\xA9\xFF", 4, 4, std::u16string(u"w\u00E9\uFFFD") + u'\0'},
        {std::string(300, 'a'), 300, 255, std::u16string(256, u'a')},
    };
    for (const auto& c : cases) {
        NetInterfaceRow& row = g_tables.interfaces[0];
        std::memcpy(row.descr, c.bytes.data(), std::min(c.bytes.size(), sizeof row.descr));
        row.descrLen = c.descrLen;
        TakeSnapshot(g_fake, &info_);
        const _VTIPI_IF_INFO& i = info_.pInterfaces[0];
        EXPECT_EQ(i.dwDescrLen, c.storedLen) << c.bytes;
        EXPECT_EQ(std::u16string(i.wszDescr, i.wszDescr + c.text.size()), c.text) << c.bytes;
        FreeSnapshot(&info_);
    }
}

TEST_F(SnapshotTest, OutOfMemoryKeepsTheTablesRead) {
    g_tables.interfacesThrow = true;
    EXPECT_THROW(TakeSnapshot(g_fake, &info_), std::bad_alloc);
    EXPECT_EQ(info_.nAddressCount, 1u);
    EXPECT_EQ(info_.nRouteCount, 3u);
    EXPECT_EQ(info_.pInterfaces, nullptr);
}

struct OpenIpInfo : CVTIpInfo {
    using CVTIpInfo::Cleanup;
};

TEST(IpInfo, Ownership) {
    OpenIpInfo fresh;
    EXPECT_EQ(fresh.Cleanup(), 1);

    // The record stays; the first snapshot's arrays are freed (the leak checker sees to it).
    OpenIpInfo owner;
    _VTIPI_QUERY_INFO* info = owner.Query();
    EXPECT_EQ(owner.Query(), info);

    // Assignment shares the arrays: `owner` forgets them without freeing, and
    // `other` frees them once.
    OpenIpInfo other;
    other = owner;
    owner = OpenIpInfo{};
    EXPECT_EQ(info->pAddresses, nullptr);
}

} // namespace
} // namespace vetra::net
