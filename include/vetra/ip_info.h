// ip_info.h - CVTIpInfo, one snapshot of the machine's IPv4 configuration
// (interfaces, addresses, routes and the default gateway), and
// VETRA_GetLocalFirstIP, the one address the machine presents as its own.
//
// The snapshot is three plain arrays linked only by interface index; nothing
// here joins them. On Linux the tables are read from the kernel over
// rtnetlink (and each link's speed from its driver), IPv4 only. On Windows
// they are the IP helper's GetIpAddrTable, GetIpForwardTable and GetIfTable,
// sorted by the system, with the system's values in every field (the notes
// on Linux below don't apply there).
#ifndef VETRA_IP_INFO_H
#define VETRA_IP_INFO_H

#include <cstdint>

#include "vetra/vetra_export.h"

/// One network interface. Every link the kernel knows is listed, also those
/// without an IPv4 address and those that are down.
struct _VTIPI_IF_INFO {
    /// Interface index, as `ip link` shows it (never 0).
    vtdword dwIndex;
    /// IANA interface type: 6 Ethernet (also Wi-Fi, bridges, veth and other
    /// virtual Ethernet links, which Linux can't tell apart here), 24
    /// loopback, 23 PPP, 131 tunnel (IP-in-IP, GRE, SIT, and links without
    /// a hardware header, such as tun and WireGuard), 1 anything else.
    vtdword dwType;
    /// Largest packet, in bytes.
    vtdword dwMtu;
    /// Speed in bits per second: the figure that /sys/class/net/<name>/speed
    /// and ethtool show in Mbit/s, asked of the driver in the caller's own
    /// network namespace. 0 when the link is down, is a loopback, or the
    /// driver doesn't know (many virtual links). A speed of 4.3 Gbit/s or
    /// more reads 4294967295: the field can't hold more.
    vtdword dwSpeed;
    /// Bytes used in bPhysAddr: the link's hardware address, cut to 8 bytes;
    /// 0 for a link without one (tun). Loopback has 6 bytes, all zero.
    vtdword dwPhysAddrLen;
    uint8_t bPhysAddr[8];
    /// 1 when the link is up (IFF_UP), 2 when it is down.
    vtdword dwAdminStatus;
    /// 5 operational (kernel state "up"); 4 connected: state "unknown" with
    /// IFF_UP and IFF_RUNNING set, as loopback and many virtual links report;
    /// 3 dormant; 0 testing; 2 for everything else (down, lower layer down,
    /// not present, unknown but not running).
    vtdword dwOperStatus;
    /// Always 0: Linux keeps no time of a link's last status change.
    vtdword dwLastChange;
    /// Counters of the link since it was created, from the kernel's 64-bit
    /// statistics, keeping their low 32 bits (they wrap as 32-bit counters
    /// do). Linux counts multicast inside the received packets and keeps no
    /// broadcast count, so dwInUcastPkts is received packets less multicast
    /// ones and dwInNUcastPkts the multicast ones; it counts no outgoing
    /// multicast at all, so dwOutUcastPkts is every packet sent and
    /// dwOutNUcastPkts 0. dwInUnknownProtos is 0: Linux counts packets of a
    /// protocol it doesn't know among the discarded ones (dwInDiscards).
    /// dwOutQLen is 0: Linux gives no current queue length per link.
    vtdword dwInOctets;
    vtdword dwInUcastPkts;
    vtdword dwInNUcastPkts;
    vtdword dwInDiscards;
    vtdword dwInErrors;
    vtdword dwInUnknownProtos;
    vtdword dwOutOctets;
    vtdword dwOutUcastPkts;
    vtdword dwOutNUcastPkts;
    vtdword dwOutDiscards;
    vtdword dwOutErrors;
    vtdword dwOutQLen;
    /// Length of the description in bytes, without its terminator, at most
    /// 255. The description is the interface name ("eth0"), at most 15 bytes
    /// on Linux.
    vtdword dwDescrLen;
    /// The description as UTF-16 text with its terminator, decoded from the
    /// name's bytes as UTF-8 (a byte that is no UTF-8 becomes U+FFFD); the
    /// rest of the array is zero.
    vtchar wszDescr[256];
};

/// One IPv4 address of an interface. Addresses keep the network byte order
/// of the wire, as in struct in_addr: 192.0.2.1 is the bytes C0 00 02 01 in
/// memory, so `inet_ntoa(in_addr{dwAddr})` prints it.
struct _VTIPI_ADDR_INFO {
    /// The address (the local one on a point-to-point link).
    vtdword dwAddr;
    /// Index of its interface.
    vtdword dwIndex;
    /// Subnet mask from the prefix length: /24 gives the bytes FF FF FF 00.
    vtdword dwMask;
    /// The broadcast address configured with the address (`ip addr`'s
    /// "brd"), or 0 where it has none (point-to-point links, /31 and /32).
    /// A Windows build gives 1 here for the usual all-ones broadcast; on
    /// Linux it is the broadcast address itself.
    vtdword dwBCastAddr;
    /// Largest datagram that is reassembled: always 65535.
    vtdword dwReasmSize;
    /// Type flags: 1 for a primary address, plus 4 when the address is not
    /// permanent (it has a lifetime, as DHCP clients give their addresses).
    /// A secondary address lacks the 1: 0 or 4.
    uint16_t wType;
};

/// One IPv4 route of the main routing table (the one `ip route` shows).
/// Destination, mask and next hop are in network byte order. A route with
/// several next hops gives one record per next hop.
struct _VTIPI_ROUTE_INFO {
    /// Destination; 0 marks a default route.
    vtdword dwForwardDest;
    /// Destination mask from the prefix length.
    vtdword dwForwardMask;
    /// The gateway; 0 for a route without one (directly attached).
    vtdword dwForwardNextHop;
    /// Index of the outgoing interface; 0 for a route that has none
    /// (blackhole, unreachable, prohibit).
    vtdword dwForwardIfIndex;
    /// 3 without a gateway, 4 with one, 2 for a route that discards its
    /// packets (blackhole, unreachable, prohibit, throw).
    vtdword dwForwardType;
    /// Who made the route: 2 the kernel, 3 a static or boot-time route (also
    /// DHCP clients'), 4 an ICMP redirect, 8 RIP, 9 IS-IS, 11 EIGRP, 13 OSPF,
    /// 14 BGP, 1 any other routing daemon.
    vtdword dwForwardProto;
    /// Always 0: Linux keeps no age of a route.
    vtdword dwForwardAge;
    /// dwForwardMetric1 is the route's metric (`ip route`'s "metric", 0 when
    /// none is set); the other four are always 0.
    vtdword dwForwardMetric1;
    vtdword dwForwardMetric2;
    vtdword dwForwardMetric3;
    vtdword dwForwardMetric4;
    vtdword dwForwardMetric5;
};

/// A snapshot: three arrays with their counts, and the default gateway.
///
/// Order. Interfaces by index; addresses by address (compared as numbers in
/// host order, so 10.0.0.2 before 192.0.2.1), then by interface index;
/// routes by destination, then mask, then metric, then interface index,
/// the same way: the default routes come first, the best metric first.
struct _VTIPI_QUERY_INFO {
    /// nInterfaceCount records, or null when there are none.
    _VTIPI_IF_INFO* pInterfaces;
    /// nAddressCount records, or null when there are none.
    _VTIPI_ADDR_INFO* pAddresses;
    /// nRouteCount records, or null when there are none.
    _VTIPI_ROUTE_INFO* pRoutes;
    vtdword nInterfaceCount;
    vtdword nAddressCount;
    vtdword nRouteCount;
    /// Next hop of the first default route in pRoutes (so of the one with
    /// the lowest metric), or 0 when there is none or it has no gateway.
    vtdword dwDefaultGateway;
};

/// Holds one snapshot of the machine's IPv4 configuration.
///
/// Threads: an object belongs to one thread at a time; different objects are
/// independent. Reading the record while another thread runs Query on the
/// same object is not allowed: Query frees the arrays first.
class VETRA_API CVTIpInfo {
  public:
    /// An empty snapshot: every field of the record 0 or null.
    CVTIpInfo();
    /// Frees the arrays, as Cleanup does.
    ~CVTIpInfo();
    /// Copy construction and assignment copy every field of the record, the
    /// array pointers included: both objects then name the same arrays, and
    /// only one of them may go on to free them (by Query, Cleanup or its
    /// destructor); the other must not be used or destroyed after that.
    /// Assignment does not free the arrays the target held before.
    CVTIpInfo(const CVTIpInfo& other) = default;
    CVTIpInfo& operator=(const CVTIpInfo& other) = default;

    /// Takes a new snapshot and returns the object's own record, never null,
    /// valid as long as the object; its content changes at the next Query.
    ///
    /// The arrays of the last snapshot are freed first. The three tables are
    /// read one after the other (addresses, routes, interfaces), each in one
    /// read of the kernel's table: a table that can't be read, or that
    /// changed while it was being read, stays empty (null, count 0) without
    /// a retry, and the others are still read. No error is reported beyond
    /// that. Throws std::bad_alloc when memory runs out; the record then
    /// holds the tables read so far.
    _VTIPI_QUERY_INFO* Query();

    /// Always 1.
    int IsTcpIpInstalled();

  protected:
    /// Frees the three arrays and sets every field of the record to 0 or
    /// null. Always 1.
    int Cleanup();

  private:
    _VTIPI_QUERY_INFO m_queryInfo;
};

extern "C" {

/// The IPv4 address this machine presents as its own, in network byte order
/// as dwAddr holds it, or 0 when none can be chosen.
///
/// Takes a snapshot with CVTIpInfo::Query and applies this rule to it:
/// - The candidates are the interfaces, in index order, whose dwOperStatus
///   is 4 or 5 and that have a default route (the first one in pRoutes
///   counts). Loopback has no default route and never counts. No candidate
///   gives 0.
/// - The best is the one of the lowest route metric; among equal metrics the
///   one with the most unicast packets received and sent (summed in 32
///   bits); among equal ones the earlier.
/// - The first address of the best interface in pAddresses is the answer if
///   its wType is exactly 1 (permanent primary), or if the best is the only
///   candidate. Otherwise the first other candidate, in index order, whose
///   first address is among the first 256 records of pAddresses and has a
///   wType of exactly 1 gives its address instead; failing that the best
///   interface's first address stands (0 if it has none).
/// So a DHCP address (wType 5) on the best interface gives way to a
/// permanent one on another interface that also has a default route.
///
/// Safe to call from several threads at once. Throws std::bad_alloc when
/// memory runs out.
VETRA_API vtdword VETRA_GetLocalFirstIP();

} // extern "C"

#endif // VETRA_IP_INFO_H
