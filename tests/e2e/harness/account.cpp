#include "tests/e2e/harness/account.h"

namespace e2e {

std::string AccountText(const Account& account) {
  return "{\n  \"email\": \"" + account.email +
         "\",\n  \"password\": \"secret\",\n  \"expireAt\": \"" + account.expireAt +
         "\",\n  \"deviceLimit\": 3,\n  \"nodeName\": \"" + account.nodeName +
         "\",\n  \"address\": \"" + account.address +
         "\",\n  \"port\": " + std::to_string(account.port) + ",\n  \"uuid\": \"" + account.uuid +
         "\",\n  \"flow\": \"xtls-rprx-vision\",\n  \"sni\": \"" + account.sni +
         "\",\n  \"fingerprint\": \"firefox\",\n  \"publicKey\": \"" + account.publicKey +
         "\",\n  \"shortId\": \"" + account.shortId + "\"\n}\n";
}

std::string SessionText(const std::string& email) {
  return "{\"email\":\"" + email + "\",\"expireAt\":\"2099-12-31\"}\n";
}

}  // namespace e2e
