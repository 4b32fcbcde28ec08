#include "tests/panel/certificates.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <random>
#include <stdexcept>

namespace panel {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

constexpr long kDay = 24 * 60 * 60;        // seconds
constexpr char kName[] = "DNS:localhost";  // not the address, which so is another name

void Require(bool condition) {
  if (!condition) throw std::runtime_error("cannot make the certificates");
}

Key MakeKey() {
  Key key(EVP_RSA_gen(2048), EVP_PKEY_free);
  Require(key != nullptr);
  return key;
}

void AddExtension(X509* certificate, X509* issuer, int id, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, id, value);
  Require(extension != nullptr);
  Require(X509_add_ext(certificate, extension, -1) == 1);
  X509_EXTENSION_free(extension);
}

// Named and dated, without extensions and signature. A new number for each, since a platform may
// remember a certificate by its issuer and number.
Certificate Blank(const std::string& name, EVP_PKEY* key) {
  Certificate certificate(X509_new(), X509_free);
  Require(certificate != nullptr);
  X509* const raw = certificate.get();
  X509_set_version(raw, X509_VERSION_3);
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(raw), std::random_device()());
  X509_gmtime_adj(X509_getm_notBefore(raw), -kDay);
  X509_gmtime_adj(X509_getm_notAfter(raw), 30 * kDay);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(raw), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
  Require(X509_set_pubkey(raw, key) == 1);
  return certificate;
}

void Sign(X509* certificate, X509* issuer, EVP_PKEY* issuerKey) {
  Require(X509_set_issuer_name(certificate, X509_get_subject_name(issuer)) == 1);
  Require(X509_sign(certificate, issuerKey, EVP_sha256()) > 0);
}

Certificate MakeAuthority(EVP_PKEY* key) {
  Certificate certificate =
      Blank("Tavrin test panel authority " + std::to_string(std::random_device()()), key);
  X509* const raw = certificate.get();
  AddExtension(raw, raw, NID_basic_constraints, "critical,CA:TRUE");
  AddExtension(raw, raw, NID_key_usage, "critical,keyCertSign,cRLSign");
  AddExtension(raw, raw, NID_subject_key_identifier, "hash");
  Sign(raw, raw, key);
  return certificate;
}

Certificate MakeServer(EVP_PKEY* key, X509* issuer, EVP_PKEY* issuerKey) {
  Certificate certificate = Blank("localhost", key);
  X509* const raw = certificate.get();
  X509* const signer = issuer != nullptr ? issuer : raw;
  AddExtension(raw, signer, NID_basic_constraints, "critical,CA:FALSE");
  AddExtension(raw, signer, NID_key_usage, "critical,digitalSignature,keyEncipherment");
  AddExtension(raw, signer, NID_ext_key_usage, "serverAuth");
  AddExtension(raw, signer, NID_subject_alt_name, kName);
  Sign(raw, signer, issuer != nullptr ? issuerKey : key);
  return certificate;
}

TlsContext MakeContext(X509* certificate, EVP_PKEY* key) {
  TlsContext context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  Require(context != nullptr);
  Require(SSL_CTX_use_certificate(context.get(), certificate) == 1);
  Require(SSL_CTX_use_PrivateKey(context.get(), key) == 1);
  return context;
}

std::string Der(X509* certificate) {
  unsigned char* bytes = nullptr;
  const int size = i2d_X509(certificate, &bytes);
  Require(size > 0);
  const std::string text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  OPENSSL_free(bytes);
  return text;
}

}  // namespace

Certificates MakeCertificates() {
  const Key authorityKey = MakeKey();
  const Key serverKey = MakeKey();
  const Certificate authority = MakeAuthority(authorityKey.get());
  const Certificate trusted = MakeServer(serverKey.get(), authority.get(), authorityKey.get());
  const Certificate untrusted = MakeServer(serverKey.get(), nullptr, nullptr);
  return {Der(authority.get()), MakeContext(trusted.get(), serverKey.get()),
          MakeContext(untrusted.get(), serverKey.get())};
}

}  // namespace panel
