#include "src/panel/endpoints.h"

#include <string>
#include <utility>
#include <vector>

#include "tests/sim/fixture.h"
#include "tests/sim/text.h"

namespace vpn {
namespace {

using Hosts = std::vector<std::wstring>;
using Texts = std::vector<std::string>;
using WidePairs = std::vector<std::pair<std::wstring, std::wstring>>;

TEST(TrimEndSlashes, RemovesEverySlashOfEitherKindFromTheEnd) {
  const WidePairs table = {
      {L"https://host/", L"https://host"},
      {L"https://host", L"https://host"},
      {L"https://host///", L"https://host"},
      {L"https://host\\", L"https://host"},
      {L"https://host/\\/\\\\/", L"https://host"},
      {L"https://host/path/", L"https://host/path"},
      {L"/path", L"/path"},
      {L"https://host/ ", L"https://host/ "},
      {L"/", L""},
      {L"\\/\\", L""},
      {L"", L""},
  };
  for (const auto& [text, expected] : table) {
    EXPECT_EQ(TrimEndSlashes(text), expected);
  }
}

TEST(UrlHost, GivesTheBareHost) {
  const WidePairs table = {
      {L"", L""},
      {L"host", L"host"},
      {L"https://host", L"host"},
      {L"https://user:pw@host:8443/path?q=1", L"host"},
      {L"https://host/", L"host"},
      {L"https://host?q", L"host"},
      {L"https://host\\path", L"host"},
      {L"host:80", L"host"},
      {L"host:80/path", L"host"},
      {L"https://", L""},
      {L"://", L""},
      {L"https:///path", L""},
      {L"//host/path", L""},  // no scheme, so the first slash cuts
      {L"/", L""},
      {L"?q", L""},
      {L"@", L""},
      {L"user@", L""},
      {L"https://Panel.Example", L"Panel.Example"},  // the case stays
      {L"https://host#part", L"host#part"},          // no cut at "#"
      {L" host ", L" host "},
      {L"面板.example:443", L"面板.example"},
  };
  for (const auto& [url, expected] : table) {
    SCOPED_TRACE(sim::Narrow(url));
    EXPECT_EQ(UrlHost(url), expected);
  }
}

TEST(UrlHost, OnlyTheFirstSchemeIsDropped) {
  EXPECT_EQ(UrlHost(L"a://b://c"), L"b:");
  EXPECT_EQ(UrlHost(L"host/x://other"), L"other") << "the scheme is looked for in the whole text";
}

TEST(UrlHost, ThePathAndTheQueryAreCutBeforeTheUserIsLookedFor) {
  EXPECT_EQ(UrlHost(L"https://host/a@b"), L"host");
  EXPECT_EQ(UrlHost(L"https://host?mail=a@b"), L"host");
  EXPECT_EQ(UrlHost(L"https://host\\a@b"), L"host");
}

TEST(UrlHost, TheLastAtSignAndTheLastColonCount) {
  EXPECT_EQ(UrlHost(L"a@b@host:1:443"), L"host:1");
  EXPECT_EQ(UrlHost(L"https://a:1@b:2@host"), L"host");
}

TEST(UrlHost, OnlyDigitsBehindTheLastColonAreAPort) {
  const WidePairs table = {
      {L"host:0", L"host"},
      {L"host:999999", L"host"},
      {L"host:", L"host:"},
      {L"host:x", L"host:x"},
      {L"host:80a", L"host:80a"},
      {L"host:a80", L"host:a80"},
      {L"host:-1", L"host:-1"},
      {L"host: 80", L"host: 80"},
      {L"host:8:", L"host:8:"},
      {L"host:\uff18", L"host:\uff18"},  // a digit of full width is none
      {L":80", L""},
      {L"::1", L":"},
      {L"fe80::1", L"fe80:"},
      {L"host:/", L"host:"},
      {L"host:80:x", L"host:80:x"},
      {L"host:9", L"host"},
      {L"host:/80", L"host:"},
      {L"host:\x2f", L"host:"},
      {L"host::", L"host::"},
  };
  for (const auto& [url, expected] : table) {
    SCOPED_TRACE(sim::Narrow(url));
    EXPECT_EQ(UrlHost(url), expected);
  }
}

TEST(UrlHost, ABracketedHostGivesItsInnerText) {
  const WidePairs table = {
      {L"https://[2001:db8::1]:443/path", L"2001:db8::1"},
      {L"[::1]", L"::1"},
      {L"user@[::1]:443", L"::1"},
      {L"[::1]anything", L"::1"},
      {L"[a]b]", L"a"},
      {L"[[a]", L"[a"},
      {L"[]", L""},
      {L"[::1", L""},
      {L"[", L""},
      {L"x[::1]", L"x[::1]"},  // not at the start
      {L"[::1/]", L""},        // the cut comes first
  };
  for (const auto& [url, expected] : table) {
    SCOPED_TRACE(sim::Narrow(url));
    EXPECT_EQ(UrlHost(url), expected);
  }
}

class Endpoints : public sim::MachineTest {
 protected:
  void PutPanel(const std::string& content) { machine.files.Put(L"C:\\run\\panel.json", content); }
  void SetUrl(const std::wstring& url) { machine.environment.Set(L"TAVRIN_XBOARD_URL", url); }
};

TEST_F(Endpoints, ReadsTheFiveTexts) {
  PutPanel(R"({"apiBase":"https:\/\/api.example\/","deviceApi":"d","inviteBase":"i",)"
           R"("updateUrl":"\u4e2d","downloadHost":"h"})");
  const PanelEndpoints endpoints = ReadPanelEndpoints(L"C:\\run");
  EXPECT_EQ(endpoints.apiBase, L"https://api.example/");
  EXPECT_EQ(endpoints.deviceApi, L"d");
  EXPECT_EQ(endpoints.inviteBase, L"i");
  EXPECT_EQ(endpoints.updateUrl, L"中");
  EXPECT_EQ(endpoints.downloadHost, L"h");
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"), Texts{R"("C:\run\panel.json", "rb", 64)"});
}

TEST_F(Endpoints, AMissingUnreadableOrDamagedFileGivesNone) {
  const auto expectNone = [] {
    const auto [apiBase, deviceApi, inviteBase, updateUrl, downloadHost] =
        ReadPanelEndpoints(L"C:\\run");
    EXPECT_EQ(apiBase + deviceApi + inviteBase + updateUrl + downloadHost, L"");
  };
  expectNone();
  for (const char* content : {"", "not json", "<html>", R"({"apiBase":null,"deviceApi":7})"}) {
    SCOPED_TRACE(content);
    PutPanel(content);
    expectNone();
  }
  PutPanel(R"({"apiBase":"x"})");
  machine.files.SetLocked(L"C:\\run\\panel.json", true);
  expectNone();
}

TEST_F(Endpoints, TheEnvironmentVariableIsReadIntoRoomFor512) {
  EXPECT_EQ(PanelUrlFromEnvironment(), L"");
  SetUrl(L"");
  EXPECT_EQ(PanelUrlFromEnvironment(), L"");
  SetUrl(std::wstring(511, L'x'));
  EXPECT_EQ(PanelUrlFromEnvironment(), std::wstring(511, L'x'));
  for (const size_t length : {512u, 513u, 2000u}) {
    SetUrl(std::wstring(length, L'x'));
    EXPECT_EQ(PanelUrlFromEnvironment(), L"");
  }
  EXPECT_EQ(machine.calls.TextsOf("GetEnvironmentVariableW").at(0), R"("TAVRIN_XBOARD_URL")");
}

TEST_F(Endpoints, WithNoSourcesThereAreNoHosts) {
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts());
}

TEST_F(Endpoints, HostsComeFromFourKeysButNotFromTheInviteLinks) {
  PutPanel(R"({"apiBase":"https://d.example/api","deviceApi":"https://c.example:8443",)"
           R"("inviteBase":"https://invite.example","updateUrl":"https://b.example/u",)"
           R"("downloadHost":"a.example"})");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"),
            (Hosts{L"a.example", L"b.example", L"c.example", L"d.example"}));
}

TEST_F(Endpoints, TheHostOfTheEnvironmentIsTakenInAddition) {
  PutPanel(R"({"apiBase":"https://file.example"})");
  SetUrl(L"https://environment.example/base");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), (Hosts{L"environment.example", L"file.example"}));
}

TEST_F(Endpoints, TheHostOfTheEnvironmentIsTakenWithoutAFile) {
  SetUrl(L"https://environment.example:444/");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts{L"environment.example"});
}

TEST_F(Endpoints, AnEnvironmentVariableThatDoesNotFitGivesNoHost) {
  SetUrl(L"https://" + std::wstring(504, L'x'));
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts());
  SetUrl(L"https://" + std::wstring(503, L'x'));
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts{std::wstring(503, L'x')});
}

TEST_F(Endpoints, TwoKeysWithTheSameHostGiveOneEntry) {
  PutPanel(R"({"apiBase":"https://host.example:1/a","deviceApi":"http://u@host.example?b",)"
           R"("downloadHost":"other.example"})");
  SetUrl(L"host.example");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), (Hosts{L"host.example", L"other.example"}));
}

TEST_F(Endpoints, HostsAreSortedByCodeUnitsAndCaseKeepsThemApart) {
  PutPanel(R"({"apiBase":"b","deviceApi":"B","updateUrl":"a","downloadHost":"中"})");
  SetUrl(L"10");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), (Hosts{L"10", L"B", L"a", L"b", L"中"}));
}

TEST_F(Endpoints, AddressesWithoutAHostAreLeftOut) {
  PutPanel(R"({"apiBase":"https://","deviceApi":"/","updateUrl":"","downloadHost":"[::1"})");
  SetUrl(L"user@");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts());
}

TEST_F(Endpoints, AChangedFileTakesEffectAtTheNextCall) {
  PutPanel(R"({"apiBase":"https://one.example"})");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts{L"one.example"});
  PutPanel(R"({"apiBase":"https://two.example"})");
  EXPECT_EQ(CollectPanelHosts(L"C:\\run"), Hosts{L"two.example"});
}

}  // namespace
}  // namespace vpn
