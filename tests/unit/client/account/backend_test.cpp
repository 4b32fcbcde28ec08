#include "client/account/backend.h"

#include "tests/unit/client/panel_account_test.h"

namespace vpn {
namespace {

class BackendTest : public unit::PanelAccountTest {};

TEST_F(BackendTest, IsThePanelOfTheFileElseOfTheEnvironmentElseTheFileOfThisMachine) {
  machine.environment.Set(L"TAVRIN_XBOARD_URL", L"https://other.example//");
  EXPECT_EQ(FindBackend(unit::kRuntime).panel.apiBase, L"https://panel.example");
  EXPECT_EQ(FindBackend(unit::kRuntime).panel.deviceApi, L"https://device.example");
  machine.files.Put(std::wstring(unit::kRuntime) + L"\\panel.json",
                    R"({"apiBase":"/","deviceApi":"https://device.example"})");
  EXPECT_EQ(FindBackend(unit::kRuntime).panel.apiBase, L"https://other.example");
  EXPECT_EQ(FindBackend(unit::kRuntime).panel.deviceApi, L"");
  machine.environment.Set(L"TAVRIN_XBOARD_URL", L"");
  EXPECT_FALSE(FindBackend(unit::kRuntime).isPanel());
}

TEST_F(BackendTest, TheCredentialIsThatOfTheFile) {
  EXPECT_EQ(
      MakePanelClient(FindBackend(unit::kRuntime), std::wstring(unit::kRuntime) + L"\\session.json")
          .credential,
      L"Bearer OLD");
}

TEST_F(BackendTest, APanelsReplyIsAWholeObjectWithTheKey) {
  EXPECT_TRUE(IsPanelReply(" {\"data\":{\"uuid\":\"7b1f\"}}\r\n", "uuid"));
  for (const char* body : {"", " ", "<html>\"uuid\"}", "[\"uuid\"]", "{\"data\":{\"uuid\":\"7b",
                           "{\"data\":true}", "uuid", "{uuid}"}) {
    EXPECT_FALSE(IsPanelReply(body, "uuid")) << body;
  }
}

TEST_F(BackendTest, WhatCameInsteadIsNamed) {
  const Backend backend = FindBackend(unit::kRuntime);
  for (const auto& [body, kind] : std::vector<std::pair<std::string, std::wstring>>{
           {"\r\n<!DOCTYPE html><title>Hotel</title>", L"a web page"},
           {"", L"nothing"},
           {" \n", L"nothing"},
           {"{\"data\":{\"plan_id\":2,", L"a text that breaks off"},
           {"{\"hello\":1}", L"something else"},
           {"\x1f\x8b\x08", L"something else"}}) {
    const Complaint complaint = JudgeReply(backend, {.status = 200, .body = body}, "uuid");
    EXPECT_EQ(complaint.text,
              L"https://panel.example answers with " + kind + L", not as a panel does");
    EXPECT_EQ(complaint.whatToDo,
              L"sign in to the network that you are in, or correct apiBase in panel.json");
  }
}

TEST_F(BackendTest, AFailedReplyKeepsItsText) {
  const Complaint complaint =
      JudgeReply(FindBackend(unit::kRuntime),
                 {.status = 403, .body = "<html>", .error = L"面板 HTTP 403"}, "uuid");
  EXPECT_EQ(complaint.text, L"面板 HTTP 403");
  EXPECT_EQ(complaint.whatToDo, L"sign in again: the session has ended");
}

}  // namespace
}  // namespace vpn
