#include "src/account/local_account.h"

#include <windows.h>

#include <array>
#include <cstdlib>

#include "src/common/files.h"
#include "src/common/key_scan.h"
#include "src/common/number_text.h"

namespace vpn {

Status ReadTextFile(const std::wstring& path, std::string& text) {
  if (!ReadFileBytes(path, text)) {
    return Status::failure(L"cannot read " + path);
  }
  if (text.size() >= 3 && text.front() == '\xEF') {
    text.erase(0, 3);
  }
  return Status::success();
}

Status WriteTextFile(const std::wstring& path, std::string_view text) {
  return WriteFileBytes(path, text) ? Status::success() : Status::failure(L"cannot write " + path);
}

std::string FlatJsonString(const std::string& json, std::string_view key) {
  const size_t behindColon = FindBehindColon(json, key);
  const size_t open = behindColon == std::string::npos ? behindColon : json.find('"', behindColon);
  if (open == std::string::npos) {
    return {};
  }
  return json.substr(open + 1, FindClosingQuote(json, open + 1) - open - 1);
}

int FlatJsonInt(const std::string& json, std::string_view key, int fallback) {
  const size_t behindColon = FindBehindColon(json, key);
  if (behindColon == std::string::npos) {
    return fallback;
  }
  return std::atoi(json.c_str() + SkipBytes(json, behindColon, " \t"));
}

bool IsDatePast(const std::string& text) {
  const auto date = ReadDate(text);
  if (!date) {
    return true;
  }
  SYSTEMTIME now = {};
  GetSystemTime(&now);
  return std::array<int, 3>{now.wYear, now.wMonth, now.wDay} > *date;
}

}  // namespace vpn
