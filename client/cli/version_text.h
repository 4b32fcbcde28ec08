// What --version shows.
#ifndef TAVRIN_CLIENT_CLI_VERSION_TEXT_H_
#define TAVRIN_CLIENT_CLI_VERSION_TEXT_H_

#include <string>

namespace vpn {

// One line, or a JSON object that also has the constants of the deployment.
std::wstring VersionText(bool json);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_CLI_VERSION_TEXT_H_
