// The choice of the account backend.
#ifndef TAVRIN_SRC_ACCOUNT_CONTROL_PLANE_CHOICE_H_
#define TAVRIN_SRC_ACCOUNT_CONTROL_PLANE_CHOICE_H_

#include <memory>
#include <string>

#include "src/account/control_plane.h"

namespace vpn {

// The panel that `panel.json` names, else the one that the environment names, else the local
// account file. Never null; no address is validated and nothing is sent.
std::unique_ptr<ControlPlane> CreateControlPlane(const std::wstring& runtimeDir);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_CONTROL_PLANE_CHOICE_H_
