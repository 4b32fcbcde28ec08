#include "client/account/new_session.h"

#include <windows.h>

#include <utility>

#include "src/account/credential.h"
#include "src/account/local_account.h"

namespace vpn {

NewSession::NewSession(std::wstring path, std::wstring place)
    : path_(std::move(path)), place_(std::move(place)) {}

NewSession::~NewSession() {
  (void)DeleteFileW(path_.c_str());  // after it has taken the place there is none
}

Status NewSession::tryWriting(bool isPanel) const {
  return isPanel ? SaveCredential(path_, {}, {}) : WriteTextFile(path_, "");
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
