#include "src/xrayconf/xray_config.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/xrayconf/expected_config.h"

namespace vpn {
namespace {

class XrayConfig : public XrayConfigTest {};

// The other values --------------------------------------------------------------------------------

TEST_F(XrayConfig, EveryFieldOfTheNodeStandsInItsPlace) {
  node.port = 8443;
  node.uuid = L"U";
  node.flow = L"F";
  node.sni = L"S";
  node.fingerprint = L"P";
  node.publicKey = L"K";
  node.shortId = L"I";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kPort, R"(          "port": 8443,)"},
           {kUser, R"(          "users": [{ "id": "U", "encryption": "none", "flow": "F" }])"},
           {kServerName, R"(          "serverName": "S",)"},
           {kFingerprint, R"(          "fingerprint": "P",)"},
           {kPublicKey, R"(          "publicKey": "K",)"},
           {kShortId, R"(          "shortId": "I")"}}));
}

TEST_F(XrayConfig, QuotesAndBackslashesAreEscapedAndATabStandsRaw) {
  node.flow = L"f\"l\\o\tw";
  node.sni = L"s\"n\\i\t\r\n\x01";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kUser,
            R"(          "users": [{ "id": "0b0b0b0b-1111-2222-3333-444444444444", "encryption": "none", "flow": "f\"l\\o)"
            "\t"
            R"(w" }])"},
           {kServerName, R"(          "serverName": "s\"n\\i)"
                         "\t\r\n\x01"
                         R"(",)"}}));
}

TEST_F(XrayConfig, TheRemainingTextsAreEscapedToo) {
  node.uuid = L"\"";
  node.fingerprint = L"\\";
  node.publicKey = L"\"\\";
  node.shortId = L"\\\"";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kUser,
            R"(          "users": [{ "id": "\"", "encryption": "none", "flow": "xtls-rprx-vision" }])"},
           {kFingerprint, R"(          "fingerprint": "\\",)"},
           {kPublicKey, R"(          "publicKey": "\"\\",)"},
           {kShortId, R"(          "shortId": "\\\"")"}}));
}

TEST_F(XrayConfig, AnAliasWithNonAsciiCharactersStandsAsUtf8Twice) {
  alias = L"以太网 \"2\"";
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kProxyInterface, R"(          "interface": "以太网 \"2\"",)"},
           {kDirectOutbound,
            R"(    { "tag": "direct", "protocol": "freedom", "settings": { "domainStrategy": "UseIPv4" }, "streamSettings": { "sockopt": { "interface": "以太网 \"2\"" } } },)"}}));
}

TEST_F(XrayConfig, ThePortIsWrittenAsItStands) {
  const std::vector<std::pair<std::int32_t, std::string>> table = {
      {0, R"(          "port": 0,)"},
      {-1, R"(          "port": -1,)"},
      {65536, R"(          "port": 65536,)"},
      {INT32_MAX, R"(          "port": 2147483647,)"},
      {INT32_MIN, R"(          "port": -2147483648,)"},
  };
  for (const auto& [port, line] : table) {
    node.port = port;
    EXPECT_EQ(Generate(), ExpectedWith({{kPort, line}}));
  }
}

TEST_F(XrayConfig, AValueThatLooksLikeAPlaceholderStandsAsItIs) {
  node.sni = L"%uuid%";
  node.shortId = L"%";
  EXPECT_EQ(Generate(), ExpectedWith({{kServerName, R"(          "serverName": "%uuid%",)"},
                                      {kShortId, R"(          "shortId": "%")"}}));
}

TEST_F(XrayConfig, AFailedConversionGivesAnEmptyValueAndNoFailure) {
  machine.faults.FailAlways("WideCharToMultiByte");
  EXPECT_EQ(
      Generate(),
      ExpectedWith(
          {{kErrorLog, R"(  "log": { "loglevel": "warning", "error": "" },)"},
           {kAddress, R"(          "address": "",)"},
           {kUser, R"(          "users": [{ "id": "", "encryption": "none", "flow": "" }])"},
           {kServerName, R"(          "serverName": "",)"},
           {kFingerprint, R"(          "fingerprint": "",)"},
           {kPublicKey, R"(          "publicKey": "",)"},
           {kShortId, R"(          "shortId": "")"},
           {kProxyInterface, R"(          "interface": "",)"},
           {kDirectOutbound,
            R"(    { "tag": "direct", "protocol": "freedom", "settings": { "domainStrategy": "UseIPv4" }, "streamSettings": { "sockopt": { "interface": "" } } },)"},
           {kNodeRule,
            R"(      { "type": "field", "domain": ["full:"], "outboundTag": "direct" },)"}}));
}

// Files -------------------------------------------------------------------------------------------

TEST_F(XrayConfig, TheErrorLogStandsBesideTheFileWithEachBackslashDoubled) {
  machine.files.PutDirectory(L"C:\\Program Files\\a b");
  const std::vector<std::pair<std::wstring, std::string>> table = {
      {L"C:\\Program Files\\a b\\c.json", R"(C:\\Program Files\\a b\\xray-error.log)"},
      {L"C:\\run/c.json", R"(C:\\run/xray-error.log)"},
      {L"C:/run\\c.json", R"(C:/run\\xray-error.log)"},
      {L"C:\\c.json", R"(C:\\xray-error.log)"},
      {L"\\c.json", R"(\\xray-error.log)"},
  };
  for (const auto& [path, log] : table) {
    SCOPED_TRACE(log);
    EXPECT_EQ(Generate(path),
              ExpectedWith({{kErrorLog, R"(  "log": { "loglevel": "warning", "error": ")" + log +
                                            R"(" },)"}}));
  }
}

TEST_F(XrayConfig, APathWithoutASeparatorPutsTheBareNameOfTheErrorLog) {
  machine.files.currentDirectory = L"C:\\run";
  EXPECT_EQ(Generate(L"config.json"),
            ExpectedWith({{kErrorLog,
                           R"(  "log": { "loglevel": "warning", "error": "xray-error.log" },)"}}));
  EXPECT_TRUE(machine.files.Exists(L"C:\\run\\config.json"));
}

TEST_F(XrayConfig, TheFileIsWrittenInBinaryModeAndLetsOthersUseIt) {
  Generate();
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            Texts{R"("C:\run\session.json.xray.json", "wb", 64)"});
}

TEST_F(XrayConfig, ALongerEarlierFileIsReplacedWhole) {
  machine.files.Put(L"C:\\run\\session.json.xray.json", std::string(20000, 'x'));
  EXPECT_EQ(Generate(), kExpected);
}

TEST_F(XrayConfig, TwoRunsWithTheSameInputGiveTheSameBytes) {
  machine.names.Set("node.example", {"198.51.100.7", "198.51.100.8"});
  node.address = L"node.example";
  const std::string first = Generate();
  EXPECT_EQ(Generate(), first);
  EXPECT_NE(first, kExpected);
}

TEST_F(XrayConfig, AFileThatDoesNotOpenIsTheOneFailure) {
  EXPECT_FALSE(unit::Succeeds(GenerateXrayConfig(node, alias, L"C:\\missing\\c.json"), error));
  EXPECT_EQ(error, L"cannot write generated xray config");
  machine.files.Put(L"C:\\run\\c.json", "kept");
  machine.files.SetLocked(L"C:\\run\\c.json", true);
  error.clear();
  EXPECT_FALSE(unit::Succeeds(GenerateXrayConfig(node, alias, L"C:\\run\\c.json"), error));
  EXPECT_EQ(error, L"cannot write generated xray config");
  EXPECT_EQ(machine.files.Read(L"C:\\run\\c.json"), "kept");
}

TEST_F(XrayConfig, OnlyTheOpeningDecidesAndNotTheWriteItself) {
  machine.files.Put(L"C:\\run\\session.json.xray.json", "old");
  machine.files.SetWritesFail(L"C:\\run\\session.json.xray.json", true);
  EXPECT_TRUE(
      unit::Succeeds(GenerateXrayConfig(node, alias, L"C:\\run\\session.json.xray.json"), error));
  EXPECT_EQ(error, L"earlier");
}

}  // namespace
}  // namespace vpn
