#include "src/account/xboard_control_plane.h"

#include <memory>
#include <string>
#include <vector>

#include "tests/sim/fixture.h"
#include "tests/unit/account/xboard_state.h"

namespace vpn {
namespace {

using Texts = std::vector<std::string>;

class Xboard : public sim::MachineTest {
 protected:
  void SetUp() override { machine.files.PutDirectory(L"C:\\run"); }

  XboardControlPlane Make() {
    return {L"https://panel.example", sessionPath, L"https://device.example",
            L"https://invite.example"};
  }
  void PutSession(const std::string& content) { machine.files.Put(sessionPath, content); }

  const std::wstring sessionPath = L"C:\\run\\session.json";
};

TEST_F(Xboard, TheThreeAddressesLoseTheirEndSlashesAndTheSessionPathKeepsThem) {
  const XboardControlPlane panel(L"https://panel.example//", L"C:\\run\\session.json\\/",
                                 L"https://device.example/\\", L"https://invite.example/i/");
  EXPECT_EQ(Read<ApiBase>(panel), L"https://panel.example");
  EXPECT_EQ(Read<CredentialPath>(panel), L"C:\\run\\session.json\\/");
  EXPECT_EQ(Read<DeviceApi>(panel), L"https://device.example");
  EXPECT_EQ(Read<InviteBase>(panel), L"https://invite.example/i");
}

TEST_F(Xboard, LoadsTheEarlierSession) {
  PutSession(R"({"auth_data":"Bearer \u4e2d\/x","email":"user@example.com"})");
  const XboardControlPlane panel = Make();
  EXPECT_EQ(Read<AuthData>(panel), L"Bearer 中/x");
  EXPECT_EQ(Read<Email>(panel), L"user@example.com");
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"), Texts{R"("C:\run\session.json", "rb", 64)"});
}

TEST_F(Xboard, AMissingSessionFileMeansSignedOut) {
  const XboardControlPlane panel = Make();
  EXPECT_EQ(Read<AuthData>(panel), L"");
  EXPECT_EQ(Read<Email>(panel), L"");
}

TEST_F(Xboard, AnUnreadableSessionFileMeansSignedOut) {
  PutSession(R"({"auth_data":"Bearer x","email":"user@example.com"})");
  machine.files.SetLocked(sessionPath, true);
  const XboardControlPlane panel = Make();
  EXPECT_EQ(Read<AuthData>(panel), L"");
  EXPECT_EQ(Read<Email>(panel), L"");
}

TEST_F(Xboard, ADamagedSessionFileMeansSignedOut) {
  for (const char* content :
       {"", "<html>", R"({"auth_data":null,"email":7})", R"(auth_data=x)", "\xFF\xFE\x01"}) {
    SCOPED_TRACE(content);
    PutSession(content);
    const XboardControlPlane panel = Make();
    EXPECT_EQ(Read<AuthData>(panel), L"");
    EXPECT_EQ(Read<Email>(panel), L"");
  }
}

TEST_F(Xboard, ALocalSessionFileGivesAnEmailButNoCredential) {
  PutSession("{\"email\":\"user@example.com\",\"expireAt\":\"2099-12-31\"}\n");
  const XboardControlPlane panel = Make();
  EXPECT_EQ(Read<AuthData>(panel), L"");
  EXPECT_EQ(Read<Email>(panel), L"user@example.com");
}

TEST_F(Xboard, ConstructionDoesNoNetworkWork) {
  PutSession(R"({"auth_data":"x","email":"y"})");
  const XboardControlPlane panel = Make();
  for (const std::string& name : machine.calls.Names()) {
    EXPECT_TRUE(name == "_wfsopen" || name == "MultiByteToWideChar") << name;
  }
}

TEST_F(Xboard, LogoutForgetsTheSessionAndDeletesItsFile) {
  PutSession(R"({"auth_data":"x","email":"y"})");
  XboardControlPlane panel = Make();
  EXPECT_TRUE(panel.logout());
  EXPECT_EQ(Read<AuthData>(panel), L"");
  EXPECT_EQ(Read<Email>(panel), L"");
  EXPECT_FALSE(machine.files.Exists(sessionPath));
  EXPECT_EQ(machine.calls.TextsOf("DeleteFileW"), Texts{R"("C:\run\session.json")"});
}

TEST_F(Xboard, LogoutForgetsTheSessionEvenWhenItsFileCanNotBeDeleted) {
  PutSession(R"({"auth_data":"x","email":"y"})");
  XboardControlPlane panel = Make();
  machine.faults.Fail("DeleteFileW");
  EXPECT_FALSE(panel.logout());
  EXPECT_EQ(Read<AuthData>(panel), L"");
  EXPECT_EQ(Read<Email>(panel), L"");
  EXPECT_TRUE(machine.files.Exists(sessionPath));
}

TEST_F(Xboard, LogoutWithoutASessionFileIsNoError) {
  EXPECT_FALSE(Make().logout());
}

TEST_F(Xboard, AnObjectIsDestroyedThroughItsInterface) {
  PutSession(R"({"auth_data":"x","email":"y"})");
  const std::unique_ptr<ControlPlane> plane =
      std::make_unique<XboardControlPlane>(L"https://panel.example", sessionPath, L"", L"");
  EXPECT_TRUE(plane->logout());
}

}  // namespace
}  // namespace vpn
