// rtnetlink_rows.cpp - the parsers of rtnetlink's address, route and link
// messages, and the mapping of Linux's codes onto the records' values.
//
// Sections: attribute walk and code tables; addresses; routes; links; link
// speed; order.
#include "platform/posix/rtnetlink_rows.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <tuple>

namespace vetra::platform::rtnl {

namespace {

// ---- attribute walk ----

struct Attribute {
    uint16_t type;
    const unsigned char* data;
    size_t size;
};

// Calls `take(const Attribute&)` on each attribute in `length` bytes at `data`.
// False if an attribute claims more bytes than remain; a tail too short to
// hold an attribute header is padding.
template <class Take> bool ForEachAttribute(const unsigned char* data, size_t length, Take&& take) {
    size_t offset = 0;
    while (length - offset >= sizeof(rtattr)) {
        rtattr header;
        std::memcpy(&header, data + offset, sizeof header);
        if (header.rta_len < sizeof(rtattr) || header.rta_len > length - offset) return false;
        take(Attribute{static_cast<uint16_t>(header.rta_type & NLA_TYPE_MASK),
                       data + offset + RTA_LENGTH(0), header.rta_len - RTA_LENGTH(0)});
        offset = std::min(length, offset + RTA_ALIGN(header.rta_len));
    }
    return true;
}

// The family header of `msg`, copied out, and the attributes behind it; false
// if the message is too short to hold the header.
template <class Header>
bool SplitMessage(const nlmsghdr& msg, Header* header, const unsigned char** attrs,
                  size_t* attrLength) {
    if (msg.nlmsg_len < NLMSG_LENGTH(sizeof(Header))) return false;
    const auto* payload = reinterpret_cast<const unsigned char*>(NLMSG_DATA(&msg));
    std::memcpy(header, payload, sizeof(Header));
    const size_t skip = NLMSG_ALIGN(sizeof(Header));
    const size_t payloadLength = msg.nlmsg_len - NLMSG_LENGTH(0);
    *attrs = payload + std::min(skip, payloadLength);
    *attrLength = payloadLength > skip ? payloadLength - skip : 0;
    return true;
}

// A 32-bit attribute value; false if the attribute is shorter.
bool ReadU32(const Attribute& attr, uint32_t* value) {
    if (attr.size < sizeof(uint32_t)) return false;
    std::memcpy(value, attr.data, sizeof(uint32_t));
    return true;
}

// The mask of a prefix length of 0 to 32, in network byte order.
uint32_t PrefixMask(unsigned prefix) {
    return prefix == 0 ? 0 : htonl(~uint32_t{0} << (32 - prefix));
}

// One Linux code and the record's value for it.
template <class From, class To> struct Mapping {
    From from;
    To to;
};

template <class From, class To, size_t N>
uint32_t Lookup(const Mapping<From, To> (&table)[N], From from, To otherwise) {
    for (const auto& entry : table)
        if (entry.from == from) return entry.to;
    return otherwise;
}

// ---- addresses ----

constexpr uint32_t kLargestReassembly = 65535;

} // namespace

Parse ParseAddress(const nlmsghdr& msg, NetAddressRow* row) {
    if (msg.nlmsg_type != RTM_NEWADDR) return Parse::kSkip;
    ifaddrmsg header;
    const unsigned char* attrs;
    size_t attrLength;
    if (!SplitMessage(msg, &header, &attrs, &attrLength)) return Parse::kBad;
    if (header.ifa_family != AF_INET) return Parse::kSkip;
    if (header.ifa_prefixlen > 32) return Parse::kBad;

    bool haveAddress = false, haveLocal = false, sizesOk = true;
    uint32_t address = 0, local = 0, broadcast = 0, flags = header.ifa_flags;
    const bool ok = ForEachAttribute(attrs, attrLength, [&](const Attribute& attr) {
        switch (attr.type) {
        case IFA_ADDRESS:
            sizesOk &= haveAddress = ReadU32(attr, &address);
            break;
        case IFA_LOCAL:
            sizesOk &= haveLocal = ReadU32(attr, &local);
            break;
        case IFA_BROADCAST:
            sizesOk &= ReadU32(attr, &broadcast);
            break;
        case IFA_FLAGS:
            sizesOk &= ReadU32(attr, &flags);
            break; // the full 32-bit word
        default:
            break;
        }
    });
    if (!ok || !sizesOk) return Parse::kBad;
    if (!haveAddress && !haveLocal) return Parse::kSkip;

    // On a point-to-point link IFA_ADDRESS is the peer and IFA_LOCAL our own.
    row->addr = haveLocal ? local : address;
    row->index = header.ifa_index;
    row->mask = PrefixMask(header.ifa_prefixlen);
    row->broadcast = broadcast;
    row->reasmSize = kLargestReassembly;
    row->type = static_cast<uint16_t>(((flags & IFA_F_SECONDARY) ? 0 : kAddressPrimary) |
                                      ((flags & IFA_F_PERMANENT) ? 0 : kAddressDynamic));
    return Parse::kRow;
}

// ---- routes ----

namespace {

// Linux's route protocols that have a counterpart among the records' values;
// every other one is kProtoOther.
constexpr Mapping<unsigned char, NetRouteProto> kRouteProtos[] = {
    {RTPROT_REDIRECT, kProtoIcmp},  {RTPROT_KERNEL, kProtoLocal}, {RTPROT_BOOT, kProtoNetMgmt},
    {RTPROT_STATIC, kProtoNetMgmt}, {RTPROT_DHCP, kProtoNetMgmt}, {186 /*BGP*/, kProtoBgp},
    {187 /*IS-IS*/, kProtoIsIs},    {188 /*OSPF*/, kProtoOspf},   {189 /*RIP*/, kProtoRip},
    {192 /*EIGRP*/, kProtoCisco},
};

bool DiscardsPackets(unsigned char rtmType) {
    return rtmType == RTN_BLACKHOLE || rtmType == RTN_UNREACHABLE || rtmType == RTN_PROHIBIT ||
           rtmType == RTN_THROW;
}

// The next hop of a route or of one of its paths: RTA_GATEWAY, or RTA_VIA
// (which may name an IPv6 gateway: a gateway still, but no IPv4 next hop).
struct Hop {
    bool gateway = false;
    uint32_t nextHop = 0;
    bool sizesOk = true;

    void Take(const Attribute& attr) {
        if (attr.type == RTA_GATEWAY) {
            sizesOk &= gateway = ReadU32(attr, &nextHop);
        } else if (attr.type == RTA_VIA) {
            sa_family_t family;
            if (attr.size < sizeof family) {
                sizesOk = false;
                return;
            }
            std::memcpy(&family, attr.data, sizeof family);
            gateway = true;
            if (family == AF_INET) {
                Attribute addr{attr.type, attr.data + sizeof family, attr.size - sizeof family};
                sizesOk &= ReadU32(addr, &nextHop);
            }
        }
    }
};

} // namespace

Parse ParseRoute(const nlmsghdr& msg, std::vector<NetRouteRow>* rows) {
    if (msg.nlmsg_type != RTM_NEWROUTE) return Parse::kSkip;
    rtmsg header;
    const unsigned char* attrs;
    size_t attrLength;
    if (!SplitMessage(msg, &header, &attrs, &attrLength)) return Parse::kBad;
    if (header.rtm_family != AF_INET || (header.rtm_flags & RTM_F_CLONED)) return Parse::kSkip;
    if (header.rtm_dst_len > 32) return Parse::kBad;

    uint32_t table = header.rtm_table, dest = 0, ifIndex = 0, metric = 0;
    bool sizesOk = true;
    Hop hop;
    const unsigned char* paths = nullptr;
    size_t pathsLength = 0;
    const bool ok = ForEachAttribute(attrs, attrLength, [&](const Attribute& attr) {
        switch (attr.type) {
        case RTA_TABLE:
            sizesOk &= ReadU32(attr, &table);
            break;
        case RTA_DST:
            sizesOk &= ReadU32(attr, &dest);
            break;
        case RTA_OIF:
            sizesOk &= ReadU32(attr, &ifIndex);
            break;
        case RTA_PRIORITY:
            sizesOk &= ReadU32(attr, &metric);
            break;
        case RTA_MULTIPATH:
            paths = attr.data;
            pathsLength = attr.size;
            break;
        default:
            hop.Take(attr);
            break;
        }
    });
    if (!ok || !sizesOk || !hop.sizesOk) return Parse::kBad;
    if (table != RT_TABLE_MAIN) return Parse::kSkip;

    NetRouteRow row{};
    row.dest = dest;
    row.mask = PrefixMask(header.rtm_dst_len);
    row.proto = Lookup(kRouteProtos, header.rtm_protocol, kProtoOther);
    row.metric[0] = metric;
    const bool discards = DiscardsPackets(header.rtm_type);
    auto add = [&](const Hop& h, uint32_t index) {
        row.nextHop = h.nextHop;
        row.ifIndex = index;
        row.type = discards ? kRouteInvalid : h.gateway ? kRouteIndirect : kRouteDirect;
        rows->push_back(row);
    };
    if (!paths) {
        add(hop, ifIndex);
        return Parse::kRow;
    }

    // One row per path; each path is an rtnexthop with its own attributes.
    size_t offset = 0, added = 0;
    while (pathsLength - offset >= sizeof(rtnexthop)) {
        rtnexthop path;
        std::memcpy(&path, paths + offset, sizeof path);
        if (path.rtnh_len < sizeof(rtnexthop) || path.rtnh_len > pathsLength - offset)
            return Parse::kBad;
        Hop pathHop;
        if (!ForEachAttribute(paths + offset + RTNH_LENGTH(0), path.rtnh_len - RTNH_LENGTH(0),
                              [&](const Attribute& attr) { pathHop.Take(attr); }) ||
            !pathHop.sizesOk)
            return Parse::kBad;
        add(pathHop, static_cast<uint32_t>(path.rtnh_ifindex));
        ++added;
        offset = std::min(pathsLength, offset + RTNH_ALIGN(path.rtnh_len));
    }
    return added ? Parse::kRow : Parse::kBad;
}

// ---- links ----

namespace {

// IANA interface types of Linux's hardware types; anything else is kIfOther.
constexpr Mapping<unsigned short, NetInterfaceType> kLinkTypes[] = {
    {ARPHRD_ETHER, kIfEthernet}, {ARPHRD_LOOPBACK, kIfLoopback}, {ARPHRD_PPP, kIfPpp},
    {ARPHRD_TUNNEL, kIfTunnel},  {ARPHRD_TUNNEL6, kIfTunnel},    {ARPHRD_SIT, kIfTunnel},
    {ARPHRD_IPGRE, kIfTunnel},   {ARPHRD_IP6GRE, kIfTunnel},     {ARPHRD_NONE, kIfTunnel},
};

// The kernel's operational state (RFC 2863) as the records' status. "Unknown"
// is what drivers without carrier detection report (loopback, tun, dummy):
// such a link counts as connected when it is up and running.
uint32_t OperStatus(int operState, unsigned flags) {
    switch (operState) {
    case IF_OPER_UP:
        return kOperOperational;
    case IF_OPER_DORMANT:
        return kOperConnecting;
    case IF_OPER_TESTING:
        return kOperNonOperational;
    case IF_OPER_NOTPRESENT:
    case IF_OPER_DOWN:
    case IF_OPER_LOWERLAYERDOWN:
        return kOperDisconnected;
    default:
        return (flags & IFF_UP) && (flags & IFF_RUNNING) ? kOperConnected : kOperDisconnected;
    }
}

// The counters the records keep, whichever statistics block the kernel sent.
struct LinkCounters {
    uint64_t rxBytes = 0, rxPackets = 0, multicast = 0, rxDropped = 0, rxErrors = 0;
    uint64_t txBytes = 0, txPackets = 0, txDropped = 0, txErrors = 0;

    template <class Stats> void From(const Attribute& attr) {
        Stats stats{}; // a kernel older than these headers sends a shorter block
        std::memcpy(&stats, attr.data, std::min(attr.size, sizeof stats));
        rxBytes = stats.rx_bytes;
        rxPackets = stats.rx_packets;
        multicast = stats.multicast;
        rxDropped = stats.rx_dropped;
        rxErrors = stats.rx_errors;
        txBytes = stats.tx_bytes;
        txPackets = stats.tx_packets;
        txDropped = stats.tx_dropped;
        txErrors = stats.tx_errors;
    }
};

} // namespace

Parse ParseLink(const nlmsghdr& msg, NetInterfaceRow* row) {
    if (msg.nlmsg_type != RTM_NEWLINK) return Parse::kSkip;
    ifinfomsg header;
    const unsigned char* attrs;
    size_t attrLength;
    if (!SplitMessage(msg, &header, &attrs, &attrLength)) return Parse::kBad;

    std::memset(row, 0, sizeof *row);
    int operState = IF_OPER_UNKNOWN;
    bool sizesOk = true, have64 = false;
    LinkCounters counters;
    const bool ok = ForEachAttribute(attrs, attrLength, [&](const Attribute& attr) {
        switch (attr.type) {
        case IFLA_IFNAME: {
            // Up to its terminator, if the kernel's string has one.
            const void* end = std::memchr(attr.data, 0, attr.size);
            const size_t length =
                end ? static_cast<size_t>(static_cast<const unsigned char*>(end) - attr.data)
                    : attr.size;
            row->descrLen = static_cast<uint32_t>(std::min(length, sizeof row->descr - 1));
            std::memcpy(row->descr, attr.data, row->descrLen);
            break;
        }
        case IFLA_MTU:
            sizesOk &= ReadU32(attr, &row->mtu);
            break;
        case IFLA_ADDRESS:
            row->physAddrLen = static_cast<uint32_t>(std::min(attr.size, sizeof row->physAddr));
            std::memcpy(row->physAddr, attr.data, row->physAddrLen);
            break;
        case IFLA_OPERSTATE:
            if (attr.size < 1)
                sizesOk = false;
            else
                operState = attr.data[0];
            break;
        case IFLA_STATS64:
            counters.From<rtnl_link_stats64>(attr);
            have64 = true;
            break;
        case IFLA_STATS:
            if (!have64) counters.From<rtnl_link_stats>(attr);
            break;
        default:
            break;
        }
    });
    if (!ok || !sizesOk) return Parse::kBad;

    row->index = static_cast<uint32_t>(header.ifi_index);
    row->type = Lookup(kLinkTypes, header.ifi_type, kIfOther);
    row->adminStatus = (header.ifi_flags & IFF_UP) ? kAdminUp : kAdminDown;
    row->operStatus = OperStatus(operState, header.ifi_flags);
    // The records' counters are 32 bits wide and wrap: keep the low bits.
    row->inOctets = static_cast<uint32_t>(counters.rxBytes);
    row->inUcastPkts = static_cast<uint32_t>(
        counters.rxPackets > counters.multicast ? counters.rxPackets - counters.multicast : 0);
    row->inNUcastPkts = static_cast<uint32_t>(counters.multicast);
    row->inDiscards = static_cast<uint32_t>(counters.rxDropped);
    row->inErrors = static_cast<uint32_t>(counters.rxErrors);
    row->outOctets = static_cast<uint32_t>(counters.txBytes);
    row->outUcastPkts = static_cast<uint32_t>(counters.txPackets);
    row->outDiscards = static_cast<uint32_t>(counters.txDropped);
    row->outErrors = static_cast<uint32_t>(counters.txErrors);
    return Parse::kRow;
}

// ---- link speed ----

uint32_t SpeedBits(uint32_t megabits) {
    constexpr uint32_t kUnknown = 0xFFFFFFFF; // SPEED_UNKNOWN, -1
    constexpr uint64_t kBitsPerMegabit = 1000000;
    if (megabits == kUnknown) return 0;
    return static_cast<uint32_t>(std::min<uint64_t>(megabits * kBitsPerMegabit, UINT32_MAX));
}

// ---- order ----

void SortAddresses(std::vector<NetAddressRow>& rows) {
    std::stable_sort(rows.begin(), rows.end(), [](const NetAddressRow& a, const NetAddressRow& b) {
        const uint32_t x = ntohl(a.addr), y = ntohl(b.addr);
        return x != y ? x < y : a.index < b.index;
    });
}

void SortRoutes(std::vector<NetRouteRow>& rows) {
    auto key = [](const NetRouteRow& r) {
        return std::make_tuple(ntohl(r.dest), ntohl(r.mask), r.metric[0], r.ifIndex);
    };
    std::stable_sort(rows.begin(), rows.end(),
                     [&](const NetRouteRow& a, const NetRouteRow& b) { return key(a) < key(b); });
}

void SortInterfaces(std::vector<NetInterfaceRow>& rows) {
    std::stable_sort(
        rows.begin(), rows.end(),
        [](const NetInterfaceRow& a, const NetInterfaceRow& b) { return a.index < b.index; });
}

} // namespace vetra::platform::rtnl
