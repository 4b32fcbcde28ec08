// A local account backend on a fresh machine, with the files that it reads.
#ifndef TAVRIN_TESTS_UNIT_ACCOUNT_LOCAL_PLANE_TEST_H_
#define TAVRIN_TESTS_UNIT_ACCOUNT_LOCAL_PLANE_TEST_H_

#include <map>
#include <string>
#include <vector>

#include "src/account/local_control_plane.h"
#include "tests/sim/fixture.h"

namespace vpn {

using Texts = std::vector<std::string>;

inline constexpr char kSession[] = "{\"email\":\"user@example.com\",\"expireAt\":\"2025-12-31\"}\n";

class LocalPlaneTest : public sim::MachineTest {
 protected:
  void SetUp() override {
    machine.clock.SetDate(2025, 6, 15);
    machine.files.PutDirectory(L"C:\\run");
    PutAccount({});
  }

  // The complete account with some lines replaced; an empty text leaves the line out.
  void PutAccount(std::map<std::string, std::string> changes) {
    std::map<std::string, std::string> lines = {
        {"email", R"("email": "user@example.com")"},
        {"password", R"("password": "secret")"},
        {"expireAt", R"("expireAt": "2025-12-31")"},
        {"deviceLimit", R"("deviceLimit": 3)"},
        {"nodeName", R"("nodeName": "东京 1")"},
        {"address", R"("address": "node.example")"},
        {"port", R"("port": 8443)"},
        {"uuid", R"("uuid": "0b0b0b0b-1111-2222-3333-444444444444")"},
        {"flow", R"("flow": "xtls-rprx-other")"},
        {"sni", R"("sni": "www.example.org")"},
        {"fingerprint", R"("fingerprint": "firefox")"},
        {"publicKey", R"("publicKey": "KEY")"},
        {"shortId", R"("shortId": "0a1b")"},
    };
    std::string text = "{\n";
    for (auto& [key, line] : lines) {
      const auto change = changes.find(key);
      const std::string& used = change == changes.end() ? line : change->second;
      text += used.empty() ? "" : "  " + used + ",\n";
    }
    machine.files.Put(accountPath, text + "  \"end\": \"end\"\n}\n");
  }
  void PutSession(const std::string& content = kSession) {
    machine.files.Put(sessionPath, content);
  }
  bool Login(const std::wstring& email = L"user@example.com",
             const std::wstring& password = L"secret") {
    return local.login(email, password, error);
  }

  const std::wstring accountPath = L"C:\\run\\account.json";
  const std::wstring sessionPath = L"C:\\run\\session.json";
  LocalControlPlane local{accountPath, sessionPath};
  AccountSession session;
  std::wstring error = L"earlier";
};

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_ACCOUNT_LOCAL_PLANE_TEST_H_
