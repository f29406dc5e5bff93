// Tests of the rtnetlink parsers on hand-built messages: what a live system rarely sends
// (interrupted dumps, errors, cut messages, several next hops, other tables, rare link
// states). The common rows are checked end to end in system_tables_test.cpp.
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
#include <sstream>
#include <string>
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
    Message& U8(uint16_t type, uint8_t value) { return Attr(type, &value, 1); }
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

uint32_t Ip(const char* text) {
    return inet_addr(text);
}
std::string Dotted(uint32_t addr) {
    char text[INET_ADDRSTRLEN];
    const in_addr a{addr};
    return inet_ntop(AF_INET, &a, text, sizeof text);
}

// What the parser of its type makes of a message: "skip", "bad", or the fields the rules
// set (a route per next hop; counters and hardware address where the link has them).
std::string Parsed(const nlmsghdr& msg) {
    NetAddressRow a{};
    std::vector<NetRouteRow> routes;
    NetInterfaceRow l{};
    const Parse result = msg.nlmsg_type == RTM_NEWADDR    ? ParseAddress(msg, &a)
                         : msg.nlmsg_type == RTM_NEWROUTE ? ParseRoute(msg, &routes)
                                                          : ParseLink(msg, &l);
    std::ostringstream out;
    if (result != Parse::kRow) out << (result == Parse::kSkip ? "skip" : "bad");
    if (result == Parse::kRow && msg.nlmsg_type == RTM_NEWADDR)
        out << Dotted(a.addr) << " type " << a.type;
    for (const NetRouteRow& r : routes)
        out << "via " << Dotted(r.nextHop) << " if " << r.ifIndex << " type " << r.type << " proto "
            << r.proto << "; ";
    if (result == Parse::kRow && msg.nlmsg_type == RTM_NEWLINK) {
        out << "type " << l.type << " admin " << l.adminStatus << " oper " << l.operStatus;
        if (l.inUcastPkts + l.inNUcastPkts + l.outUcastPkts != 0)
            out << " in " << l.inUcastPkts << "+" << l.inNUcastPkts << " out " << l.outUcastPkts;
        for (uint32_t i = 0; i < l.physAddrLen; ++i)
            out << (i == 0 ? " hw " : ":") << int(l.physAddr[i]);
    }
    return out.str();
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
            Parsed(msg);
        }
    }
}

TEST(RtnetlinkParsers, WhatEachMessageGives) {
    const unsigned upRunning = IFF_UP | IFF_RUNNING;
    const uint32_t gw = Ip("192.0.2.1"), a = Ip("192.0.2.5");
    const uint16_t two = 2;
    const rtnexthop overlong{sizeof(rtnexthop) + 8, 0, 0, 2};
    rtmsg cloned = Route(RTPROT_BOOT), wide = Route(RTPROT_BOOT);
    cloned.rtm_flags = RTM_F_CLONED;
    wide.rtm_dst_len = 33;
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
    rtnl_link_stats64 stats64{};
    stats64.rx_packets = 10;
    stats64.multicast = 3;
    stats64.tx_packets = 4;
    rtnl_link_stats stats{};
    stats.rx_packets = 99;
    const uint8_t hw[20] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const Message ib(RTM_NEWLINK, Link(ARPHRD_INFINIBAND, 0));
    const std::pair<Message, const char*> cases[] = {
        {Message(RTM_NEWADDR, Addr(64, 0, AF_INET6)), "skip"},
        {Message(RTM_NEWADDR, Addr(24, 0)), "skip"}, // no address at all
        {Message(RTM_NEWADDR, Addr(33, 0)).U32(IFA_ADDRESS, 1), "bad"},
        {Message(RTM_NEWADDR, Addr(24, 0)).Attr(IFA_ADDRESS, &two, 2), "bad"},
        {Message(RTM_NEWADDR, Addr(24, IFA_F_SECONDARY)).U32(IFA_ADDRESS, a), "192.0.2.5 type 4"},
        // Point to point: IFA_ADDRESS is the peer.
        {Message(RTM_NEWADDR, Addr(32, 0)).U32(IFA_ADDRESS, 9).U32(IFA_LOCAL, a),
         "192.0.2.5 type 5"},
        // Routes: the main table's only, one row per next hop.
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT)).U32(RTA_TABLE, 100), "skip"},
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT, RTN_UNICAST, RT_TABLE_COMPAT))
             .U32(RTA_TABLE, RT_TABLE_MAIN)
             .U32(RTA_OIF, 2),
         "via 0.0.0.0 if 2 type 3 proto 3; "},
        {Message(RTM_NEWROUTE, cloned), "skip"},
        {Message(RTM_NEWROUTE, wide), "bad"},
        {Message(RTM_NEWROUTE, Route(RTPROT_BOOT)).Attr(RTA_MULTIPATH, &overlong, sizeof overlong),
         "bad"},
        {Message(RTM_NEWROUTE, Route(RTPROT_DHCP, RTN_BLACKHOLE)),
         "via 0.0.0.0 if 0 type 2 proto 3; "},
        {Message(RTM_NEWROUTE, Route(RTPROT_REDIRECT)).Attr(RTA_VIA, &via, sizeof via),
         "via 192.0.2.1 if 0 type 4 proto 4; "},
        {Message(RTM_NEWROUTE, Route(RTPROT_STATIC)).Attr(RTA_MULTIPATH, paths, sizeof paths),
         "via 192.0.2.1 if 2 type 4 proto 3; via 0.0.0.0 if 3 type 3 proto 3; "},
        // Links: the type, the administrative and operational status (without a state sent,
        // up and running counts as connected), counters and the hardware address.
        {Message(RTM_NEWLINK, Link(ARPHRD_ETHER, 0)).Attr(IFLA_OPERSTATE, nullptr, 0), "bad"},
        {Message(RTM_NEWLINK, Link(ARPHRD_NONE, upRunning)), "type 131 admin 1 oper 4"},
        {Message(RTM_NEWLINK, Link(ARPHRD_IPGRE, IFF_UP)).U8(IFLA_OPERSTATE, IF_OPER_UNKNOWN),
         "type 131 admin 1 oper 2"},
        {Message(RTM_NEWLINK, Link(ARPHRD_PPP, upRunning)).U8(IFLA_OPERSTATE, IF_OPER_DORMANT),
         "type 23 admin 1 oper 3"},
        {Message(RTM_NEWLINK, Link(ARPHRD_ETHER, 0)).U8(IFLA_OPERSTATE, IF_OPER_DOWN),
         "type 6 admin 2 oper 2"},
        {Message(RTM_NEWLINK, Link(ARPHRD_ETHER, upRunning))
             .U8(IFLA_OPERSTATE, IF_OPER_LOWERLAYERDOWN),
         "type 6 admin 1 oper 2"},
        {Message(RTM_NEWLINK, Link(ARPHRD_ETHER, upRunning)).U8(IFLA_OPERSTATE, IF_OPER_TESTING),
         "type 6 admin 1 oper 0"},
        {Message(RTM_NEWLINK, Link(ARPHRD_IEEE1394, upRunning)).U8(IFLA_OPERSTATE, IF_OPER_UP),
         "type 1 admin 1 oper 5"},
        {Message(ib)
             .Attr(IFLA_STATS64, &stats64, sizeof stats64)
             .Attr(IFLA_STATS, &stats, sizeof stats),
         "type 1 admin 2 oper 2 in 7+3 out 4"},
        {Message(ib).Attr(IFLA_STATS, &stats, sizeof stats).Attr(IFLA_ADDRESS, hw, 6),
         "type 1 admin 2 oper 2 in 99+0 out 0 hw 1:2:3:4:5:6"},
        // An older kernel's shorter block; an InfiniBand address of 20 bytes.
        {Message(ib).Attr(IFLA_STATS64, &stats64, 16).Attr(IFLA_ADDRESS, hw, 20),
         "type 1 admin 2 oper 2 in 10+0 out 4 hw 1:2:3:4:5:6:7:8"},
    };
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(Parsed(*cases[i].first), cases[i].second) << i;
}

} // namespace
} // namespace vetra::platform::rtnl
