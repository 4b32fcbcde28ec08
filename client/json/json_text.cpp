#include "client/json/json_text.h"

#include "src/common/text.h"

namespace vpn {
namespace {

// Spaces of indentation for each level, or one line for -1.
std::wstring Dump(const Json& object, int indent) {
  return Utf8ToWide(object.dump(indent, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

Json NewJson() {
  Json object;
  object["schema"] = 1;
  return object;
}

void PutText(Json& object, const char* key, const std::wstring& text) {
  PutUtf8(object, key, WideToUtf8(text));
}

void PutUtf8(Json& object, const char* key, std::string_view text) {
  object[key] = text;
}

void PutNumber(Json& object, const char* key, std::int64_t number) {
  object[key] = number;
}

void PutFlag(Json& object, const char* key, bool flag) {
  object[key] = flag;
}

void PutIfAny(Json& object, const char* key, const std::optional<std::uint64_t>& number) {
  if (number) {
    PutNumber(object, key, static_cast<std::int64_t>(*number));
  } else {
    PutNull(object, key);
  }
}

void PutNull(Json& object, const char* key) {
  object[key] = nullptr;
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
  return Dump(object, 2) + L"\n";
}

std::wstring JsonLine(const Json& object) {
  return Dump(object, -1);
}

}  // namespace vpn
