// ip_info.cpp - CVTIpInfo: the object that owns one snapshot of the machine's
// IPv4 tables. The reading and copying are in ip_snapshot.cpp.
#include "vetra/ip_info.h"

#include "net/ip_snapshot.h"

CVTIpInfo::CVTIpInfo() : m_queryInfo{} {}

CVTIpInfo::~CVTIpInfo() {
    Cleanup();
}

_VTIPI_QUERY_INFO* CVTIpInfo::Query() {
    // Freed first, so that a table that fails to read leaves nothing of the
    // last snapshot behind.
    Cleanup();
    vetra::net::TakeSnapshot(*vetra::platform::OpenSystemNetTables(), &m_queryInfo);
    return &m_queryInfo;
}

int CVTIpInfo::IsTcpIpInstalled() {
    return 1;
}

int CVTIpInfo::Cleanup() {
    vetra::net::FreeSnapshot(&m_queryInfo);
    return 1;
}
