// The hand-written account files of a runtime directory.
#ifndef TAVRIN_TESTS_E2E_HARNESS_ACCOUNT_H_
#define TAVRIN_TESTS_E2E_HARNESS_ACCOUNT_H_

#include <string>

namespace e2e {

// A usable account; a test changes what it is about.
struct Account {
  std::string email = "user@tavrin.example";
  std::string expireAt = "2099-12-31";
  std::string nodeName = "东京 1";
  std::string address = "203.0.113.9";
  int port = 443;
  std::string uuid = "7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11";
  std::string sni = "www.tokyo.example";
  std::string publicKey = "Zm9yLXRlc3RzLW9ubHktbm90LWEtcmVhbC1rZXktISE";
  std::string shortId = "0123456789abcdef";
};

std::string AccountText(const Account& account);
std::string SessionText(const std::string& email);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_ACCOUNT_H_
