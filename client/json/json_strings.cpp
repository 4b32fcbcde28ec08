#include "client/json/json_strings.h"

namespace vpn {

size_t EndOfString(std::string_view json, size_t open) {
  for (size_t at = open + 1; at < json.size(); ++at) {
    if (json[at] == '\\') {
      ++at;
    } else if (json[at] == '"') {
      return at + 1;
    }
  }
  return json.size();
}

bool IsKeyBefore(std::string_view json, size_t end) {
  const size_t next = json.find_first_not_of(" \t\r\n", end);
  return next != std::string_view::npos && json[next] == ':';
}

}  // namespace vpn
