// A part of interface_address.cpp, for its tests.
#ifndef TAVRIN_SRC_NET_INTERFACE_ADDRESS_INTERNAL_H_
#define TAVRIN_SRC_NET_INTERFACE_ADDRESS_INTERNAL_H_

#include "src/net/ip_helper.h"

#include <string>

#include "src/common/status.h"

namespace vpn {

// Fails when either is unknown.
Status LookupInterfaceIds(const std::wstring& alias, NET_LUID& luid, GUID& guid);

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_INTERFACE_ADDRESS_INTERNAL_H_
