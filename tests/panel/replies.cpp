#include "tests/panel/replies.h"

namespace panel {
namespace {

bool IsV2board(const Json& state) {
  return state.at("family") == "v2board";
}

// Whole numbers as texts, the way that old drivers hand them out.
Json Quoted(const Json& value) {
  if (value.is_number_integer()) return value.dump();
  if (!value.is_structured()) return value;
  Json copy = value;
  for (auto& element : copy) element = Quoted(element);
  return copy;
}

std::string WithTheOthers(const std::string& first, std::size_t others) {
  if (others == 0) return first;
  return first + " (and " + std::to_string(others) +
         (others == 1 ? " more error)" : " more errors)");
}

}  // namespace

std::string Dump(const Json& value) {
  const std::string text = value.dump(-1, ' ', true);
  std::string escaped;
  for (const char c : text) {
    if (c == '/') escaped += '\\';  // a slash stands inside texts only
    escaped += c;
  }
  return escaped;
}

std::string DumpPretty(const Json& value) {
  return value.dump(4, ' ', true);
}

Reply Plain(int status, const Json& value) {
  return {status, "application/json", Dump(value)};
}

Reply Success(const Json& state, const Json& data) {
  const Json shown = state.at("quotedNumbers") == true ? Quoted(data) : data;
  if (IsV2board(state)) return Plain(200, {{"data", shown}});
  return Plain(
      200, {{"status", "success"}, {"message", "操作成功"}, {"data", shown}, {"error", nullptr}});
}

Reply Refusal(const Json& state, int status, const std::string& message) {
  if (IsV2board(state)) return Thrown(status == 403 ? 403 : 500, message);
  return Plain(status,
               {{"status", "fail"}, {"message", message}, {"data", nullptr}, {"error", nullptr}});
}

Reply SignedOut(const Json& state) {
  return Refusal(state, 403, "未登录或登陆已过期");
}

Reply Thrown(int status, const std::string& message) {
  return {status, "application/json", DumpPretty({{"message", message}})};
}

Reply Invalid(const Json& state,
              const std::vector<std::pair<std::string, std::string>>& complaints) {
  Json errors = Json::object();
  for (const auto& [field, text] : complaints) errors[field].push_back(text);
  const std::string message = IsV2board(state)
                                  ? "The given data was invalid."
                                  : WithTheOthers(complaints.front().second, complaints.size() - 1);
  return Plain(422, {{"message", message}, {"errors", errors}});
}

}  // namespace panel
