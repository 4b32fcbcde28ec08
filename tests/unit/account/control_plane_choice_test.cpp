#include "src/account/control_plane_choice.h"

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "src/account/local_control_plane.h"
#include "src/panel/endpoints.h"
#include "tests/sim/fixture.h"
#include "tests/unit/account/xboard_state.h"

namespace vpn {
namespace {

using Hosts = std::vector<std::wstring>;
using Texts = std::vector<std::string>;

class Choice : public sim::MachineTest {
 protected:
  void PutPanel(const std::string& content) { machine.files.Put(L"C:\\run\\panel.json", content); }
  void SetUrl(const std::wstring& url) { machine.environment.Set(L"TAVRIN_XBOARD_URL", url); }

  void Choose() { plane = CreateControlPlane(L"C:\\run"); }
  const XboardControlPlane* Panel() const {
    return dynamic_cast<const XboardControlPlane*>(plane.get());
  }
  bool IsLocal() const { return dynamic_cast<const LocalControlPlane*>(plane.get()) != nullptr; }

  void ExpectPanel(const std::wstring& apiBase, const std::wstring& deviceApi,
                   const std::wstring& inviteBase) {
    ASSERT_NE(Panel(), nullptr);
    EXPECT_EQ(Read<ApiBase>(*Panel()), apiBase);
    EXPECT_EQ(Read<CredentialPath>(*Panel()), L"C:\\run\\session.json");
    EXPECT_EQ(Read<DeviceApi>(*Panel()), deviceApi);
    EXPECT_EQ(Read<InviteBase>(*Panel()), inviteBase);
  }

  std::unique_ptr<ControlPlane> plane;
};

TEST_F(Choice, NoSourceAtAllGivesTheLocalAccount) {
  Choose();
  ASSERT_TRUE(IsLocal());
  AccountSession session;
  std::wstring error;
  EXPECT_FALSE(plane->fetchAccount(session, error));
  EXPECT_EQ(error, L"not logged in");
  machine.files.Put(L"C:\\run\\session.json", "{}");
  EXPECT_FALSE(plane->fetchAccount(session, error));
  EXPECT_EQ(error, L"cannot read C:\\run\\account.json");
}

TEST_F(Choice, PanelJsonDecidesForAPanel) {
  PutPanel(
      R"({"apiBase":"https://host/","deviceApi":"https://device\\/","inviteBase":"https://i//"})");
  Choose();
  ExpectPanel(L"https://host", L"https://device", L"https://i");
}

TEST_F(Choice, TheKeysNeedNotStandAtTheTopLevel) {
  PutPanel(R"({"panel":{"apiBase":"https://host"},"more":{"deviceApi":"https://device"}})");
  Choose();
  ExpectPanel(L"https://host", L"https://device", L"");
}

TEST_F(Choice, WithAPanelInTheFileTheEnvironmentIsNotAsked) {
  PutPanel(R"({"apiBase":"https://file.example"})");
  SetUrl(L"https://environment.example");
  Choose();
  ExpectPanel(L"https://file.example", L"", L"");
  EXPECT_EQ(machine.calls.Count("GetEnvironmentVariableW"), 0u);
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), (Hosts{L"environment.example", L"file.example"}));
}

TEST_F(Choice, TheEnvironmentIsTheFallBack) {
  SetUrl(L"https://environment.example/\\/");
  Choose();
  ExpectPanel(L"https://environment.example", L"", L"");
}

TEST_F(Choice, OnTheEnvironmentsPathTheOtherAddressesOfTheFileAreNotTaken) {
  PutPanel(R"({"deviceApi":"https://device","inviteBase":"https://invite"})");
  SetUrl(L"https://environment.example");
  Choose();
  ExpectPanel(L"https://environment.example", L"", L"");
}

TEST_F(Choice, AnApiBaseOfSlashesAloneCountsAsEmpty) {
  PutPanel(R"({"apiBase":"//\\/"})");
  SetUrl(L"https://environment.example");
  Choose();
  ExpectPanel(L"https://environment.example", L"", L"");
}

TEST_F(Choice, AFileWithoutAnApiBaseCountsAsAbsent) {
  PutPanel(R"({"deviceApi":"https://device.example"})");
  Choose();
  EXPECT_TRUE(IsLocal());
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts{L"device.example"});
}

TEST_F(Choice, AFileThatIsNotJsonCountsAsAbsent) {
  for (const char* content : {"", "not json", "{", R"({"apiBase":1})", R"({"apiBase":""})"}) {
    SCOPED_TRACE(content);
    PutPanel(content);
    Choose();
    EXPECT_TRUE(IsLocal());
  }
}

TEST_F(Choice, AFileThatCanNotBeOpenedCountsAsAbsent) {
  PutPanel(R"({"apiBase":"https://host"})");
  machine.files.SetLocked(L"C:\\run\\panel.json", true);
  Choose();
  EXPECT_TRUE(IsLocal());
}

TEST_F(Choice, AnEnvironmentVariableOf512UnitsOrMoreCountsAsUnset) {
  SetUrl(L"https://" + std::wstring(503, L'x'));
  Choose();
  ExpectPanel(L"https://" + std::wstring(503, L'x'), L"", L"");
  SetUrl(L"https://" + std::wstring(504, L'x'));
  Choose();
  EXPECT_TRUE(IsLocal());
}

TEST_F(Choice, AnEmptyEnvironmentVariableOrOneOfSlashesCountsAsUnset) {
  for (const wchar_t* url : {L"", L"/", L"\\//"}) {
    SetUrl(url);
    Choose();
    EXPECT_TRUE(IsLocal());
  }
}

TEST_F(Choice, NoAddressIsValidatedHere) {
  PutPanel(R"({"apiBase":"no address at all"})");
  Choose();
  ExpectPanel(L"no address at all", L"", L"");
}

TEST_F(Choice, ThePanelStartsWithTheSessionOfTheRuntimeDirectory) {
  PutPanel(R"({"apiBase":"https://host"})");
  machine.files.Put(L"C:\\run\\session.json",
                    R"({"auth_data":"Bearer x","email":"u@example.com"})");
  Choose();
  ASSERT_NE(Panel(), nullptr);
  EXPECT_EQ(Read<AuthData>(*Panel()), L"Bearer x");
  EXPECT_EQ(Read<Email>(*Panel()), L"u@example.com");
}

TEST_F(Choice, AChangedFileTakesEffectWithTheNextCall) {
  Choose();
  EXPECT_TRUE(IsLocal());
  PutPanel(R"({"apiBase":"https://host"})");
  Choose();
  ExpectPanel(L"https://host", L"", L"");
  machine.files.Remove(L"C:\\run\\panel.json");
  Choose();
  EXPECT_TRUE(IsLocal());
}

TEST_F(Choice, NothingIsSent) {
  PutPanel(R"({"apiBase":"https://host"})");
  Choose();
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            (Texts{R"("C:\run\panel.json", "rb", 64)", R"("C:\run\session.json", "rb", 64)"}));
  for (const std::string& name : machine.calls.Names()) {
    EXPECT_TRUE(name == "_wfsopen" || name == "MultiByteToWideChar") << name;
  }
}

}  // namespace
}  // namespace vpn
