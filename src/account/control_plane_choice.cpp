#include "src/account/control_plane_choice.h"

#include "src/account/local_control_plane.h"
#include "src/account/xboard_control_plane.h"
#include "src/panel/endpoints.h"
#include "src/runtime/runtime_files.h"

namespace vpn {

std::unique_ptr<ControlPlane> CreateControlPlane(const std::wstring& runtimeDir) {
  const std::wstring credentialPath = runtimeDir + L'\\' + kSessionFile;
  const PanelEndpoints endpoints = ReadPanelEndpoints(runtimeDir);
  std::wstring apiBase = TrimEndSlashes(endpoints.apiBase);
  if (!apiBase.empty()) {
    return std::make_unique<XboardControlPlane>(std::move(apiBase), credentialPath,
                                                endpoints.deviceApi, endpoints.inviteBase);
  }
  apiBase = TrimEndSlashes(PanelUrlFromEnvironment());
  if (!apiBase.empty()) {
    return std::make_unique<XboardControlPlane>(std::move(apiBase), credentialPath, L"", L"");
  }
  return std::make_unique<LocalControlPlane>(runtimeDir + L'\\' + kAccountFile, credentialPath);
}

}  // namespace vpn
