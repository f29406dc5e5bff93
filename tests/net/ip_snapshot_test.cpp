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

// What the fake readers hand out; a reader without `ok` fails.
struct FakeTables {
    bool addressesOk = true, routesOk = true, interfacesOk = true, interfacesThrow = false;
    std::vector<NetAddressRow> addresses;
    std::vector<NetRouteRow> routes;
    std::vector<NetInterfaceRow> interfaces;
};
FakeTables g_tables;

const platform::NetTableReaders kFakeReaders{
    [](std::vector<NetAddressRow>* rows) {
        return *rows = g_tables.addresses, g_tables.addressesOk;
    },
    [](std::vector<NetRouteRow>* rows) { return *rows = g_tables.routes, g_tables.routesOk; },
    [](std::vector<NetInterfaceRow>* rows) {
        if (g_tables.interfacesThrow) throw std::bad_alloc();
        return *rows = g_tables.interfaces, g_tables.interfacesOk;
    },
};

NetRouteRow Route(uint32_t dest, uint32_t nextHop) {
    NetRouteRow row{};
    row.dest = dest;
    row.nextHop = nextHop;
    return row;
}

NetInterfaceRow Interface(const std::string& name, uint32_t descrLen) {
    NetInterfaceRow row{};
    std::memcpy(row.descr, name.data(), std::min(name.size(), sizeof row.descr));
    row.descrLen = descrLen;
    return row;
}

class SnapshotTest : public ::testing::Test {
  protected:
    void SetUp() override {
        g_tables = FakeTables{};
        g_tables.addresses = {{0x0100007F, 1, 0xFF, 0, 65535, 1}};
        g_tables.routes = {Route(0x000000C0, 0), Route(0, 0x010200C0), Route(0, 0x020200C0)};
        g_tables.interfaces = {Interface("eth0", 4)};
    }
    void TearDown() override { FreeSnapshot(&info_); }
    _VTIPI_QUERY_INFO info_{};
};

TEST_F(SnapshotTest, EachStageStandsAlone) {
    struct Case {
        bool addressesOk, routesOk, interfacesOk;
    };
    for (const Case c :
         {Case{false, true, true}, Case{true, false, true}, Case{true, true, false}}) {
        g_tables.addressesOk = c.addressesOk;
        g_tables.routesOk = c.routesOk;
        g_tables.interfacesOk = c.interfacesOk;
        TakeSnapshot(kFakeReaders, &info_);
        EXPECT_EQ(info_.nAddressCount, c.addressesOk ? 1u : 0u);
        EXPECT_EQ(info_.pAddresses != nullptr, c.addressesOk);
        EXPECT_EQ(info_.nRouteCount, c.routesOk ? 3u : 0u);
        EXPECT_EQ(info_.pRoutes != nullptr, c.routesOk);
        EXPECT_EQ(info_.dwDefaultGateway, c.routesOk ? 0x010200C0u : 0u);
        EXPECT_EQ(info_.nInterfaceCount, c.interfacesOk ? 1u : 0u);
        EXPECT_EQ(info_.pInterfaces != nullptr, c.interfacesOk);
        FreeSnapshot(&info_);
    }
}

TEST_F(SnapshotTest, EmptyTableGivesNull) {
    g_tables.routes.clear();
    TakeSnapshot(kFakeReaders, &info_);
    EXPECT_EQ(info_.pRoutes, nullptr);
    EXPECT_EQ(info_.nRouteCount, 0u);
    EXPECT_EQ(info_.dwDefaultGateway, 0u);
    EXPECT_EQ(info_.nAddressCount, 1u);
    EXPECT_EQ(info_.nInterfaceCount, 1u);
}

TEST_F(SnapshotTest, RowsCopied) {
    NetInterfaceRow itf = Interface("eth0", 4);
    itf.index = 4;
    itf.speed = 1000000000;
    itf.physAddrLen = 6;
    itf.physAddr[5] = 0xEE;
    itf.outQLen = 9;
    g_tables.interfaces = {itf};
    g_tables.routes[1].metric[4] = 7;
    TakeSnapshot(kFakeReaders, &info_);
    const _VTIPI_ADDR_INFO& a = info_.pAddresses[0];
    EXPECT_EQ(a.dwAddr, 0x0100007Fu);
    EXPECT_EQ(a.dwMask, 0xFFu);
    EXPECT_EQ(a.wType, 1);
    EXPECT_EQ(info_.pRoutes[1].dwForwardMetric5, 7u);
    const _VTIPI_IF_INFO& i = info_.pInterfaces[0];
    EXPECT_EQ(i.dwIndex, 4u);
    EXPECT_EQ(i.dwSpeed, 1000000000u);
    EXPECT_EQ(i.bPhysAddr[5], 0xEE);
    EXPECT_EQ(i.dwOutQLen, 9u);
}

TEST_F(SnapshotTest, Description) {
    struct Case {
        std::string bytes;
        uint32_t descrLen;
        uint32_t storedLen;
        std::u16string text; // up to and with the first null unit, or all 256 units
    };
    const Case cases[] = {
        {"eth0", 4, 4, std::u16string(u"eth0") + u'\0'},
        {"w\xC3\xA9\xFF", 4, 4, std::u16string(u"w\u00E9\uFFFD") + u'\0'},
        {std::string(300, 'a'), 300, 255, std::u16string(256, u'a')},
    };
    for (const Case& c : cases) {
        g_tables.interfaces = {Interface(c.bytes, c.descrLen)};
        TakeSnapshot(kFakeReaders, &info_);
        const _VTIPI_IF_INFO& i = info_.pInterfaces[0];
        EXPECT_EQ(i.dwDescrLen, c.storedLen) << c.bytes;
        EXPECT_EQ(std::u16string(i.wszDescr, i.wszDescr + c.text.size()), c.text) << c.bytes;
        FreeSnapshot(&info_);
    }
}

TEST_F(SnapshotTest, OutOfMemoryKeepsTheTablesRead) {
    g_tables.interfacesThrow = true;
    EXPECT_THROW(TakeSnapshot(kFakeReaders, &info_), std::bad_alloc);
    EXPECT_EQ(info_.nAddressCount, 1u);
    EXPECT_EQ(info_.nRouteCount, 3u);
    EXPECT_EQ(info_.pInterfaces, nullptr);
}

// Reaches the protected Cleanup.
struct OpenIpInfo : CVTIpInfo {
    using CVTIpInfo::Cleanup;
};

TEST(IpInfo, Ownership) {
    OpenIpInfo fresh;
    EXPECT_EQ(fresh.Cleanup(), 1);
    EXPECT_EQ(fresh.IsTcpIpInstalled(), 1);

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
