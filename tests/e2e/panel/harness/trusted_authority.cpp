#include "tests/e2e/panel/harness/trusted_authority.h"

#include <stdexcept>

namespace e2e {

// The machine's list, not the user's: for the latter Windows would ask the person at the screen.
TrustedAuthority::TrustedAuthority(const std::string& der)
    : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_REGISTRY_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE,
                           L"Root")) {
  const auto* const bytes = reinterpret_cast<const BYTE*>(der.data());
  if (CertAddEncodedCertificateToStore(store_, X509_ASN_ENCODING, bytes,
                                       static_cast<DWORD>(der.size()), CERT_STORE_ADD_ALWAYS,
                                       &certificate_) == FALSE) {
    const DWORD code = GetLastError();
    CertCloseStore(store_, 0);
    throw std::runtime_error("the authority can't be trusted, code " + std::to_string(code));
  }
  CertControlStore(store_, 0, CERT_STORE_CTRL_COMMIT, nullptr);  // others read it from now on
}

TrustedAuthority::~TrustedAuthority() {
  CertDeleteCertificateFromStore(certificate_);
  CertCloseStore(store_, 0);
}

}  // namespace e2e
