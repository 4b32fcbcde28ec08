#include "src/account/credential.h"

#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {

std::wstring ExtractAuthData(const std::string& response) {
  const std::string data = JsonDataObject(response);
  std::string value;
  for (const std::string* text : {&data, &response}) {
    for (const char* key : {"auth_data", "token"}) {
      if (value.empty()) {
        value = JsonString(*text, key);
      }
    }
  }
  return Utf8ToWide(value);
}

std::wstring ExtractAuthData(const HttpReply& reply) {
  return reply.ok() ? ExtractAuthData(reply.body) : std::wstring();
}

StoredCredential LoadCredential(const std::wstring& path) {
  std::string content;
  if (!ReadFileBytes(path, content)) {
    return {};
  }
  StoredCredential credential;
  credential.authData = Utf8ToWide(JsonString(content, "auth_data"));
  credential.email = Utf8ToWide(JsonString(content, "email"));
  return credential;
}

Status SaveCredential(const std::wstring& path, const StoredCredential& credential) {
  const bool opened =
      WriteFileBytes(path, R"({"email":")" + WideToUtf8(credential.email) + R"(","auth_data":")" +
                               WideToUtf8(credential.authData) + "\"}\n");
  return opened ? Status::success() : Status::failure(L"无法保存登录状态");
}

}  // namespace vpn
