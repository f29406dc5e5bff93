// net_tables.h - the machine's three IPv4 tables as plain rows: addresses,
// routes and interfaces, each read from the system in one go and sorted.
//
// Field values are already those of the library's records (interface types,
// status codes, route types and protocols, address flags); addresses stay in
// network byte order. Nothing here joins the tables, and nothing is shared
// between sources: different threads may use sources of their own at once.
#ifndef VETRA_PLATFORM_NET_TABLES_H
#define VETRA_PLATFORM_NET_TABLES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vetra::platform {

/// Type flags of an address row. A secondary address has neither bit or
/// only kAddressDynamic.
enum NetAddressType : uint16_t {
    kAddressPrimary = 0x1, // the first address of its subnet on the interface
    kAddressDynamic = 0x4, // it has a lifetime (handed out by DHCP), not permanent
};

/// One IPv4 address of an interface.
struct NetAddressRow {
    uint32_t addr;      // network byte order, as every address below
    uint32_t index;     // interface index
    uint32_t mask;      // from the prefix length
    uint32_t broadcast; // 0 where the address has none
    uint32_t reasmSize; // largest datagram reassembled
    uint16_t type;      // NetAddressType bits
};

/// Route types and the protocols that made a route, as the records give them.
enum NetRouteType : uint32_t {
    kRouteInvalid = 2,  // the route discards its packets
    kRouteDirect = 3,   // no gateway
    kRouteIndirect = 4, // through a gateway
};
enum NetRouteProto : uint32_t {
    kProtoOther = 1,
    kProtoLocal = 2,   // made by the kernel
    kProtoNetMgmt = 3, // static, boot-time or DHCP
    kProtoIcmp = 4,    // an ICMP redirect
    kProtoRip = 8,
    kProtoIsIs = 9,
    kProtoCisco = 11, // EIGRP
    kProtoOspf = 13,
    kProtoBgp = 14,
};

/// One route of the main table; a route with several next hops gives a row
/// per next hop.
struct NetRouteRow {
    uint32_t dest;
    uint32_t mask;
    uint32_t nextHop; // 0 without a gateway
    uint32_t ifIndex; // 0 without an outgoing interface
    uint32_t type;    // NetRouteType
    uint32_t proto;   // NetRouteProto
    uint32_t age;
    uint32_t metric[5];
};

/// Interface types (IANA numbers) and status codes, as the records give them.
enum NetInterfaceType : uint32_t {
    kIfOther = 1,
    kIfEthernet = 6,
    kIfPpp = 23,
    kIfLoopback = 24,
    kIfTunnel = 131,
};
enum NetAdminStatus : uint32_t { kAdminUp = 1, kAdminDown = 2 };
enum NetOperStatus : uint32_t {
    kOperNonOperational = 0, // testing
    kOperDisconnected = 2,   // down, lower layer down, not present
    kOperConnecting = 3,     // dormant
    kOperConnected = 4,      // state unknown, but up and running
    kOperOperational = 5,    // up
};

/// One interface, with its counters cut to 32 bits.
struct NetInterfaceRow {
    uint32_t index;
    uint32_t type; // NetInterfaceType
    uint32_t mtu;
    uint32_t speed; // bit/s, 0 when unknown
    uint32_t physAddrLen;
    uint8_t physAddr[8];
    uint32_t adminStatus; // NetAdminStatus
    uint32_t operStatus;  // NetOperStatus
    uint32_t lastChange;
    uint32_t inOctets;
    uint32_t inUcastPkts;
    uint32_t inNUcastPkts;
    uint32_t inDiscards;
    uint32_t inErrors;
    uint32_t inUnknownProtos;
    uint32_t outOctets;
    uint32_t outUcastPkts;
    uint32_t outNUcastPkts;
    uint32_t outDiscards;
    uint32_t outErrors;
    uint32_t outQLen;
    uint32_t descrLen; // bytes of descr before its terminator
    char descr[256];   // null-terminated when descrLen < 256; see DecodeDescription
};

/// A source of the three tables. Each read replaces `rows` with the table,
/// sorted (on POSIX systems addresses by address in host order, then index;
/// routes by destination, mask, metric, then interface index, numbers in host
/// order; interfaces by index; on Windows in the IP helper's sorted order,
/// with its values), and returns true; or returns false when the table
/// can't be read whole (no access to the system's tables, a malformed
/// answer, or a table that changed during the read), `rows` then holding
/// anything. A failed read leaves the source fit for the next one. Throws
/// std::bad_alloc when memory runs out. One thread at a time.
class NetTableSource {
  public:
    virtual ~NetTableSource() = default;
    virtual bool ReadAddresses(std::vector<NetAddressRow>* rows) = 0;
    virtual bool ReadRoutes(std::vector<NetRouteRow>* rows) = 0;
    virtual bool ReadInterfaces(std::vector<NetInterfaceRow>* rows) = 0;
};

/// Converts `length` bytes of an interface row's description to at most `capacity` UTF-16
/// units at `out`, a null byte converted as any other; returns the units written. The bytes
/// are the interface name in UTF-8 on POSIX systems, and the description in the ANSI code
/// page on Windows.
size_t DecodeDescription(const char* descr, size_t length, char16_t* out, size_t capacity);

/// A source of this machine's tables, holding one connection to the system
/// for all its reads (made at the first read). Throws std::bad_alloc.
std::unique_ptr<NetTableSource> OpenSystemNetTables();

} // namespace vetra::platform

#endif // VETRA_PLATFORM_NET_TABLES_H
