// The files of the runtime directory, by name.
#ifndef TAVRIN_SRC_RUNTIME_RUNTIME_FILES_H_
#define TAVRIN_SRC_RUNTIME_RUNTIME_FILES_H_

namespace vpn {

inline constexpr wchar_t kXrayDirectory[] = L"xray";
inline constexpr wchar_t kXrayProgram[] = L"xray.exe";  // in `kXrayDirectory`
inline constexpr wchar_t kTun2socksDirectory[] = L"tun2socks";
inline constexpr wchar_t kTun2socksPattern[] = L"tun2socks*.exe";  // in `kTun2socksDirectory`
inline constexpr wchar_t kWintunLibrary[] = L"wintun.dll";         // in `kTun2socksDirectory`
inline constexpr wchar_t kTun2socksImage[] = L"tun2socks";         // how its processes' names begin

inline constexpr wchar_t kPanelFile[] = L"panel.json";         // the panel's addresses
inline constexpr wchar_t kAccountFile[] = L"account.json";     // the local account
inline constexpr wchar_t kCredentialFile[] = L"session.json";  // who is signed in
inline constexpr wchar_t kXrayConfigFile[] = L"session.json.xray.json";
inline constexpr wchar_t kXrayErrorLog[] = L"xray-error.log";  // beside the configuration
inline constexpr wchar_t kServiceLogFile[] = L"tavrin-service.log";

}  // namespace vpn

#endif  // TAVRIN_SRC_RUNTIME_RUNTIME_FILES_H_
