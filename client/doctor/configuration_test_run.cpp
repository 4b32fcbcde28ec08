#include "client/doctor/configuration_test_run.h"

#include "client/json/json_strings.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/tunnel/child_process.h"

namespace vpn {
namespace {

constexpr DWORD kLimit = 10000;  // milliseconds

// Xray reads keys without regard to case. `key` is in its quotes.
bool NamesALog(std::string_view key) {
  if (key.size() < 2) {
    return false;
  }
  const std::wstring name = ToLowerText(Utf8ToWide(JsonUnescape(key.substr(1, key.size() - 2))));
  return name == L"error" || name == L"access";
}

}  // namespace

std::string WithoutLogFiles(std::string json) {
  for (size_t open = json.find('"'); open != std::string::npos; open = json.find('"', open)) {
    const size_t end = EndOfString(json, open);
    const bool isLog =
        IsKeyBefore(json, end) && NamesALog(std::string_view(json).substr(open, end - open));
    open = end;
    if (!isLog) {
      continue;
    }
    const size_t value = json.find_first_not_of(" \t\r\n", json.find(':', end) + 1);
    if (value != std::string::npos && json[value] == '"') {
      json.replace(value, EndOfString(json, value) - value, "\"\"");
      open = value + 2;
    }
  }
  return json;
}

CapturedRun TestConfiguration(const std::wstring& xray, const std::wstring& directory,
                              const std::string& json) {
  return RunCaptured(QuoteArgument(xray) + L" run -test -c stdin:", directory, kLimit,
                     WithoutLogFiles(json));
}

}  // namespace vpn
