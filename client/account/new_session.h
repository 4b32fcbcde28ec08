// A sign-in beside the one that works: nothing takes its place before the new one is proven.
#ifndef TAVRIN_CLIENT_ACCOUNT_NEW_SESSION_H_
#define TAVRIN_CLIENT_ACCOUNT_NEW_SESSION_H_

#include <string>

#include "client/account/backend.h"

namespace vpn {

class NewSession {
 public:
  explicit NewSession(const Backend& backend);
  // Nothing is left over.
  ~NewSession();
  NewSession(const NewSession&) = delete;
  NewSession& operator=(const NewSession&) = delete;

  const std::wstring& path() const { return path_; }

  // Whether this user may write there, tried out; a failure has the text of the backend's own.
  Status tryWriting(const Backend& backend) const;

  // In one step; the old file stands when it fails. The service may have it open for a moment.
  bool takePlace() const;

 private:
  std::wstring place_;
  std::wstring path_;
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_NEW_SESSION_H_
