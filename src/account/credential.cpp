#include "src/account/credential.h"

#include "src/common/files.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {

std::wstring ExtractAuthData(const PanelReply& reply) {
  if (!reply.ok()) {
    return {};
  }
  const std::string data = JsonDataObject(reply.body);
  std::string value;
  for (const std::string* text : {&data, &reply.body}) {
    for (const char* key : {"auth_data", "token"}) {
      if (value.empty()) {
        value = JsonString(*text, key);
      }
    }
  }
  return Utf8ToWide(value);
}

Status SaveCredential(const std::wstring& path, const std::wstring& email,
                      const std::wstring& authData) {
  const std::string line =
      R"({"email":")" + WideToUtf8(email) + R"(","auth_data":")" + WideToUtf8(authData) + "\"}\n";
  return WriteFileBytes(path, line) ? Status::success() : Status::failure(L"无法保存登录状态");
}

}  // namespace vpn
