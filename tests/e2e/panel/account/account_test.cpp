#include "tests/e2e/panel/account/account_test.h"

#include <windows.h>

#include "tests/e2e/harness/sandbox.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

std::wstring FreshDirectory() {
  static int count = 0;
  wchar_t buffer[MAX_PATH] = {};
  const std::wstring temp(buffer, GetTempPathW(MAX_PATH, buffer));
  return temp + L"tavrin 账户 " + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++count);
}

}  // namespace

AccountTest::AccountTest()
    : directory(FreshDirectory()),
      sessionPath(directory + L"\\session.json"),
      apiBase(standins::ToWide(panel.http())) {
  MakeDirectories(directory);
}

AccountTest::~AccountTest() {
  RemoveTree(directory);
}

vpn::XboardControlPlane AccountTest::Restart() const {
  return {apiBase, sessionPath, deviceApi, inviteBase};
}

vpn::XboardControlPlane AccountTest::SignedIn() const {
  WriteText(sessionPath,
            std::string(R"({"email":")") + kEmail + R"(","auth_data":")" + kCredential + "\"}\n");
  return Restart();
}

std::string AccountTest::SessionFile() const {
  return ReadText(sessionPath);
}

bool OnWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace e2e
