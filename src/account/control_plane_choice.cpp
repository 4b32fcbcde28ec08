#include "src/account/control_plane_choice.h"

#include "src/account/local_control_plane.h"
#include "src/account/xboard_control_plane.h"
#include "src/panel/endpoints.h"
#include "src/runtime/runtime_files.h"

namespace vpn {

std::unique_ptr<ControlPlane> CreateControlPlane(const std::wstring& runtimeDir) {
  const std::wstring credentialPath = runtimeDir + L'\\' + kCredentialFile;
  PanelEndpoints panel = ReadPanelEndpoints(runtimeDir);
  if (TrimEndSlashes(panel.apiBase).empty()) {
    panel = {};
    panel.apiBase = PanelUrlFromEnvironment();
  }
  if (TrimEndSlashes(panel.apiBase).empty()) {
    return std::make_unique<LocalControlPlane>(runtimeDir + L'\\' + kAccountFile, credentialPath);
  }
  return std::make_unique<XboardControlPlane>(panel.apiBase, credentialPath, panel.deviceApi,
                                              panel.inviteBase);
}

}  // namespace vpn
