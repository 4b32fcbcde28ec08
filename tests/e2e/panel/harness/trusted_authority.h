// A certificate authority that this machine trusts for as long as the object lives.
#ifndef TAVRIN_TESTS_E2E_PANEL_HARNESS_TRUSTED_AUTHORITY_H_
#define TAVRIN_TESTS_E2E_PANEL_HARNESS_TRUSTED_AUTHORITY_H_

#include <windows.h>
#include <wincrypt.h>

#include <string>

namespace e2e {

class TrustedAuthority {
 public:
  // Throws std::runtime_error when the platform refuses.
  explicit TrustedAuthority(const std::string& der);
  ~TrustedAuthority();
  TrustedAuthority(const TrustedAuthority&) = delete;
  TrustedAuthority& operator=(const TrustedAuthority&) = delete;

 private:
  HCERTSTORE store_ = nullptr;
  PCCERT_CONTEXT certificate_ = nullptr;
};

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_PANEL_HARNESS_TRUSTED_AUTHORITY_H_
