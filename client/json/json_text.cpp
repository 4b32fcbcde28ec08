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

void PutText(Json& object, const char* key, const std::wstring& text) {
  object[key] = WideToUtf8(text);
}

void PutNumber(Json& object, const char* key, std::int64_t number) {
  object[key] = number;
}

void PutFlag(Json& object, const char* key, bool flag) {
  object[key] = flag;
}

Json& PutObject(Json& object, const char* key) {
  return object[key];
}

Json& PutList(Json& object, const char* key) {
  return object[key] = Json::array();
}

Json& AppendObject(Json& list) {
  return list.emplace_back();
}

void AppendText(Json& list, const std::wstring& text) {
  list.emplace_back(WideToUtf8(text));
}

std::wstring JsonText(const Json& object) {
  return Utf8ToWide(object.dump(2, ' ', false, Json::error_handler_t::replace)) + L"\n";
}

}  // namespace vpn
