// Tests of the rtnetlink parsers on hand-built messages: what a live system
// rarely sends (interrupted dumps, errors, cut messages, several next hops,
// other tables, rare link states). The common rows are checked end to end in
// system_tables_test.cpp.
#include "platform/posix/rtnetlink_rows.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <iterator>
#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <memory>
#include <utility>
#include <vector>

namespace vetra::platform::rtnl {
namespace {

constexpr uint32_t kSeq = 7;

// One netlink message: a header, a family header, attributes.
class Message {
  public:
    template <class Body> Message(uint16_t type, const Body& body, uint32_t seq = kSeq) {
        const nlmsghdr header{0, type, 0, seq, 0};
        Append(&header, sizeof header);
        Append(&body, sizeof body);
    }
    Message& Attr(uint16_t type, const void* data, size_t size) {
        const rtattr header{static_cast<unsigned short>(RTA_LENGTH(size)), type};
        Append(&header, sizeof header);
        return Append(data, size);
    }
    Message& U32(uint16_t type, uint32_t value) { return Attr(type, &value, sizeof value); }
    Message& Flags(uint16_t flags) { return Header().nlmsg_flags = flags, *this; }
    Message& Claim(int extra) { return Header().nlmsg_len += extra, *this; }
    const nlmsghdr& operator*() const { return *reinterpret_cast<const nlmsghdr*>(words_.data()); }
    const std::vector<uint32_t>& words() const { return words_; }

  private:
    nlmsghdr& Header() { return *reinterpret_cast<nlmsghdr*>(words_.data()); }
    Message& Append(const void* data, size_t size) {
        const size_t used = words_.empty() ? 0 : Header().nlmsg_len;
        words_.resize(NLMSG_ALIGN(used + size) / 4);
        if (size) std::memcpy(reinterpret_cast<char*>(words_.data()) + used, data, size);
        Header().nlmsg_len = static_cast<uint32_t>(NLMSG_ALIGN(used + size));
        return *this;
    }
    std::vector<uint32_t> words_;
};

Parse ParseAny(const nlmsghdr& msg, std::vector<NetRouteRow>* routes, NetInterfaceRow* link) {
    NetAddressRow address;
    return msg.nlmsg_type == RTM_NEWADDR    ? ParseAddress(msg, &address)
           : msg.nlmsg_type == RTM_NEWROUTE ? ParseRoute(msg, routes)
                                            : ParseLink(msg, link);
}

uint32_t Ip(const char* text) {
    return inet_addr(text);
}
ifaddrmsg Addr(uint8_t prefix, uint8_t flags, uint8_t family = AF_INET) {
    return {family, prefix, flags, 0, 3};
}
rtmsg Route(uint8_t proto, uint8_t type = RTN_UNICAST, uint8_t table = RT_TABLE_MAIN) {
    return {AF_INET, 0, 0, 0, table, proto, 0, type, 0};
}
ifinfomsg Link(unsigned short type, unsigned flags) {
    return {0, 0, type, 4, flags, 0};
}

TEST(RtnetlinkWalk, EndsAndFailures) {
    const Message data(RTM_NEWADDR, Addr(24, 0)), done(NLMSG_DONE, 0);
    struct Case {
        std::vector<Message> messages;
        DumpState state;
        int taken;
    };
    const Case cases[] = {
        {{data, done}, DumpState::kDone, 1},
        {{data}, DumpState::kMore, 1},
        // Messages left from an earlier request are passed over.
        {{Message(RTM_NEWADDR, 0, kSeq - 1), Message(NLMSG_DONE, 0, kSeq - 1), data},
         DumpState::kMore,
         1},
        {{Message(NLMSG_ERROR, nlmsgerr{-EBUSY, {}})}, DumpState::kFailed, 0},
        {{data, Message(NLMSG_DONE, -EMSGSIZE)}, DumpState::kFailed, 1},
        {{Message(data).Flags(NLM_F_DUMP_INTR)}, DumpState::kFailed, 0},
        {{data, Message(done).Flags(NLM_F_DUMP_INTR)}, DumpState::kFailed, 1},
        {{Message(data).Claim(4)}, DumpState::kFailed, 0},
        {{Message(data).Claim(-20)}, DumpState::kFailed, 0},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::vector<uint32_t> datagram;
        for (const Message& m : cases[i].messages)
            datagram.insert(datagram.end(), m.words().begin(), m.words().end());
        int taken = 0;
        EXPECT_EQ(WalkDatagram(datagram.data(), datagram.size() * 4, kSeq,
                               [&](const nlmsghdr&) { return ++taken, true; }),
                  cases[i].state)
            << i;
        EXPECT_EQ(taken, cases[i].taken) << i;
    }
    EXPECT_EQ(WalkDatagram(data.words().data(), 4 * data.words().size(), kSeq,
                           [](const nlmsghdr&) { return false; }),
              DumpState::kFailed);
}

TEST(RtnetlinkParsers, SkippedAndMalformed) {
    const uint16_t two = 2;
    const rtnexthop overlong{sizeof(rtnexthop) + 8, 0, 0, 2};
    rtmsg cloned = Route(RTPROT_BOOT), wide = Route(RTPROT_BOOT);
    cloned.rtm_flags = RTM_F_CLONED;
    wide.rtm_dst_len = 33;
    const std::pair<Message, Parse> cases[] = {
        {Message(RTM_NEWADDR, Addr(64, 0, AF_INET6)), Parse::kSkip},
        {Message(RTM_NEWADDR, Addr(24, 0)), Parse::kSkip}, // no address at all
        {Message(RTM_NEWADDR, Addr(33, 0)).U32(IFA_ADDRESS, 1), Parse::kBad},
        {Message(RTM_NEWADDR, Addr(24, 0)).Attr(IFA_ADDRESS, &two, 2), Parse::kBad},
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT, RTN_LOCAL, RT_TABLE_LOCAL)), Parse::kSkip},
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT)).U32(RTA_TABLE, 100), Parse::kSkip},
        {Message(RTM_NEWROUTE, cloned), Parse::kSkip},
        {Message(RTM_NEWROUTE, wide), Parse::kBad},
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT)).Attr(RTA_MULTIPATH, &overlong, sizeof overlong),
         Parse::kBad},
        {Message(RTM_NEWLINK, Link(ARPHRD_ETHER, 0)).Attr(IFLA_OPERSTATE, nullptr, 0), Parse::kBad},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::vector<NetRouteRow> routes;
        NetInterfaceRow link;
        EXPECT_EQ(ParseAny(*cases[i].first, &routes, &link), cases[i].second) << i;
        EXPECT_TRUE(routes.empty()) << i;
    }
}

// Every message cut short at every length, in a buffer of exactly that size:
// the parsers must stay inside it (the address sanitizer watches).
TEST(RtnetlinkParsers, CutMessagesStayInside) {
    const rtnl_link_stats64 stats{};
    const uint32_t paths[] = {sizeof(rtnexthop) + RTA_LENGTH(4), 2,
                              RTA_LENGTH(4) | RTA_GATEWAY << 16, Ip("192.0.2.1")};
    const Message messages[] = {
        Message(RTM_NEWADDR, Addr(24, 0)).U32(IFA_ADDRESS, 1).U32(IFA_FLAGS, 0x80),
        Message(RTM_NEWROUTE, Route(RTPROT_STATIC)).Attr(RTA_MULTIPATH, paths, sizeof paths),
        Message(RTM_NEWLINK, Link(ARPHRD_ETHER, 0))
            .Attr(IFLA_IFNAME, "eth0", 5)
            .Attr(IFLA_STATS64, &stats, sizeof stats),
    };
    for (const Message& whole : messages) {
        for (size_t cut = sizeof(nlmsghdr); cut < (*whole).nlmsg_len; ++cut) {
            std::unique_ptr<unsigned char[]> bytes(new unsigned char[cut]);
            std::memcpy(bytes.get(), whole.words().data(), cut);
            EXPECT_EQ(WalkDatagram(bytes.get(), cut, kSeq, [](const nlmsghdr&) { return true; }),
                      DumpState::kFailed);
            auto& msg = *reinterpret_cast<nlmsghdr*>(bytes.get());
            msg.nlmsg_len = static_cast<uint32_t>(cut);
            std::vector<NetRouteRow> routes;
            NetInterfaceRow link;
            ParseAny(msg, &routes, &link);
            EXPECT_LE(routes.size(), 1u) << cut;
        }
    }
}

TEST(RtnetlinkAddress, FlagsAndLocalAddress) {
    const uint32_t a = Ip("192.0.2.5");
    const std::pair<Message, uint16_t> cases[] = {
        {Message(RTM_NEWADDR, Addr(24, IFA_F_SECONDARY)).U32(IFA_ADDRESS, a), 4},
        {Message(RTM_NEWADDR, Addr(24, 0)).U32(IFA_ADDRESS, a).U32(IFA_FLAGS, IFA_F_PERMANENT), 1},
        // Point to point: IFA_ADDRESS is the peer.
        {Message(RTM_NEWADDR, Addr(32, 0)).U32(IFA_ADDRESS, 9).U32(IFA_LOCAL, a), 5},
    };
    for (const auto& [message, type] : cases) {
        NetAddressRow row;
        ASSERT_EQ(ParseAddress(*message, &row), Parse::kRow);
        EXPECT_EQ(row.addr, a);
        EXPECT_EQ(row.type, type);
    }
}

TEST(RtnetlinkRoute, TypesProtocolsAndPaths) {
    const uint32_t gw = Ip("192.0.2.1");
    const struct __attribute__((packed)) {
        uint16_t family;
        uint32_t addr;
    } via{AF_INET, gw};
    const uint32_t paths[] = {sizeof(rtnexthop) + RTA_LENGTH(4),
                              2,
                              RTA_LENGTH(4) | RTA_GATEWAY << 16,
                              gw,
                              sizeof(rtnexthop),
                              3};
    struct Row {
        uint32_t nextHop, ifIndex, type, proto;
    };
    const std::pair<Message, std::vector<Row>> cases[] = {
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT, RTN_UNICAST, RT_TABLE_COMPAT))
             .U32(RTA_TABLE, RT_TABLE_MAIN)
             .U32(RTA_OIF, 2),
         {{0, 2, 3, 3}}},
        {Message(RTM_NEWROUTE, Route(RTPROT_DHCP, RTN_BLACKHOLE)), {{0, 0, 2, 3}}},
        {Message(RTM_NEWROUTE, Route(RTPROT_REDIRECT)).Attr(RTA_VIA, &via, sizeof via),
         {{gw, 0, 4, 4}}},
        {Message(RTM_NEWROUTE, Route(186 /*BGP*/)), {{0, 0, 3, 14}}},
        {Message(RTM_NEWROUTE, Route(11 /*zebra*/)), {{0, 0, 3, 1}}},
        {Message(RTM_NEWROUTE, Route(RTPROT_STATIC)).Attr(RTA_MULTIPATH, paths, sizeof paths),
         {{gw, 2, 4, 3}, {0, 3, 3, 3}}},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::vector<NetRouteRow> rows;
        ASSERT_EQ(ParseRoute(*cases[i].first, &rows), Parse::kRow) << i;
        ASSERT_EQ(rows.size(), cases[i].second.size()) << i;
        for (size_t k = 0; k < rows.size(); ++k) {
            const Row& e = cases[i].second[k];
            EXPECT_EQ(rows[k].nextHop, e.nextHop) << i;
            EXPECT_EQ(rows[k].ifIndex, e.ifIndex) << i;
            EXPECT_EQ(rows[k].type, e.type) << i;
            EXPECT_EQ(rows[k].proto, e.proto) << i;
        }
    }
}

TEST(RtnetlinkLink, TypesAndStatus) {
    const unsigned upRunning = IFF_UP | IFF_RUNNING;
    struct Case {
        unsigned short arphrd;
        unsigned flags;
        int operState; // -1: none sent
        uint32_t type, admin, oper;
    };
    const Case cases[] = {
        {ARPHRD_NONE, upRunning, -1, 131, 1, 4},
        {ARPHRD_IPGRE, IFF_UP, IF_OPER_UNKNOWN, 131, 1, 2},
        {ARPHRD_PPP, upRunning, IF_OPER_DORMANT, 23, 1, 3},
        {ARPHRD_ETHER, 0, IF_OPER_NOTPRESENT, 6, 2, 2},
        {ARPHRD_ETHER, upRunning, IF_OPER_TESTING, 6, 1, 0},
        {ARPHRD_IEEE1394, upRunning, IF_OPER_UP, 1, 1, 5},
    };
    for (const Case& c : cases) {
        Message m(RTM_NEWLINK, Link(c.arphrd, c.flags));
        const uint8_t state = static_cast<uint8_t>(c.operState);
        if (c.operState >= 0) m.Attr(IFLA_OPERSTATE, &state, 1);
        NetInterfaceRow row;
        ASSERT_EQ(ParseLink(*m, &row), Parse::kRow);
        EXPECT_EQ(row.type, c.type) << c.arphrd;
        EXPECT_EQ(row.adminStatus, c.admin) << c.arphrd;
        EXPECT_EQ(row.operStatus, c.oper) << c.arphrd;
    }
}

TEST(RtnetlinkLink, CountersAndHardwareAddress) {
    rtnl_link_stats64 wide{};
    wide.rx_packets = 10;
    wide.multicast = 3;
    wide.tx_packets = 4;
    rtnl_link_stats narrow{};
    narrow.rx_packets = 99;
    const uint8_t hw[20] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const Message link(RTM_NEWLINK, Link(ARPHRD_INFINIBAND, 0));
    const struct {
        Message message;
        uint32_t inUcast, inNUcast, outUcast, physLen;
    } cases[] = {
        {Message(link)
             .Attr(IFLA_STATS64, &wide, sizeof wide)
             .Attr(IFLA_STATS, &narrow, sizeof narrow),
         7, 3, 4, 0},
        {Message(link).Attr(IFLA_STATS, &narrow, sizeof narrow).Attr(IFLA_ADDRESS, hw, 6), 99, 0, 0,
         6},
        // An older kernel's shorter block; an InfiniBand address of 20 bytes.
        {Message(link).Attr(IFLA_STATS64, &wide, 16).Attr(IFLA_ADDRESS, hw, 20), 10, 0, 4, 8},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        NetInterfaceRow row;
        ASSERT_EQ(ParseLink(*cases[i].message, &row), Parse::kRow);
        EXPECT_EQ(row.inUcastPkts, cases[i].inUcast) << i;
        EXPECT_EQ(row.inNUcastPkts, cases[i].inNUcast) << i;
        EXPECT_EQ(row.outUcastPkts, cases[i].outUcast) << i;
        EXPECT_EQ(row.physAddrLen, cases[i].physLen) << i;
        EXPECT_EQ(std::memcmp(row.physAddr, hw, cases[i].physLen), 0) << i;
    }
}

} // namespace
} // namespace vetra::platform::rtnl
