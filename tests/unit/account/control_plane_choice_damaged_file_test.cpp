// `panel.json`, damaged in every way: which account backend a connect then uses, at what address,
// and which hosts stay reachable past the tunnel.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "src/account/control_plane_choice.h"
#include "src/account/local_control_plane.h"
#include "src/panel/endpoints.h"
#include "tests/sim/fixture.h"
#include "tests/unit/account/xboard_state.h"

namespace vpn {
namespace {

using Hosts = std::vector<std::wstring>;

constexpr size_t kHuge = 16 * 1024 * 1024;

class DamagedPanelFile : public sim::MachineTest {
 protected:
  // The base of the panel that is chosen, or "local".
  std::wstring Chosen(std::string content) {
    machine.files.Put(L"C:\\run\\panel.json", std::move(content));
    const std::unique_ptr<ControlPlane> plane = CreateControlPlane(L"C:\\run");
    const auto* const panel = dynamic_cast<const XboardControlPlane*>(plane.get());
    if (panel == nullptr) {
      EXPECT_NE(dynamic_cast<const LocalControlPlane*>(plane.get()), nullptr);
      return L"local";
    }
    return Read<ApiBase>(*panel);
  }
  static Hosts Collected() { return CollectPanelHosts(L"C:\\run"); }
};

TEST_F(DamagedPanelFile, CutAnywhereGivesTheAddressAsFarAsItGoes) {
  const std::string whole = R"({"apiBase":"http://a.b/","deviceApi":"d"})";
  const wchar_t* const addresses[] = {L"local",    L"h",         L"ht",        L"htt",
                                      L"http",     L"http:",     L"http:",     L"http:",
                                      L"http://a", L"http://a.", L"http://a.b"};
  for (size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    // The address begins behind the 12th byte; slashes at its end go.
    const size_t known = length <= 12 ? 0 : std::min<size_t>(length - 12, 10);
    EXPECT_EQ(Chosen(whole.substr(0, length)), addresses[known]);
  }
}

TEST_F(DamagedPanelFile, CutAnywhereKeepsTheHostsThatAreThere) {
  const std::string whole = R"({"apiBase":"http://a.b/","deviceApi":"d"})";
  const auto hostsAt = [&](size_t length) {
    (void)Chosen(whole.substr(0, length));
    return Collected();
  };
  EXPECT_EQ(hostsAt(12), Hosts{});
  EXPECT_EQ(hostsAt(13), Hosts{L"h"});
  EXPECT_EQ(hostsAt(17), Hosts{L"http:"});
  EXPECT_EQ(hostsAt(18), Hosts{L"http:"});
  EXPECT_EQ(hostsAt(19), Hosts{});
  EXPECT_EQ(hostsAt(20), Hosts{L"a"});
  for (size_t length = 22; length <= 38; ++length) {
    EXPECT_EQ(hostsAt(length), Hosts{L"a.b"}) << length;
  }
  for (size_t length = 39; length <= whole.size(); ++length) {
    EXPECT_EQ(hostsAt(length), (Hosts{L"a.b", L"d"})) << length;
  }
}

TEST_F(DamagedPanelFile, OfNulsAloneCountsAsAbsent) {
  EXPECT_EQ(Chosen(std::string(4096, '\0')), L"local");
  EXPECT_EQ(Collected(), Hosts{});
}

TEST_F(DamagedPanelFile, NulsInFrontAndInsideAreBytesLikeAnyOther) {
  EXPECT_EQ(Chosen(std::string("\0\0{\"apiBase\":\"http://a\0b/\"}", 28)),
            std::wstring(L"http://a\0b", 10));
  EXPECT_EQ(Collected(), Hosts{std::wstring(L"a\0b", 3)});
  EXPECT_EQ(Chosen(std::string("{\"api\0Base\":\"http://a\"}", 23)), L"local");
}

TEST_F(DamagedPanelFile, BytesThatAreNoUtf8BecomeReplacementCharacters) {
  EXPECT_EQ(Chosen("{\"apiBase\":\"http://\xFF.b\"}"), L"http://\xFFFD.b");
  EXPECT_EQ(Collected(), Hosts{L"\xFFFD.b"});
  EXPECT_EQ(Chosen("\xFF\xFE\x80\xC3{\"apiBase\":\"http://a\"}"), L"http://a");
}

TEST_F(DamagedPanelFile, SavedAsUtf16CountsAsAbsent) {
  const std::string text = R"({"apiBase":"http://a"})";
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (const char byte : text) {
    little += {byte, '\0'};
    big += {'\0', byte};
  }
  EXPECT_EQ(Chosen(little), L"local");
  EXPECT_EQ(Collected(), Hosts{});
  EXPECT_EQ(Chosen(big), L"local");
  EXPECT_EQ(Chosen("\xEF\xBB\xBF" + text), L"http://a") << "UTF-8 with its mark is read";
}

TEST_F(DamagedPanelFile, HugeFileIsReadToItsEnd) {
  EXPECT_EQ(Chosen(std::string(kHuge, '\0')), L"local");
  EXPECT_EQ(Chosen(std::string(kHuge, '{')), L"local");
  EXPECT_EQ(Chosen(std::string(kHuge, ' ') + R"({"apiBase":"http://a"})"), L"http://a");
  EXPECT_EQ(Collected(), Hosts{L"a"});
}

TEST_F(DamagedPanelFile, AddressThatNeverEndsIsTakenAsItStands) {
  const size_t length = 1024 * 1024;
  EXPECT_EQ(Chosen(R"({"apiBase":"http://)" + std::string(length, 'a')),
            L"http://" + std::wstring(length, L'a'));
}

TEST_F(DamagedPanelFile, EnvironmentServesWhereTheFileIsDamaged) {
  machine.environment.Set(L"TAVRIN_XBOARD_URL", L"https://other.example/");
  for (const std::string& content :
       {std::string(), std::string("{\"apiBase\":"), std::string("{\"apiBase\":\"//"),
        std::string(16, '\0'), std::string("\xFF\xFE{\0\"\0a\0", 8)}) {
    EXPECT_EQ(Chosen(content), L"https://other.example");
    EXPECT_EQ(Collected(), Hosts{L"other.example"});
  }
}

}  // namespace
}  // namespace vpn
