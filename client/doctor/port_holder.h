#ifndef TAVRIN_CLIENT_DOCTOR_PORT_HOLDER_H_
#define TAVRIN_CLIENT_DOCTOR_PORT_HOLDER_H_

#include <cstdint>
#include <string>

namespace vpn {

// Who listens on a TCP port of this machine, as "v2ray.exe (process 4711)".
std::wstring HolderOfPort(std::uint16_t port);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_PORT_HOLDER_H_
