// ip_snapshot.cpp - copies the system's table rows into the snapshot's
// records. The rows already hold the records' values; what is added here is
// the default gateway and the description's conversion to UTF-16.
#include "net/ip_snapshot.h"

#include <algorithm>
#include <iterator>
#include <memory>

namespace vetra::net {

namespace {

constexpr uint32_t kLongestDescription = 255;

// Reads one table with `read(rows)` and, if it has rows, sets `*array` and
// `*count` to records filled by `fill(row, record)`.
template <class Row, class Record, class Read, class Fill>
void ReadStage(Read read, Record** array, vtdword* count, Fill fill) {
    std::vector<Row> rows;
    if (!read(&rows) || rows.empty()) return;
    std::unique_ptr<Record[]> records(new Record[rows.size()]());
    for (size_t i = 0; i < rows.size(); ++i)
        fill(rows[i], records[i]);
    *count = static_cast<vtdword>(rows.size());
    *array = records.release();
}

void FillAddress(const platform::NetAddressRow& row, _VTIPI_ADDR_INFO& out) {
    out.dwAddr = row.addr;
    out.dwIndex = row.index;
    out.dwMask = row.mask;
    out.dwBCastAddr = row.broadcast;
    out.dwReasmSize = row.reasmSize;
    out.wType = row.type;
}

void FillRoute(const platform::NetRouteRow& row, _VTIPI_ROUTE_INFO& out) {
    out.dwForwardDest = row.dest;
    out.dwForwardMask = row.mask;
    out.dwForwardNextHop = row.nextHop;
    out.dwForwardIfIndex = row.ifIndex;
    out.dwForwardType = row.type;
    out.dwForwardProto = row.proto;
    out.dwForwardAge = row.age;
    out.dwForwardMetric1 = row.metric[0];
    out.dwForwardMetric2 = row.metric[1];
    out.dwForwardMetric3 = row.metric[2];
    out.dwForwardMetric4 = row.metric[3];
    out.dwForwardMetric5 = row.metric[4];
}

void FillInterface(const platform::NetInterfaceRow& row, _VTIPI_IF_INFO& out) {
    out.dwIndex = row.index;
    out.dwType = row.type;
    out.dwMtu = row.mtu;
    out.dwSpeed = row.speed;
    out.dwPhysAddrLen = row.physAddrLen;
    std::copy(std::begin(row.physAddr), std::end(row.physAddr), out.bPhysAddr);
    out.dwAdminStatus = row.adminStatus;
    out.dwOperStatus = row.operStatus;
    out.dwLastChange = row.lastChange;
    out.dwInOctets = row.inOctets;
    out.dwInUcastPkts = row.inUcastPkts;
    out.dwInNUcastPkts = row.inNUcastPkts;
    out.dwInDiscards = row.inDiscards;
    out.dwInErrors = row.inErrors;
    out.dwInUnknownProtos = row.inUnknownProtos;
    out.dwOutOctets = row.outOctets;
    out.dwOutUcastPkts = row.outUcastPkts;
    out.dwOutNUcastPkts = row.outNUcastPkts;
    out.dwOutDiscards = row.outDiscards;
    out.dwOutErrors = row.outErrors;
    out.dwOutQLen = row.outQLen;
    // The terminator is converted with the text. A description that fills
    // the whole row is cut to 255 bytes, and its 256th byte is converted in
    // the terminator's place.
    out.dwDescrLen = std::min(row.descrLen, kLongestDescription);
    platform::DecodeDescription(row.descr, out.dwDescrLen + 1,
                                reinterpret_cast<char16_t*>(out.wszDescr), std::size(out.wszDescr));
}

} // namespace

void TakeSnapshot(platform::NetTableSource& source, _VTIPI_QUERY_INFO* info) {
    using namespace platform;
    ReadStage<NetAddressRow>([&](auto* rows) { return source.ReadAddresses(rows); },
                             &info->pAddresses, &info->nAddressCount, FillAddress);
    ReadStage<NetRouteRow>([&](auto* rows) { return source.ReadRoutes(rows); }, &info->pRoutes,
                           &info->nRouteCount, FillRoute);
    for (uint32_t i = 0; i < info->nRouteCount; ++i) {
        if (info->pRoutes[i].dwForwardDest == 0) {
            info->dwDefaultGateway = info->pRoutes[i].dwForwardNextHop;
            break;
        }
    }
    ReadStage<NetInterfaceRow>([&](auto* rows) { return source.ReadInterfaces(rows); },
                               &info->pInterfaces, &info->nInterfaceCount, FillInterface);
}

void FreeSnapshot(_VTIPI_QUERY_INFO* info) {
    delete[] info->pInterfaces;
    delete[] info->pAddresses;
    delete[] info->pRoutes;
    *info = _VTIPI_QUERY_INFO{};
}

} // namespace vetra::net
