// What must not leave the machine.
#ifndef TAVRIN_CLIENT_REPORT_SECRETS_H_
#define TAVRIN_CLIENT_REPORT_SECRETS_H_

#include <string>
#include <string_view>
#include <vector>

namespace vpn {

// The secret values that stand in a text of JSON: passwords, credentials, keys, the identity on a
// node, and an account's name that is no address. None is empty. Read with the product's own
// scanner, so that a damaged text gives what it still holds.
std::vector<std::string> SecretsIn(const std::string& json);

// Without the secrets, and with every address of a person masked. What looks like a key or token by
// its length alone goes too.
std::string Scrub(std::string text, std::vector<std::string> secrets);

// The structure and the keys of a text of JSON, with every value masked. Damage stays as it is, but
// for its values.
std::string ShapeOfJson(std::string_view json);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_REPORT_SECRETS_H_
