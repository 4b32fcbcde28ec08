#include "src/panel/panel_client.h"

namespace vpn {

HttpReply PanelClient::get(const std::wstring& path) const {
  return SendHttpRequest({.url = base + path, .credential = credential});
}

HttpReply PanelClient::post(const std::wstring& path, const std::string& json) const {
  return SendHttpRequest({.method = L"POST",
                          .url = base + path,
                          .credential = credential,
                          .body = json,
                          .contentType = L"application/json"});
}

HttpReply PanelClient::postForm(const std::wstring& path, const std::string& pairs) const {
  return SendHttpRequest({.method = L"POST",
                          .url = base + path,
                          .credential = credential,
                          .body = pairs,
                          .contentType = L"application/x-www-form-urlencoded"});
}

}  // namespace vpn
