// net_tables.cpp - the machine's IPv4 tables on Linux: one rtnetlink dump per
// table (addresses, main-table routes, links with their statistics) and each
// running link's speed from its driver, all over one netlink socket.
//
// A table that can't be read whole fails, without a retry; the socket is then
// dropped, with whatever was left of that dump, and the next table opens a new
// one. The parsing is in rtnetlink_rows.cpp.
#include "platform/net_tables.h"

#include <cerrno>
#include <cstring>
#include <linux/ethtool.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/posix/rtnetlink_rows.h"
#include "platform/utf8_codec.h"

namespace vetra::platform {

namespace {

// The kernel fills a dump datagram up to the reader's buffer size, at most
// 32 KiB; a larger buffer gains nothing, and a datagram cut short fails.
constexpr size_t kDatagramSize = 32768;
// No table of a real machine comes near this many datagrams.
constexpr unsigned kMostDatagrams = 1u << 16;

class RtnetlinkSource final : public NetTableSource {
  public:
    ~RtnetlinkSource() override { Drop(); }

    bool ReadAddresses(std::vector<NetAddressRow>* rows) override {
        ifaddrmsg request{};
        request.ifa_family = AF_INET;
        if (!ReadRows(RTM_GETADDR, request, rtnl::ParseAddress, rows)) return false;
        rtnl::SortAddresses(*rows);
        return true;
    }

    bool ReadRoutes(std::vector<NetRouteRow>* rows) override {
        rows->clear();
        rtmsg request{};
        request.rtm_family = AF_INET;
        request.rtm_table = RT_TABLE_MAIN; // honoured by kernels with strict checking
        if (!Dump(RTM_GETROUTE, request, [&](const nlmsghdr& msg) {
                return rtnl::ParseRoute(msg, rows) != rtnl::Parse::kBad;
            }))
            return false;
        rtnl::SortRoutes(*rows);
        return true;
    }

    bool ReadInterfaces(std::vector<NetInterfaceRow>* rows) override {
        ifinfomsg request{};
        request.ifi_family = AF_UNSPEC;
        if (!ReadRows(RTM_GETLINK, request, rtnl::ParseLink, rows)) return false;
        rtnl::SortInterfaces(*rows);
        for (NetInterfaceRow& each : *rows)
            each.speed = ReadLinkSpeed(each);
        return true;
    }

  private:
    // Dumps a table whose messages each give at most one row, by `parse`.
    template <class Body, class Row>
    bool ReadRows(uint16_t type, const Body& request, rtnl::Parse (*parse)(const nlmsghdr&, Row*),
                  std::vector<Row>* rows) {
        rows->clear();
        Row row;
        return Dump(type, request, [&](const nlmsghdr& msg) {
            const rtnl::Parse result = parse(msg, &row);
            if (result == rtnl::Parse::kRow) rows->push_back(row);
            return result != rtnl::Parse::kBad;
        });
    }

    bool Open() {
        if (fd_ >= 0) return true;
        fd_ = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
        if (fd_ < 0) return false;
        // Lets the kernel filter a dump by the request's fields (the route
        // table); older kernels refuse the option and send everything.
        const int on = 1;
        setsockopt(fd_, SOL_NETLINK, NETLINK_GET_STRICT_CHK, &on, sizeof on);
        return true;
    }

    void Drop() {
        if (fd_ >= 0) close(fd_);
        fd_ = -1;
    }

    // Sends a dump request of `type` with the family header `body`, and hands
    // every message of the answer to `take`. True once the whole dump was read;
    // otherwise the socket is dropped with the rest of the dump.
    template <class Body, class Take> bool Dump(uint16_t type, const Body& body, Take&& take) {
        if (!Open()) return false;
        struct {
            nlmsghdr header;
            Body body;
        } request{};
        request.header.nlmsg_len = NLMSG_LENGTH(sizeof(Body));
        request.header.nlmsg_type = type;
        request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        request.header.nlmsg_seq = ++seq_;
        request.body = body;
        if (!SendAndWalk(&request, request.header.nlmsg_len, take)) {
            Drop();
            return false;
        }
        return true;
    }

    template <class Take> bool SendAndWalk(const void* request, size_t length, Take& take) {
        sockaddr_nl kernel{};
        kernel.nl_family = AF_NETLINK;
        ssize_t sent;
        do
            sent = sendto(fd_, request, length, 0, reinterpret_cast<const sockaddr*>(&kernel),
                          sizeof kernel);
        while (sent < 0 && errno == EINTR);
        if (sent != static_cast<ssize_t>(length)) return false;

        // uint64_t elements keep the messages aligned for the walk.
        if (!buffer_) buffer_.reset(new uint64_t[kDatagramSize / sizeof(uint64_t)]);
        for (unsigned count = 0; count < kMostDatagrams; ++count) {
            sockaddr_nl from{};
            iovec io{buffer_.get(), kDatagramSize};
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
            switch (rtnl::WalkDatagram(buffer_.get(), static_cast<size_t>(got), seq_, take)) {
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

    // The link's speed in bit/s, the figure /sys/class/net/<name>/speed shows,
    // asked of the driver through the socket, which names the network
    // namespace the link is looked up in (/sys may show another namespace's
    // links); 0 when the driver doesn't know. Like sysfs, it isn't asked while
    // the link is down, nor for loopback, which has no figure.
    uint32_t ReadLinkSpeed(const NetInterfaceRow& row) const {
        if (fd_ < 0 || row.adminStatus != kAdminUp || row.type == kIfLoopback) return 0;
        if (row.descrLen == 0 || row.descrLen >= IFNAMSIZ) return 0;
        ethtool_cmd command{};
        command.cmd = ETHTOOL_GSET; // needs no privilege, unlike most ethtool requests
        ifreq request{};
        std::memcpy(request.ifr_name, row.descr, row.descrLen);
        request.ifr_data = reinterpret_cast<char*>(&command);
        if (ioctl(fd_, SIOCETHTOOL, &request) != 0) return 0;
        return rtnl::SpeedBits(ethtool_cmd_speed(&command));
    }

    int fd_ = -1;
    uint32_t seq_ = 0; // each request's own, so that nothing older is taken for its answer
    std::unique_ptr<uint64_t[]> buffer_;
};

} // namespace

std::unique_ptr<NetTableSource> OpenSystemNetTables() {
    return std::make_unique<RtnetlinkSource>();
}

size_t DecodeDescription(const char* descr, size_t length, char16_t* out, size_t capacity) {
    const size_t units = utf8::Decode(descr, length, out, capacity);
    return units == utf8::kNoRoom ? 0 : units;
}

} // namespace vetra::platform
