#include "src/account/panel_session.h"

#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

constexpr std::string_view kPlainBytes =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._@";

}  // namespace

bool ExtractAuthData(const std::string& response, std::wstring& authData) {
  const std::string data = JsonDataObject(response);
  std::string value;
  for (const std::string* text : {&data, &response}) {
    for (const char* key : {"auth_data", "token"}) {
      if (value.empty()) {
        value = JsonString(*text, key);
      }
    }
  }
  authData = Utf8ToWide(value);
  return !authData.empty();
}

bool SaveSession(const std::wstring& path, const std::wstring& email, const std::wstring& authData,
                 std::wstring& error) {
  if (!WriteFileBytes(path, R"({"email":")" + WideToUtf8(email) + R"(","auth_data":")" +
                                WideToUtf8(authData) + "\"}\n")) {
    error = L"无法保存登录状态";
    return false;
  }
  return true;
}

std::string UrlEncode(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char byte : bytes) {
    if (kPlainBytes.find(byte) != std::string_view::npos) {
      encoded += byte;
      continue;
    }
    const auto value = static_cast<unsigned char>(byte);
    encoded += '%';
    encoded += kDigits[value >> 4];
    encoded += kDigits[value & 0x0F];
  }
  return encoded;
}

std::wstring PanelErrorWithDetail(const std::wstring& text, const std::wstring& step,
                                  DWORD status) {
  std::wstring detailed = text.empty() ? L"请求失败" : text;
  detailed += L"（" + step;
  if (status != 0) {
    detailed += L" " + std::to_wstring(status);
  }
  return detailed + L"）";
}

void PreferPanelMessage(const std::string& response, std::wstring& error) {
  const std::wstring message = Utf8ToWide(JsonString(response, "message"));
  if (!message.empty()) {
    error = message;
  }
}

}  // namespace vpn
