// Lets tests read what an XboardControlPlane keeps to itself: the addresses that it got and the
// session that it loaded decide every later request, but no operation tells them.
#ifndef TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_STATE_H_
#define TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_STATE_H_

#include <string>

#include "src/account/xboard_control_plane.h"

namespace vpn {

// An explicit instantiation may name private members; the friend that it defines hands them out.
template <class Tag, typename Tag::Member Value>
struct Expose {
  friend typename Tag::Member MemberOf(Tag) { return Value; }
};

struct Panel {
  using Member = PanelClient XboardControlPlane::*;
  friend Member MemberOf(Panel);
};
struct CredentialPath {
  using Member = std::wstring XboardControlPlane::*;
  friend Member MemberOf(CredentialPath);
};
struct DeviceApi {
  using Member = std::wstring XboardControlPlane::*;
  friend Member MemberOf(DeviceApi);
};
struct InviteBase {
  using Member = std::wstring XboardControlPlane::*;
  friend Member MemberOf(InviteBase);
};
struct Email {
  using Member = std::wstring XboardControlPlane::*;
  friend Member MemberOf(Email);
};

template struct Expose<Panel, &XboardControlPlane::panel_>;
template struct Expose<CredentialPath, &XboardControlPlane::credentialPath_>;
template struct Expose<DeviceApi, &XboardControlPlane::deviceApi_>;
template struct Expose<InviteBase, &XboardControlPlane::inviteBase_>;
template struct Expose<Email, &XboardControlPlane::email_>;

// Read<DeviceApi>(panel)
template <class Tag>
const std::wstring& Read(const XboardControlPlane& panel) {
  return panel.*MemberOf(Tag());
}

struct ApiBase {};
template <>
inline const std::wstring& Read<ApiBase>(const XboardControlPlane& panel) {
  return (panel.*MemberOf(Panel())).base;
}

struct AuthData {};
template <>
inline const std::wstring& Read<AuthData>(const XboardControlPlane& panel) {
  return (panel.*MemberOf(Panel())).credential;
}

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_STATE_H_
