// The panel's credential: in the panel's answers, and in the credential file, `session.json`.
#ifndef TAVRIN_SRC_ACCOUNT_CREDENTIAL_H_
#define TAVRIN_SRC_ACCOUNT_CREDENTIAL_H_

#include <string>

#include "src/common/status.h"
#include "src/panel/panel_client.h"

namespace vpn {

// "auth_data" or "token" of a successful reply, in its data object or anywhere. Empty when there is
// none.
std::wstring ExtractAuthData(const PanelReply& reply);

// Writes the credential file; neither value is escaped. Fails when it can't be opened; whether the
// write itself worked is not tested.
Status SaveCredential(const std::wstring& path, const std::wstring& email,
                      const std::wstring& authData);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_CREDENTIAL_H_
