// Tests of the rtnetlink parsers on hand-built messages: the dump walk's
// ends and failures, each table's fields and Linux codes, and malformed input.
#include "platform/posix/rtnetlink_rows.h"

#include <arpa/inet.h>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <string>
#include <vector>

namespace vetra::platform::rtnl {
namespace {

uint32_t Ip(const char* text) {
    return inet_addr(text);
}

// Builds one netlink message: a header, a family header, attributes.
class Message {
  public:
    template <class Body> Message(uint16_t type, const Body& body, uint32_t seq = 7) {
        nlmsghdr header{};
        header.nlmsg_type = type;
        header.nlmsg_seq = seq;
        Append(&header, sizeof header);
        Append(&body, sizeof body);
    }
    Message& Attr(uint16_t type, const void* data, size_t size) {
        rtattr header{static_cast<unsigned short>(RTA_LENGTH(size)), type};
        Append(&header, sizeof header);
        Append(data, size);
        return *this;
    }
    Message& U32(uint16_t type, uint32_t value) { return Attr(type, &value, sizeof value); }
    Message& Flags(uint16_t flags) {
        Header()->nlmsg_flags = flags;
        return *this;
    }
    // Grows or shrinks the length the header claims, leaving the bytes alone.
    Message& ClaimExtra(int delta) {
        Header()->nlmsg_len += delta;
        return *this;
    }
    const nlmsghdr& operator*() const { return *reinterpret_cast<const nlmsghdr*>(words_.data()); }
    const std::vector<uint32_t>& words() const { return words_; }

  private:
    nlmsghdr* Header() { return reinterpret_cast<nlmsghdr*>(words_.data()); }
    void Append(const void* data, size_t size) {
        const size_t used = words_.empty() ? 0 : Header()->nlmsg_len;
        words_.resize((NLMSG_ALIGN(used + size)) / 4);
        if (size) std::memcpy(reinterpret_cast<char*>(words_.data()) + used, data, size);
        Header()->nlmsg_len = static_cast<uint32_t>(NLMSG_ALIGN(used + size));
    }
    std::vector<uint32_t> words_;
};

Message Done(uint32_t seq = 7) {
    return Message(NLMSG_DONE, int{0}, seq);
}

TEST(RtnetlinkWalk, EndsAndFailures) {
    ifaddrmsg body{};
    struct Case {
        const char* name;
        std::vector<Message> messages;
        size_t cut; // bytes dropped from the end of the datagram
        DumpState expected;
        int taken;
    };
    const Case cases[] = {
        {"data then done", {Message(RTM_NEWADDR, body), Done()}, 0, DumpState::kDone, 1},
        {"data only: more follows", {Message(RTM_NEWADDR, body)}, 0, DumpState::kMore, 1},
        {"other sequence numbers are passed over",
         {Message(RTM_NEWADDR, body, 6), Done(6), Message(RTM_NEWADDR, body)},
         0,
         DumpState::kMore,
         1},
        {"error answer", {Message(NLMSG_ERROR, nlmsgerr{-1, {}})}, 0, DumpState::kFailed, 0},
        {"interrupted dump",
         {Message(RTM_NEWADDR, body).Flags(NLM_F_DUMP_INTR)},
         0,
         DumpState::kFailed,
         0},
        {"interrupted at the end",
         {Message(RTM_NEWADDR, body), Done().Flags(NLM_F_DUMP_INTR)},
         0,
         DumpState::kFailed,
         1},
        {"message claims more than was received",
         {Message(RTM_NEWADDR, body).ClaimExtra(4)},
         0,
         DumpState::kFailed,
         0},
        {"length shorter than a header",
         {Message(RTM_NEWADDR, body).ClaimExtra(-20)},
         0,
         DumpState::kFailed,
         0},
        {"datagram cut inside a message",
         {Message(RTM_NEWADDR, body), Done()},
         8,
         DumpState::kFailed,
         1},
    };
    for (const Case& c : cases) {
        std::vector<uint32_t> datagram;
        for (const Message& m : c.messages)
            datagram.insert(datagram.end(), m.words().begin(), m.words().end());
        int taken = 0;
        const DumpState state = WalkDatagram(datagram.data(), datagram.size() * 4 - c.cut, 7,
                                             [&](const nlmsghdr&) { return ++taken, true; });
        EXPECT_EQ(state, c.expected) << c.name;
        EXPECT_EQ(taken, c.taken) << c.name;
    }
    Message one(RTM_NEWADDR, body);
    EXPECT_EQ(WalkDatagram(one.words().data(), one.words().size() * 4, 7,
                           [](const nlmsghdr&) { return false; }),
              DumpState::kFailed);
}

ifaddrmsg AddrBody(uint8_t prefix, uint8_t flags, uint8_t family = AF_INET) {
    ifaddrmsg body{};
    body.ifa_family = family;
    body.ifa_prefixlen = prefix;
    body.ifa_flags = flags;
    body.ifa_index = 3;
    return body;
}

TEST(RtnetlinkAddress, FieldsAndTypeFlags) {
    struct Case {
        const char* name;
        Message message;
        uint32_t addr, mask, broadcast;
        uint16_t type;
    };
    const uint32_t a = Ip("192.0.2.5"), peer = Ip("192.0.2.9"), brd = Ip("192.0.2.255");
    const Case cases[] = {
        {"permanent primary",
         Message(RTM_NEWADDR, AddrBody(24, IFA_F_PERMANENT))
             .U32(IFA_ADDRESS, a)
             .U32(IFA_BROADCAST, brd),
         a, Ip("255.255.255.0"), brd, 1},
        {"permanent secondary",
         Message(RTM_NEWADDR, AddrBody(24, IFA_F_PERMANENT | IFA_F_SECONDARY)).U32(IFA_ADDRESS, a),
         a, Ip("255.255.255.0"), 0, 0},
        {"dynamic primary", Message(RTM_NEWADDR, AddrBody(32, 0)).U32(IFA_ADDRESS, a), a,
         Ip("255.255.255.255"), 0, 5},
        {"dynamic secondary",
         Message(RTM_NEWADDR, AddrBody(0, IFA_F_SECONDARY)).U32(IFA_ADDRESS, a), a, 0, 0, 4},
        {"IFA_FLAGS holds the whole flag word",
         Message(RTM_NEWADDR, AddrBody(8, 0)).U32(IFA_ADDRESS, a).U32(IFA_FLAGS, IFA_F_PERMANENT),
         a, Ip("255.0.0.0"), 0, 1},
        {"point-to-point: the local address, not the peer",
         Message(RTM_NEWADDR, AddrBody(32, IFA_F_PERMANENT))
             .U32(IFA_ADDRESS, peer)
             .U32(IFA_LOCAL, a),
         a, Ip("255.255.255.255"), 0, 1},
    };
    for (const Case& c : cases) {
        NetAddressRow row{};
        ASSERT_EQ(ParseAddress(*c.message, &row), Parse::kRow) << c.name;
        EXPECT_EQ(row.addr, c.addr) << c.name;
        EXPECT_EQ(row.index, 3u) << c.name;
        EXPECT_EQ(row.mask, c.mask) << c.name;
        EXPECT_EQ(row.broadcast, c.broadcast) << c.name;
        EXPECT_EQ(row.reasmSize, 65535u) << c.name;
        EXPECT_EQ(row.type, c.type) << c.name;
    }
}

TEST(RtnetlinkParsers, SkippedAndMalformedMessages) {
    const uint16_t two = 2;
    rtmsg route{};
    route.rtm_family = AF_INET;
    route.rtm_table = RT_TABLE_MAIN;
    rtmsg cloned = route, local = route, wide = route, ipv6 = route;
    cloned.rtm_flags = RTM_F_CLONED;
    local.rtm_table = RT_TABLE_LOCAL;
    wide.rtm_dst_len = 33;
    ipv6.rtm_family = AF_INET6;
    rtnexthop longPath{sizeof(rtnexthop) + 8, 0, 0, 2};
    struct Case {
        const char* name;
        Message message;
        Parse expected;
    };
    const Case cases[] = {
        {"IPv6 address", Message(RTM_NEWADDR, AddrBody(64, 0, AF_INET6)), Parse::kSkip},
        {"address without an address", Message(RTM_NEWADDR, AddrBody(24, 0)), Parse::kSkip},
        {"prefix above 32", Message(RTM_NEWADDR, AddrBody(33, 0)).U32(IFA_ADDRESS, 1), Parse::kBad},
        {"address of two bytes", Message(RTM_NEWADDR, AddrBody(24, 0)).Attr(IFA_ADDRESS, &two, 2),
         Parse::kBad},
        {"attribute past the message",
         Message(RTM_NEWADDR, AddrBody(24, 0)).U32(IFA_ADDRESS, 1).ClaimExtra(-4), Parse::kBad},
        {"too short for its family header", Message(RTM_NEWADDR, int{0}), Parse::kBad},
        {"route of the local table", Message(RTM_NEWROUTE, local), Parse::kSkip},
        {"RTA_TABLE names another table", Message(RTM_NEWROUTE, route).U32(RTA_TABLE, 100),
         Parse::kSkip},
        {"cached route", Message(RTM_NEWROUTE, cloned), Parse::kSkip},
        {"IPv6 route", Message(RTM_NEWROUTE, ipv6), Parse::kSkip},
        {"route prefix above 32", Message(RTM_NEWROUTE, wide), Parse::kBad},
        {"next hop longer than its attribute",
         Message(RTM_NEWROUTE, route).Attr(RTA_MULTIPATH, &longPath, sizeof longPath), Parse::kBad},
        {"link too short for its family header", Message(RTM_NEWLINK, int{0}), Parse::kBad},
        {"operational state without a byte",
         Message(RTM_NEWLINK, ifinfomsg{}).Attr(IFLA_OPERSTATE, nullptr, 0), Parse::kBad},
    };
    for (const Case& c : cases) {
        NetAddressRow address;
        std::vector<NetRouteRow> routes;
        NetInterfaceRow link;
        const uint16_t type = (*c.message).nlmsg_type;
        const Parse got = type == RTM_NEWADDR    ? ParseAddress(*c.message, &address)
                          : type == RTM_NEWROUTE ? ParseRoute(*c.message, &routes)
                                                 : ParseLink(*c.message, &link);
        EXPECT_EQ(got, c.expected) << c.name;
        EXPECT_TRUE(routes.empty()) << c.name;
    }
}

rtmsg RouteBody(uint8_t prefix, uint8_t proto, uint8_t type = RTN_UNICAST,
                uint8_t table = RT_TABLE_MAIN) {
    rtmsg body{};
    body.rtm_family = AF_INET;
    body.rtm_dst_len = prefix;
    body.rtm_protocol = proto;
    body.rtm_type = type;
    body.rtm_table = table;
    return body;
}

TEST(RtnetlinkRoute, FieldsTypesAndProtocols) {
    struct Row {
        const char *dest, *mask, *nextHop;
        uint32_t ifIndex, type, proto, metric;
    };
    struct Case {
        const char* name;
        Message message;
        std::vector<Row> rows;
    };
    const uint32_t gw = Ip("192.0.2.1"), gw2 = Ip("192.0.2.2");
    struct {
        uint16_t family;
        uint32_t addr;
    } __attribute__((packed)) via{AF_INET, gw};
    std::vector<uint32_t> paths;
    for (auto [ifIndex, hop] : {std::pair{2, gw}, std::pair{3, gw2}}) {
        const rtnexthop head{sizeof(rtnexthop) + RTA_LENGTH(4), 0, 0, ifIndex};
        const rtattr attr{RTA_LENGTH(4), RTA_GATEWAY};
        paths.resize(paths.size() + 4);
        std::memcpy(&paths[paths.size() - 4], &head, sizeof head);
        std::memcpy(&paths[paths.size() - 2], &attr, sizeof attr);
        paths.back() = hop;
    }
    const Case cases[] = {
        {"default route through a gateway",
         Message(RTM_NEWROUTE, RouteBody(0, RTPROT_STATIC))
             .U32(RTA_GATEWAY, gw)
             .U32(RTA_OIF, 4)
             .U32(RTA_PRIORITY, 100),
         {{"0.0.0.0", "0.0.0.0", "192.0.2.1", 4, 4, 3, 100}}},
        {"attached subnet made by the kernel",
         Message(RTM_NEWROUTE, RouteBody(24, RTPROT_KERNEL))
             .U32(RTA_DST, Ip("192.0.2.0"))
             .U32(RTA_OIF, 4),
         {{"192.0.2.0", "255.255.255.0", "0.0.0.0", 4, 3, 2, 0}}},
        {"RTA_TABLE names the main table",
         Message(RTM_NEWROUTE, RouteBody(32, RTPROT_BOOT, RTN_UNICAST, RT_TABLE_COMPAT))
             .U32(RTA_TABLE, RT_TABLE_MAIN)
             .U32(RTA_DST, gw),
         {{"192.0.2.1", "255.255.255.255", "0.0.0.0", 0, 3, 3, 0}}},
        {"blackhole",
         Message(RTM_NEWROUTE, RouteBody(16, RTPROT_DHCP, RTN_BLACKHOLE))
             .U32(RTA_DST, Ip("10.9.0.0")),
         {{"10.9.0.0", "255.255.0.0", "0.0.0.0", 0, 2, 3, 0}}},
        {"gateway given as RTA_VIA; redirect",
         Message(RTM_NEWROUTE, RouteBody(0, RTPROT_REDIRECT)).Attr(RTA_VIA, &via, sizeof via),
         {{"0.0.0.0", "0.0.0.0", "192.0.2.1", 0, 4, 4, 0}}},
        {"BGP",
         Message(RTM_NEWROUTE, RouteBody(0, 186)),
         {{"0.0.0.0", "0.0.0.0", "0.0.0.0", 0, 3, 14, 0}}},
        {"another daemon",
         Message(RTM_NEWROUTE, RouteBody(0, 11)),
         {{"0.0.0.0", "0.0.0.0", "0.0.0.0", 0, 3, 1, 0}}},
        {"two paths: a row each",
         Message(RTM_NEWROUTE, RouteBody(0, RTPROT_STATIC))
             .U32(RTA_PRIORITY, 5)
             .Attr(RTA_MULTIPATH, paths.data(), paths.size() * 4),
         {{"0.0.0.0", "0.0.0.0", "192.0.2.1", 2, 4, 3, 5},
          {"0.0.0.0", "0.0.0.0", "192.0.2.2", 3, 4, 3, 5}}},
    };
    for (const Case& c : cases) {
        std::vector<NetRouteRow> rows;
        ASSERT_EQ(ParseRoute(*c.message, &rows), Parse::kRow) << c.name;
        ASSERT_EQ(rows.size(), c.rows.size()) << c.name;
        for (size_t i = 0; i < rows.size(); ++i) {
            const Row& e = c.rows[i];
            EXPECT_EQ(rows[i].dest, Ip(e.dest)) << c.name;
            EXPECT_EQ(rows[i].mask, Ip(e.mask)) << c.name;
            EXPECT_EQ(rows[i].nextHop, Ip(e.nextHop)) << c.name;
            EXPECT_EQ(rows[i].ifIndex, e.ifIndex) << c.name;
            EXPECT_EQ(rows[i].type, e.type) << c.name;
            EXPECT_EQ(rows[i].proto, e.proto) << c.name;
            EXPECT_EQ(rows[i].metric[0], e.metric) << c.name;
        }
    }
}

ifinfomsg LinkBody(unsigned short type, unsigned flags) {
    ifinfomsg body{};
    body.ifi_index = 4;
    body.ifi_type = type;
    body.ifi_flags = flags;
    return body;
}

TEST(RtnetlinkLink, TypesAndStatus) {
    const unsigned upRunning = IFF_UP | IFF_RUNNING;
    struct Case {
        unsigned short arphrd;
        unsigned flags;
        int operState; // -1: no IFLA_OPERSTATE
        uint32_t type, admin, oper;
    };
    const Case cases[] = {
        {ARPHRD_ETHER, upRunning, IF_OPER_UP, 6, 1, 5},
        {ARPHRD_LOOPBACK, upRunning, IF_OPER_UNKNOWN, 24, 1, 4},
        {ARPHRD_NONE, upRunning, -1, 131, 1, 4},
        {ARPHRD_IPGRE, IFF_UP, IF_OPER_UNKNOWN, 131, 1, 2},
        {ARPHRD_PPP, upRunning, IF_OPER_DORMANT, 23, 1, 3},
        {ARPHRD_ETHER, IFF_UP, IF_OPER_LOWERLAYERDOWN, 6, 1, 2},
        {ARPHRD_ETHER, 0, IF_OPER_DOWN, 6, 2, 2},
        {ARPHRD_ETHER, 0, IF_OPER_NOTPRESENT, 6, 2, 2},
        {ARPHRD_ETHER, upRunning, IF_OPER_TESTING, 6, 1, 0},
        {ARPHRD_IEEE1394, upRunning, IF_OPER_UP, 1, 1, 5},
    };
    for (const Case& c : cases) {
        Message m(RTM_NEWLINK, LinkBody(c.arphrd, c.flags));
        const uint8_t state = static_cast<uint8_t>(c.operState);
        if (c.operState >= 0) m.Attr(IFLA_OPERSTATE, &state, 1);
        NetInterfaceRow row;
        ASSERT_EQ(ParseLink(*m, &row), Parse::kRow);
        EXPECT_EQ(row.type, c.type) << c.arphrd;
        EXPECT_EQ(row.adminStatus, c.admin) << c.arphrd;
        EXPECT_EQ(row.operStatus, c.oper) << c.arphrd << " state " << c.operState;
    }
}

TEST(RtnetlinkLink, NameAddressAndCounters) {
    rtnl_link_stats64 stats64{};
    stats64.rx_bytes = (uint64_t{1} << 32) + 5; // the low 32 bits are kept
    stats64.rx_packets = 10;
    stats64.multicast = 3;
    stats64.tx_packets = 4;
    stats64.rx_dropped = 6;
    stats64.tx_errors = 8;
    rtnl_link_stats stats32{};
    stats32.rx_packets = 99;
    stats32.tx_packets = 98;
    const uint8_t ib[20] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    struct Case {
        const char* name;
        Message message;
        uint32_t inOctets, inUcast, inNUcast, outUcast, physLen;
    };
    const Case cases[] = {
        {"64-bit statistics win over the 32-bit ones",
         Message(RTM_NEWLINK, LinkBody(ARPHRD_ETHER, 0))
             .Attr(IFLA_STATS64, &stats64, sizeof stats64)
             .Attr(IFLA_STATS, &stats32, sizeof stats32)
             .Attr(IFLA_ADDRESS, ib, 6),
         5, 7, 3, 4, 6},
        {"32-bit statistics alone",
         Message(RTM_NEWLINK, LinkBody(ARPHRD_ETHER, 0)).Attr(IFLA_STATS, &stats32, sizeof stats32),
         0, 99, 0, 98, 0},
        {"an older kernel's shorter block",
         Message(RTM_NEWLINK, LinkBody(ARPHRD_ETHER, 0)).Attr(IFLA_STATS64, &stats64, 16), 0, 10, 0,
         4, 0},
        {"hardware address cut to 8 bytes",
         Message(RTM_NEWLINK, LinkBody(ARPHRD_INFINIBAND, 0)).Attr(IFLA_ADDRESS, ib, sizeof ib), 0,
         0, 0, 0, 8},
    };
    for (const Case& c : cases) {
        NetInterfaceRow row;
        ASSERT_EQ(ParseLink(*c.message, &row), Parse::kRow) << c.name;
        EXPECT_EQ(row.inOctets, c.inOctets) << c.name;
        EXPECT_EQ(row.inUcastPkts, c.inUcast) << c.name;
        EXPECT_EQ(row.inNUcastPkts, c.inNUcast) << c.name;
        EXPECT_EQ(row.outUcastPkts, c.outUcast) << c.name;
        EXPECT_EQ(row.outNUcastPkts, 0u) << c.name;
        EXPECT_EQ(row.physAddrLen, c.physLen) << c.name;
        EXPECT_EQ(std::memcmp(row.physAddr, ib, c.physLen), 0) << c.name;
    }
    NetInterfaceRow row;
    ASSERT_EQ(ParseLink(*Message(RTM_NEWLINK, LinkBody(ARPHRD_ETHER, 0))
                             .Attr(IFLA_IFNAME, "eth0", 5)
                             .U32(IFLA_MTU, 1400)
                             .Attr(IFLA_STATS64, &stats64, sizeof stats64),
                        &row),
              Parse::kRow);
    EXPECT_EQ(row.index, 4u);
    EXPECT_EQ(row.mtu, 1400u);
    EXPECT_EQ(row.descrLen, 4u);
    EXPECT_STREQ(row.descr, "eth0");
    EXPECT_EQ(row.inDiscards, 6u);
    EXPECT_EQ(row.outErrors, 8u);
}

TEST(RtnetlinkLink, SpeedBits) {
    const std::pair<uint32_t, uint32_t> cases[] = {
        {0, 0},
        {0xFFFFFFFF, 0},
        {100, 100000000},
        {4294, 4294000000},
        {4295, UINT32_MAX},
        {100000, UINT32_MAX},
    };
    for (auto [megabits, bits] : cases)
        EXPECT_EQ(SpeedBits(megabits), bits) << megabits;
}

TEST(RtnetlinkOrder, NumbersInHostOrder) {
    // As raw network-order words 10.0.0.2 > 9.255.255.255 would not hold.
    std::vector<NetAddressRow> addresses = {{Ip("10.0.0.2"), 1, 0, 0, 0, 0},
                                            {Ip("9.255.255.255"), 7, 0, 0, 0, 0},
                                            {Ip("10.0.0.2"), 0, 0, 0, 0, 0}};
    SortAddresses(addresses);
    EXPECT_EQ(addresses[0].addr, Ip("9.255.255.255"));
    EXPECT_EQ(addresses[1].index, 0u);
    EXPECT_EQ(addresses[2].index, 1u);

    auto route = [](const char* dest, const char* mask, uint32_t metric, uint32_t ifIndex) {
        NetRouteRow r{};
        r.dest = Ip(dest);
        r.mask = Ip(mask);
        r.metric[0] = metric;
        r.ifIndex = ifIndex;
        return r;
    };
    std::vector<NetRouteRow> routes = {
        route("10.0.0.0", "255.255.255.0", 0, 1), route("10.0.0.0", "255.0.0.0", 0, 1),
        route("0.0.0.0", "0.0.0.0", 20, 1),       route("0.0.0.0", "0.0.0.0", 10, 2),
        route("0.0.0.0", "0.0.0.0", 10, 1),       route("9.0.0.0", "255.0.0.0", 0, 1),
    };
    SortRoutes(routes);
    const std::vector<std::pair<uint32_t, uint32_t>> order = {{10, 1}, {10, 2}, {20, 1}};
    for (size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(routes[i].metric[0], order[i].first);
        EXPECT_EQ(routes[i].ifIndex, order[i].second);
    }
    EXPECT_EQ(routes[3].dest, Ip("9.0.0.0"));
    EXPECT_EQ(routes[4].mask, Ip("255.0.0.0"));
    EXPECT_EQ(routes[5].mask, Ip("255.255.255.0"));
}

// Every message cut short at every length, in a buffer of exactly that size:
// the parsers must stay inside it (the address sanitizer watches) and never
// take a cut message for a whole one.
TEST(RtnetlinkParsers, CutMessagesStayInside) {
    rtnl_link_stats64 stats{};
    const rtnexthop path{sizeof(rtnexthop) + RTA_LENGTH(4), 0, 0, 2};
    const rtattr gateway{RTA_LENGTH(4), RTA_GATEWAY};
    uint32_t paths[4];
    std::memcpy(paths, &path, sizeof path);
    std::memcpy(paths + 2, &gateway, sizeof gateway);
    paths[3] = Ip("192.0.2.1");
    const Message messages[] = {
        Message(RTM_NEWADDR, AddrBody(24, 0)).U32(IFA_ADDRESS, 1).U32(IFA_FLAGS, 0x80),
        Message(RTM_NEWROUTE, RouteBody(0, RTPROT_STATIC)).Attr(RTA_MULTIPATH, paths, sizeof paths),
        Message(RTM_NEWLINK, LinkBody(ARPHRD_ETHER, 0))
            .Attr(IFLA_IFNAME, "eth0", 5)
            .Attr(IFLA_STATS64, &stats, sizeof stats),
    };
    for (const Message& whole : messages) {
        const size_t size = (*whole).nlmsg_len;
        for (size_t cut = sizeof(nlmsghdr); cut < size; ++cut) {
            std::unique_ptr<unsigned char[]> bytes(new unsigned char[cut]);
            std::memcpy(bytes.get(), whole.words().data(), cut);
            auto& msg = *reinterpret_cast<nlmsghdr*>(bytes.get());
            EXPECT_EQ(WalkDatagram(bytes.get(), cut, 7, [](const nlmsghdr&) { return true; }),
                      DumpState::kFailed);
            msg.nlmsg_len = static_cast<uint32_t>(cut);
            NetAddressRow address;
            std::vector<NetRouteRow> routes;
            NetInterfaceRow link;
            const Parse got = msg.nlmsg_type == RTM_NEWADDR    ? ParseAddress(msg, &address)
                              : msg.nlmsg_type == RTM_NEWROUTE ? ParseRoute(msg, &routes)
                                                               : ParseLink(msg, &link);
            // A cut that falls between attributes leaves a whole, shorter message.
            if (got == Parse::kRow && msg.nlmsg_type == RTM_NEWROUTE) {
                EXPECT_EQ(routes.size(), 1u) << cut;
            }
        }
    }
}

} // namespace
} // namespace vetra::platform::rtnl
