// A sign-in beside the one that works: nothing takes its place before the new one is proven.
#ifndef TAVRIN_CLIENT_ACCOUNT_NEW_SESSION_H_
#define TAVRIN_CLIENT_ACCOUNT_NEW_SESSION_H_

#include <string>

#include "src/common/status.h"

namespace vpn {

inline constexpr wchar_t kNewSessionEnding[] = L".new";

class NewSession {
 public:
  NewSession(std::wstring path, std::wstring place);
  // Nothing is left over.
  ~NewSession();
  NewSession(const NewSession&) = delete;
  NewSession& operator=(const NewSession&) = delete;

  // Whether this user may write there, tried out; a failure has the text of the backend's own.
  Status tryWriting(bool isPanel) const;

  // In one step; the old file stands when it fails. The service may have it open for a moment.
  bool takePlace() const;

 private:
  std::wstring path_;
  std::wstring place_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_NEW_SESSION_H_
