// net_tables.cpp - the machine's IPv4 tables on Linux: one rtnetlink dump per
// table (addresses, main-table routes, links with their statistics), and each
// running link's speed from its driver.
//
// Each table is read on a socket of its own, so a failed read leaves nothing
// behind for the next one. A table that can't be read whole fails: there is
// no retry. The parsing is in rtnetlink_rows.cpp.
#include "platform/net_tables.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <linux/ethtool.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <memory>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/posix/rtnetlink_rows.h"

namespace vetra::platform {

namespace {

// The kernel fills a dump datagram up to the reader's buffer size, at most
// 32 KiB; a larger buffer gains nothing, and a datagram cut short fails.
constexpr size_t kDatagramSize = 32768;
// No table of a real machine comes near this many datagrams.
constexpr unsigned kMostDatagrams = 1u << 16;

class RouteSocket {
  public:
    RouteSocket() : fd_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {
        // Lets the kernel filter a dump by the request's fields (the route
        // table); older kernels refuse the option and send everything.
        const int on = 1;
        if (fd_ >= 0) setsockopt(fd_, SOL_NETLINK, NETLINK_GET_STRICT_CHK, &on, sizeof on);
    }
    ~RouteSocket() {
        if (fd_ >= 0) close(fd_);
    }
    RouteSocket(const RouteSocket&) = delete;
    RouteSocket& operator=(const RouteSocket&) = delete;

    int fd() const { return fd_; }

    // Sends a dump request of `type` with the family header `body`, and hands
    // every message of the answer to `take`. True once the whole dump was read.
    template <class Body, class Take> bool Dump(uint16_t type, const Body& body, Take&& take) {
        if (fd_ < 0) return false;
        struct {
            nlmsghdr header;
            Body body;
        } request{};
        request.header.nlmsg_len = NLMSG_LENGTH(sizeof(Body));
        request.header.nlmsg_type = type;
        request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        request.header.nlmsg_seq = kSeq;
        request.body = body;
        sockaddr_nl kernel{};
        kernel.nl_family = AF_NETLINK;
        ssize_t sent;
        do
            sent = sendto(fd_, &request, request.header.nlmsg_len, 0,
                          reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel);
        while (sent < 0 && errno == EINTR);
        if (sent != static_cast<ssize_t>(request.header.nlmsg_len)) return false;

        // uint64_t elements keep the messages aligned for the walk.
        std::unique_ptr<uint64_t[]> buffer(new uint64_t[kDatagramSize / sizeof(uint64_t)]);
        for (unsigned count = 0; count < kMostDatagrams; ++count) {
            sockaddr_nl from{};
            iovec io{buffer.get(), kDatagramSize};
            msghdr header{};
            header.msg_name = &from;
            header.msg_namelen = sizeof from;
            header.msg_iov = &io;
            header.msg_iovlen = 1;
            ssize_t got;
            do
                got = recvmsg(fd_, &header, 0);
            while (got < 0 && errno == EINTR);
            // An error here is mostly ENOBUFS: the socket overran and lost part of the dump.
            if (got <= 0 || (header.msg_flags & MSG_TRUNC)) return false;
            if (from.nl_pid != 0) continue; // only the kernel answers
            switch (rtnl::WalkDatagram(buffer.get(), static_cast<size_t>(got), kSeq, take)) {
            case rtnl::DumpState::kMore:
                break;
            case rtnl::DumpState::kDone:
                return true;
            case rtnl::DumpState::kFailed:
                return false;
            }
        }
        return false;
    }

  private:
    static constexpr uint32_t kSeq = 1; // one request per socket
    int fd_;
};

// Reads one table: each message goes to `parse(const nlmsghdr&)`, which gives
// an rtnl::Parse; a malformed message fails the table.
template <class Body, class ParseOne>
bool ReadTable(uint16_t type, const Body& body, ParseOne&& parse) {
    RouteSocket socket;
    return socket.Dump(type, body,
                       [&](const nlmsghdr& msg) { return parse(msg) != rtnl::Parse::kBad; });
}

bool ReadAddresses(std::vector<NetAddressRow>* rows) {
    rows->clear();
    ifaddrmsg request{};
    request.ifa_family = AF_INET;
    NetAddressRow row;
    if (!ReadTable(RTM_GETADDR, request, [&](const nlmsghdr& msg) {
            const rtnl::Parse result = rtnl::ParseAddress(msg, &row);
            if (result == rtnl::Parse::kRow) rows->push_back(row);
            return result;
        }))
        return false;
    rtnl::SortAddresses(*rows);
    return true;
}

bool ReadRoutes(std::vector<NetRouteRow>* rows) {
    rows->clear();
    rtmsg request{};
    request.rtm_family = AF_INET;
    request.rtm_table = RT_TABLE_MAIN; // honoured by kernels with strict checking
    if (!ReadTable(RTM_GETROUTE, request,
                   [&](const nlmsghdr& msg) { return rtnl::ParseRoute(msg, rows); }))
        return false;
    rtnl::SortRoutes(*rows);
    return true;
}

// The link's speed in bit/s, the figure /sys/class/net/<name>/speed shows,
// asked of the driver on `fd` (any socket: it names the network namespace the
// link is looked up in, where /sys may show another namespace's links); 0
// when the driver doesn't know. Like sysfs, it isn't asked while the link is
// down, nor for loopback, which has no figure.
uint32_t ReadLinkSpeed(int fd, const NetInterfaceRow& row) {
    if (fd < 0 || row.adminStatus != kAdminUp || row.type == kIfLoopback) return 0;
    if (row.descrLen == 0 || row.descrLen >= IFNAMSIZ) return 0;
    ethtool_cmd command{};
    command.cmd = ETHTOOL_GSET; // needs no privilege, unlike most ethtool requests
    ifreq request{};
    std::memcpy(request.ifr_name, row.descr, row.descrLen);
    request.ifr_data = reinterpret_cast<char*>(&command);
    if (ioctl(fd, SIOCETHTOOL, &request) != 0) return 0;
    return rtnl::SpeedBits(ethtool_cmd_speed(&command));
}

bool ReadInterfaces(std::vector<NetInterfaceRow>* rows) {
    rows->clear();
    ifinfomsg request{};
    request.ifi_family = AF_UNSPEC;
    NetInterfaceRow row;
    RouteSocket socket;
    if (!socket.Dump(RTM_GETLINK, request, [&](const nlmsghdr& msg) {
            const rtnl::Parse result = rtnl::ParseLink(msg, &row);
            if (result == rtnl::Parse::kRow) rows->push_back(row);
            return result != rtnl::Parse::kBad;
        }))
        return false;
    rtnl::SortInterfaces(*rows);
    for (NetInterfaceRow& each : *rows)
        each.speed = ReadLinkSpeed(socket.fd(), each);
    return true;
}

} // namespace

const NetTableReaders& SystemNetTables() {
    static const NetTableReaders readers{ReadAddresses, ReadRoutes, ReadInterfaces};
    return readers;
}

} // namespace vetra::platform
