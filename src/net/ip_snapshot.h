// ip_snapshot.h - fills a snapshot record from the three table readers: the
// copy of each row into the records, the default gateway, and the interface
// description as UTF-16 text.
//
// CVTIpInfo::Query hands it the system's tables; tests hand it made-up ones.
#ifndef VETRA_NET_IP_SNAPSHOT_H
#define VETRA_NET_IP_SNAPSHOT_H

#include "platform/net_tables.h"
#include "vetra/ip_info.h"

namespace vetra::net {

/// Reads addresses, routes and interfaces from `source`, in this order, into `info`, which
/// must be empty (every field 0 or null). Each table stands alone: one that
/// fails to read, or has no rows, leaves its array null and its count 0. The
/// arrays are allocated with new[]. Throws std::bad_alloc when memory runs
/// out; `info` then holds the tables filled so far, and nothing leaks.
void TakeSnapshot(platform::NetTableSource& source, _VTIPI_QUERY_INFO* info);

/// Frees the arrays of `info` and sets every field to 0 or null.
void FreeSnapshot(_VTIPI_QUERY_INFO* info);

} // namespace vetra::net

#endif // VETRA_NET_IP_SNAPSHOT_H
