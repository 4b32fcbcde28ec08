// The panel's credential: in the panel's answers, and in the credential file, `session.json`.
#ifndef TAVRIN_SRC_ACCOUNT_CREDENTIAL_H_
#define TAVRIN_SRC_ACCOUNT_CREDENTIAL_H_

#include <string>

#include "src/common/status.h"
#include "src/panel/http_request.h"

namespace vpn {

// The credential in a response: "auth_data" or "token", in its data object or anywhere. Empty when
// there is none.
std::wstring ExtractAuthData(const std::string& response);

// That of a request that succeeded.
std::wstring ExtractAuthData(const HttpReply& reply);

struct StoredCredential {
  std::wstring email;
  std::wstring authData;
};

// Both empty when the file can't be opened; a damaged one gives what can be found in it.
StoredCredential LoadCredential(const std::wstring& path);

// Neither value is escaped. Fails when the file can't be opened; whether the write itself worked is
// not tested.
Status SaveCredential(const std::wstring& path, const StoredCredential& credential);

}  // namespace vpn

#endif  // TAVRIN_SRC_ACCOUNT_CREDENTIAL_H_
