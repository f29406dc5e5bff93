// rtnetlink_rows.h - reads the kernel's rtnetlink dump messages into the rows of
// net_tables.h: the walk over a received datagram, one parser per table, and the
// order the tables are handed out in. Pure functions on bytes, no I/O.
//
// Every length is checked against the bytes that were received: a message, an
// attribute or a next hop that claims more than is there makes the parse fail,
// and nothing is read past the end of the data.
#ifndef VETRA_PLATFORM_POSIX_RTNETLINK_ROWS_H
#define VETRA_PLATFORM_POSIX_RTNETLINK_ROWS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <linux/netlink.h>
#include <vector>

#include "platform/net_tables.h"

namespace vetra::platform::rtnl {

/// Where a dump stands after one datagram.
enum class DumpState {
    kMore,   // every message was taken; more datagrams follow
    kDone,   // the dump's end was reached
    kFailed, // an error answer, an interrupted dump, or a malformed message
};

/// What a parser made of one message.
enum class Parse {
    kRow,  // a row was filled
    kSkip, // a message of another family, table or kind: no row, no error
    kBad,  // the message is malformed
};

/// The end of a dump: kDone, or kFailed when the kernel gave up on the dump
/// half-way and says so by a negative error number in the message.
inline DumpState DoneState(const nlmsghdr& done) {
    int error = 0;
    if (done.nlmsg_len >= NLMSG_LENGTH(sizeof error))
        std::memcpy(&error, NLMSG_DATA(&done), sizeof error);
    return error < 0 ? DumpState::kFailed : DumpState::kDone;
}

/// Walks the messages of one datagram (4-byte aligned, `length` bytes) of the
/// dump sent with sequence number `seq`, calling `take(const nlmsghdr&)` on each
/// data message; messages of another sequence number, left from an earlier
/// request, are passed over. `take` returns false to fail the dump. A dump the
/// kernel marks as interrupted by a change of the table fails, as does any
/// error answer, an end that carries an error, and any message that overruns
/// the datagram.
template <class Take>
DumpState WalkDatagram(const void* data, size_t length, uint32_t seq, Take&& take) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    size_t offset = 0;
    while (length - offset >= sizeof(nlmsghdr)) {
        const auto* msg = reinterpret_cast<const nlmsghdr*>(bytes + offset);
        if (msg->nlmsg_len < sizeof(nlmsghdr) || msg->nlmsg_len > length - offset)
            return DumpState::kFailed;
        const size_t next = offset + NLMSG_ALIGN(msg->nlmsg_len);
        offset = next < length ? next : length;
        if (msg->nlmsg_seq != seq) continue;
        if (msg->nlmsg_flags & NLM_F_DUMP_INTR) return DumpState::kFailed;
        if (msg->nlmsg_type == NLMSG_DONE) return DoneState(*msg);
        if (msg->nlmsg_type == NLMSG_ERROR || msg->nlmsg_type == NLMSG_OVERRUN)
            return DumpState::kFailed;
        if (msg->nlmsg_type < NLMSG_MIN_TYPE) continue; // NLMSG_NOOP
        if (!take(*msg)) return DumpState::kFailed;
    }
    return offset == length ? DumpState::kMore : DumpState::kFailed;
}

/// An RTM_NEWADDR message: IPv4 addresses give a row; other families kSkip.
Parse ParseAddress(const nlmsghdr& msg, NetAddressRow* row);

/// An RTM_NEWROUTE message: an IPv4 route of the main table appends one row per
/// next hop to `rows`; other families and tables, and cached routes, kSkip.
Parse ParseRoute(const nlmsghdr& msg, std::vector<NetRouteRow>* rows);

/// An RTM_NEWLINK message: fills every field but `speed`, which is 0.
Parse ParseLink(const nlmsghdr& msg, NetInterfaceRow* row);

/// Bits per second from a driver's speed in Mbit/s; 0 for an unknown speed
/// (0 or 0xFFFFFFFF, the kernel's -1); speeds past the 32-bit range of bits
/// per second (4.3 Gbit/s and up) give 4294967295.
uint32_t SpeedBits(uint32_t megabits);

/// Put the tables in the order they are handed out in (net_tables.h).
void SortAddresses(std::vector<NetAddressRow>& rows);
void SortRoutes(std::vector<NetRouteRow>& rows);
void SortInterfaces(std::vector<NetInterfaceRow>& rows);

} // namespace vetra::platform::rtnl

#endif // VETRA_PLATFORM_POSIX_RTNETLINK_ROWS_H
