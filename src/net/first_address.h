// first_address.h - the rule that picks the one IPv4 address a machine
// presents as its own, over a snapshot it is given.
//
// VETRA_GetLocalFirstIP applies it to a fresh snapshot; tests apply it to
// made-up ones.
#ifndef VETRA_NET_FIRST_ADDRESS_H
#define VETRA_NET_FIRST_ADDRESS_H

#include <cstdint>

#include "vetra/ip_info.h"

namespace vetra::net {

/// The dwAddr that VETRA_GetLocalFirstIP answers for `info` (the rule is told
/// in ip_info.h), or 0. Reads nothing but `info`.
uint32_t ChooseFirstLocalAddress(const _VTIPI_QUERY_INFO& info);

} // namespace vetra::net

#endif // VETRA_NET_FIRST_ADDRESS_H
