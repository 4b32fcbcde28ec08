// What tells this computer from the user's others: random, and nothing of the machine's own.
#ifndef TAVRIN_CLIENT_ACCOUNT_DEVICE_IDENTITY_H_
#define TAVRIN_CLIENT_ACCOUNT_DEVICE_IDENTITY_H_

#include <string>

namespace vpn {

inline constexpr wchar_t kDeviceFile[] = L"device.id";

// 32 hexadecimal digits, kept in the runtime directory in a file that the user and the system alone
// may open. Made when there is none or a damaged one; empty when none can be made or kept, and when
// the file is another user's.
std::wstring DeviceIdentity(const std::wstring& runtimeDir);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_DEVICE_IDENTITY_H_
