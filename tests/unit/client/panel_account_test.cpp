#include "tests/unit/client/panel_account_test.h"

namespace unit {
namespace {

constexpr char kPanel[] = "https://panel.example";
const std::wstring kDirectory = kRuntime;

}  // namespace

PanelAccountTest::PanelAccountTest() {
  machine.files.Put(kDirectory + L"\\panel.json",
                    R"({"apiBase":"https://panel.example/","deviceApi":"https://device.example"})");
  machine.files.Put(kDirectory + L"\\session.json", kOldSession);
}

void PanelAccountTest::Get(const std::string& path, sim::HttpAnswer answer) {
  machine.http.On("GET", kPanel + path, std::move(answer));
}

void PanelAccountTest::Post(const std::string& path, sim::HttpAnswer answer) {
  machine.http.On("POST", kPanel + path, std::move(answer));
}

void PanelAccountTest::PutUser() {
  Get("/api/v1/user/getSubscribe", {.body = kSubscribe});
  Get("/api/v1/client/subscribe?token=0f1e", {.body = kLinks});
}

std::string PanelAccountTest::Session() const {
  return machine.files.Read(kDirectory + L"\\session.json").value_or("(none)");
}

void PanelAccountTest::ExpectOldSession() const {
  EXPECT_EQ(Session(), kOldSession);
  EXPECT_FALSE(machine.files.Exists(kDirectory + L"\\session.json.new"));
}

void PanelAccountTest::Type(const std::vector<std::wstring>& lines) {
  machine.console.hasKeyboard = true;
  machine.console.typed.assign(lines.begin(), lines.end());
}

}  // namespace unit
