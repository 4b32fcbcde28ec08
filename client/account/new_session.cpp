#include "client/account/new_session.h"

#include <windows.h>

#include "src/account/credential.h"
#include "src/account/local_account.h"

namespace vpn {

NewSession::NewSession(const Backend& backend)
    : place_(backend.sessionPath()), path_(place_ + L".new") {}

NewSession::~NewSession() {
  (void)DeleteFileW(path_.c_str());  // after it has taken the place there is none
}

Status NewSession::tryWriting(const Backend& backend) const {
  return backend.isPanel() ? SaveCredential(path_, L"", L"") : WriteTextFile(path_, "");
}

bool NewSession::takePlace() const {
  constexpr int kTries = 20;
  constexpr DWORD kPause = 50;  // milliseconds
  for (int tries = 0; tries < kTries; ++tries) {
    if (MoveFileExW(path_.c_str(), place_.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE) {
      return true;
    }
    Sleep(kPause);
  }
  return false;
}

}  // namespace vpn
