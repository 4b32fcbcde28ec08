// A fixture for the operations of one panel, at https://panel.example, whose device service is at
// https://device.example. Answers are scripted by path; requests are compared byte for byte.
#ifndef TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_TEST_H_
#define TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_TEST_H_

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "src/account/xboard_control_plane.h"
#include "tests/sim/fixture.h"
#include "tests/unit/account/xboard_state.h"

namespace vpn {

using Texts = std::vector<std::string>;

class XboardTest : public sim::MachineTest {
 protected:
  void SetUp() override {
    machine.files.PutDirectory(L"C:\\run");
    SignIn();
  }

  // The object's credential is "Bearer abc", from the session file.
  void SignIn() {
    machine.files.Put(sessionPath,
                      "{\"email\":\"user@example.com\",\"auth_data\":\"Bearer abc\"}\n");
    Build();
  }
  void SignOut() {
    machine.files.Remove(sessionPath);
    Build();
  }
  void Build(const wchar_t* api = L"https://panel.example", const wchar_t* invite = L"") {
    owner =
        std::make_unique<XboardControlPlane>(api, sessionPath, L"https://device.example", invite);
  }
  XboardControlPlane& panel() { return *owner; }

  // For one request behind "https://panel.example/api/v1/".
  void OnGet(const std::string& path, const std::string& body) { OnGet(path, Ok(body)); }
  void OnGet(const std::string& path, sim::HttpAnswer answer) {
    machine.http.OnNext("GET", kApi + path, std::move(answer));
  }
  void OnPost(const std::string& path, const std::string& body) { OnPost(path, Ok(body)); }
  void OnPost(const std::string& path, sim::HttpAnswer answer) {
    machine.http.OnNext("POST", kApi + path, std::move(answer));
  }
  static sim::HttpAnswer Ok(const std::string& body) { return {.body = body}; }
  static sim::HttpAnswer Refusal(std::uint32_t status, const std::string& body = "") {
    return {.status = status, .body = body};
  }
  static sim::HttpAnswer Unreachable(std::uint32_t code = 12029) { return {.sendCode = code}; }

  // What was sent, each request as one text.
  Texts Sent() {
    Texts texts;
    for (const sim::HttpRequestRecord& request : machine.http.Requests()) {
      texts.push_back(request.method + " " + request.url + "\r\n" + request.headers + "\r\n" +
                      request.body);
    }
    return texts;
  }
  // Method and path alone.
  Texts Paths() {
    Texts lines = machine.http.Lines();
    for (std::string& line : lines) {
      const size_t at = line.find(kApi);
      line = at == std::string::npos ? line : line.replace(at, kApi.size(), "");
    }
    return lines;
  }

  // Requests as they must look, credential or not.
  std::string SignedGet(const std::string& path) const {
    return "GET " + kApi + path +
           "\r\nAccept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
           "Authorization: Bearer abc\r\nauth_data: Bearer abc\r\n\r\n";
  }
  std::string SignedPost(const std::string& path, const std::string& body) const {
    return "POST " + kApi + path +
           "\r\nAccept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
           "Content-Type: application/json\r\n"
           "Authorization: Bearer abc\r\nauth_data: Bearer abc\r\n\r\n" +
           body;
  }
  std::string PlainGet(const std::string& path) const {
    return "GET " + kApi + path + "\r\nAccept: application/json\r\nUser-Agent: Tavrin/0.1\r\n\r\n";
  }
  std::string PlainPost(const std::string& path, const std::string& body) const {
    return "POST " + kApi + path +
           "\r\nAccept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
           "Content-Type: application/json\r\n\r\n" +
           body;
  }
  std::string FormPost(const std::string& path, const std::string& body) const {
    return "POST " + kApi + path +
           "\r\nAccept: application/json\r\nUser-Agent: Tavrin/0.1\r\n"
           "Content-Type: application/x-www-form-urlencoded\r\n\r\n" +
           body;
  }

  const std::string kApi = "https://panel.example/api/v1/";
  const std::wstring sessionPath = L"C:\\run\\session.json";
  std::unique_ptr<XboardControlPlane> owner;
  std::wstring error;
};

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_ACCOUNT_XBOARD_TEST_H_
