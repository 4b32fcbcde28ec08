#include "client/json/json_text.h"

#include "src/common/text.h"

namespace vpn {

Json NewJson() {
  Json object;
  object["schema"] = 1;
  return object;
}

std::string JsonValue(const std::wstring& text) {
  return WideToUtf8(text);
}

std::wstring JsonText(const Json& object) {
  return Utf8ToWide(object.dump(2, ' ', false, Json::error_handler_t::replace)) + L"\n";
}

}  // namespace vpn
