// net_tables.cpp (Windows) - the three IPv4 tables from the IP helper interface:
// GetIpAddrTable, GetIpForwardTable and GetIfTable, each asked for its sorted form.
//
// Each table is read with one size probe and one read, without a retry: a table that grows
// between the two fails that read. The rows keep the system's order and values; interface
// descriptions stay in the ANSI code page until DecodeDescription.
#include "platform/net_tables.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <winsock2.h>

#include <windows.h>

#include <iphlpapi.h>

namespace vetra::platform {
namespace {

// Reads a table with `get(buffer, &size, TRUE)`: the probe with no buffer, then the read.
// Null when either fails; the buffer is aligned for the table's rows.
template <class Table, class Get> std::unique_ptr<uint64_t[]> ReadTable(Get get) {
    ULONG size = 0;
    get(nullptr, &size, TRUE);
    if (size == 0) return nullptr;
    std::unique_ptr<uint64_t[]> buffer(new uint64_t[(size + 7) / 8]);
    if (get(reinterpret_cast<Table*>(buffer.get()), &size, TRUE) != NO_ERROR) return nullptr;
    return buffer;
}

class IpHelperSource final : public NetTableSource {
  public:
    bool ReadAddresses(std::vector<NetAddressRow>* rows) override {
        rows->clear();
        const auto buffer = ReadTable<MIB_IPADDRTABLE>(GetIpAddrTable);
        if (buffer == nullptr) return false;
        const auto* table = reinterpret_cast<const MIB_IPADDRTABLE*>(buffer.get());
        for (DWORD i = 0; i < table->dwNumEntries; ++i) {
            const MIB_IPADDRROW& row = table->table[i];
            rows->push_back(
                {row.dwAddr, row.dwIndex, row.dwMask, row.dwBCastAddr, row.dwReasmSize, row.wType});
        }
        return true;
    }

    bool ReadRoutes(std::vector<NetRouteRow>* rows) override {
        rows->clear();
        const auto buffer = ReadTable<MIB_IPFORWARDTABLE>(GetIpForwardTable);
        if (buffer == nullptr) return false;
        const auto* table = reinterpret_cast<const MIB_IPFORWARDTABLE*>(buffer.get());
        for (DWORD i = 0; i < table->dwNumEntries; ++i) {
            const MIB_IPFORWARDROW& row = table->table[i];
            rows->push_back({row.dwForwardDest,
                             row.dwForwardMask,
                             row.dwForwardNextHop,
                             row.dwForwardIfIndex,
                             row.dwForwardType,
                             row.dwForwardProto,
                             row.dwForwardAge,
                             {row.dwForwardMetric1, row.dwForwardMetric2, row.dwForwardMetric3,
                              row.dwForwardMetric4, row.dwForwardMetric5}});
        }
        return true;
    }

    bool ReadInterfaces(std::vector<NetInterfaceRow>* rows) override {
        rows->clear();
        const auto buffer = ReadTable<MIB_IFTABLE>(GetIfTable);
        if (buffer == nullptr) return false;
        const auto* table = reinterpret_cast<const MIB_IFTABLE*>(buffer.get());
        for (DWORD i = 0; i < table->dwNumEntries; ++i) {
            const MIB_IFROW& row = table->table[i];
            NetInterfaceRow out{};
            out.index = row.dwIndex;
            out.type = row.dwType;
            out.mtu = row.dwMtu;
            out.speed = row.dwSpeed;
            out.physAddrLen = row.dwPhysAddrLen;
            std::memcpy(out.physAddr, row.bPhysAddr, sizeof out.physAddr);
            out.adminStatus = row.dwAdminStatus;
            out.operStatus = static_cast<uint32_t>(row.dwOperStatus);
            out.lastChange = row.dwLastChange;
            out.inOctets = row.dwInOctets;
            out.inUcastPkts = row.dwInUcastPkts;
            out.inNUcastPkts = row.dwInNUcastPkts;
            out.inDiscards = row.dwInDiscards;
            out.inErrors = row.dwInErrors;
            out.inUnknownProtos = row.dwInUnknownProtos;
            out.outOctets = row.dwOutOctets;
            out.outUcastPkts = row.dwOutUcastPkts;
            out.outNUcastPkts = row.dwOutNUcastPkts;
            out.outDiscards = row.dwOutDiscards;
            out.outErrors = row.dwOutErrors;
            out.outQLen = row.dwOutQLen;
            out.descrLen = row.dwDescrLen;
            std::memcpy(out.descr, row.bDescr, sizeof out.descr);
            rows->push_back(out);
        }
        return true;
    }
};

} // namespace

std::unique_ptr<NetTableSource> OpenSystemNetTables() {
    return std::make_unique<IpHelperSource>();
}

size_t DecodeDescription(const char* descr, size_t length, char16_t* out, size_t capacity) {
    const int units =
        ::MultiByteToWideChar(CP_ACP, 0, descr, static_cast<int>(length),
                              reinterpret_cast<wchar_t*>(out), static_cast<int>(capacity));
    return units > 0 ? static_cast<size_t>(units) : 0;
}

} // namespace vetra::platform
