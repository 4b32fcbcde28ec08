// Lets tests read what an XboardControlPlane keeps to itself: the addresses that it got and the
// session that it loaded decide every later request, but no operation tells them.
#ifndef TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_STATE_H_
#define TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_STATE_H_

#include <string>

#include "src/account/xboard_control_plane.h"

namespace vpn {

// An explicit instantiation may name private members; the friend that it defines hands them out.
template <class Tag, std::wstring XboardControlPlane::*Member>
struct Expose {
  friend std::wstring XboardControlPlane::*MemberOf(Tag) { return Member; }
};

struct ApiBase {
  friend std::wstring XboardControlPlane::*MemberOf(ApiBase);
};
struct SessionPath {
  friend std::wstring XboardControlPlane::*MemberOf(SessionPath);
};
struct DeviceApi {
  friend std::wstring XboardControlPlane::*MemberOf(DeviceApi);
};
struct InviteBase {
  friend std::wstring XboardControlPlane::*MemberOf(InviteBase);
};
struct AuthData {
  friend std::wstring XboardControlPlane::*MemberOf(AuthData);
};
struct Email {
  friend std::wstring XboardControlPlane::*MemberOf(Email);
};

template struct Expose<ApiBase, &XboardControlPlane::apiBase>;
template struct Expose<SessionPath, &XboardControlPlane::sessionPath>;
template struct Expose<DeviceApi, &XboardControlPlane::deviceApi>;
template struct Expose<InviteBase, &XboardControlPlane::inviteBase>;
template struct Expose<AuthData, &XboardControlPlane::authData>;
template struct Expose<Email, &XboardControlPlane::email>;

// Read<ApiBase>(panel)
template <class Tag>
const std::wstring& Read(const XboardControlPlane& panel) {
  return panel.*MemberOf(Tag());
}

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_STATE_H_
