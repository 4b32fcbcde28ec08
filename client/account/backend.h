// The account's backend as the service would choose it, and what the client alone asks the panel.
#ifndef TAVRIN_CLIENT_ACCOUNT_BACKEND_H_
#define TAVRIN_CLIENT_ACCOUNT_BACKEND_H_

#include <memory>
#include <string>

#include "src/account/control_plane.h"
#include "src/panel/endpoints.h"
#include "src/panel/panel_client.h"

namespace vpn {

struct Backend {
  std::wstring runtimeDir;
  PanelEndpoints panel;  // an empty `apiBase`: the account is a file of this machine

  bool isPanel() const { return !panel.apiBase.empty(); }
  std::wstring sessionPath() const;
};

Backend FindBackend(const std::wstring& runtimeDir);

// With a credential file of its own, in the place of `session.json`.
std::unique_ptr<ControlPlane> MakeControlPlane(const Backend& backend,
                                               const std::wstring& credentialPath);

// Signed in with this credential file, for a look at the panel's raw replies.
PanelClient MakePanelClient(const Backend& backend, const std::wstring& credentialPath);

// A whole JSON object with this key in it. Anything may answer where a panel is expected: the
// log-in page of a hotel, the web server of a mistyped address, a panel whose reply breaks off.
bool IsPanelReply(const std::string& body, const std::string& key);

// A failure that the client found by itself: what is wrong, and what to do. Empty when nothing is.
struct Complaint {
  std::wstring text;
  std::wstring whatToDo;

  explicit operator bool() const { return !text.empty(); }
};

// The reply failed, or it has a good status and is not a panel's. The account interface takes a
// reply of the latter kind for an account without a plan, an unpaid order and the like.
Complaint JudgeReply(const Backend& backend, const PanelReply& reply, const std::string& key);

// The same for the account's own question, which is asked once more. Nothing without a panel.
Complaint LookAtAccount(const Backend& backend, const std::wstring& credentialPath);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_BACKEND_H_
