// A certificate authority made for this run, a certificate for "localhost" that it has
// signed, and one that nobody has.
#ifndef TAVRIN_TESTS_PANEL_CERTIFICATES_H_
#define TAVRIN_TESTS_PANEL_CERTIFICATES_H_

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace panel {

using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

struct Certificates {
  std::string authority;  // DER
  TlsContext trusted{nullptr, SSL_CTX_free};
  TlsContext untrusted{nullptr, SSL_CTX_free};
};

// Throws std::runtime_error.
Certificates MakeCertificates();

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_CERTIFICATES_H_
