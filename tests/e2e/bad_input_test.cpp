// Requests and files that are not what they should be: each has its own answer, and the service
// goes on.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

constexpr char kConnect[] = R"({"op":"connect"})";

class BadInput : public ServiceTest {
 protected:
  void ExpectConnectFails(const std::string& text) {
    const netmodel::Network before = machine.Network();
    StartService();
    EXPECT_EQ(Ask(kConnect), Refusal(text));
    EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
    ExpectSameNetwork(machine.Network(), before);
  }
  std::wstring account() const { return box.runtime() + L"\\account.json"; }
  std::wstring session() const { return box.runtime() + L"\\session.json"; }
};

// As the text stands within a reply.
std::string Escaped(const std::wstring& path) {
  std::string result;
  for (const char c : standins::ToUtf8(path)) result += c == '\\' ? "\\\\" : std::string(1, c);
  return result;
}

// The scanner is lenient on purpose; what it makes of a text is part of the protocol.
TEST_F(BadInput, MalformedRequestsAreReadAsFarAsTheyGo) {
  StartService();
  for (const char* request :
       {R"({ "op" : "status" })", R"({"op" junk : "status"})", R"({"op":"status)",
        R"("op":"status")", R"({"node":"op","op":"status"})", "{\"op\":\t\r\n \"status\"}",
        R"({"op":"st\atus"})", R"([[{"op":"status"}]])"}) {
    EXPECT_EQ(Ask(request), kDown) << request;
  }
}

TEST_F(BadInput, RequestsWithoutAnOperationAreRefused) {
  StartService();
  for (const char* request :
       {"hello", "    ", "\xFF\xFE\xFD", R"({"op":5})", R"({"op":5,"op":"status"})",
        R"({"op":null})", R"({"op":{"op":"status"}})", R"({"OP":"status"})", R"({"x":"op"})",
        R"({"op")", R"({"op":)", R"({"op":")", R"({"op":"stat)", R"({"op":"\u0073tatus"})",
        R"({op:"status"})"}) {
    EXPECT_EQ(Ask(request), Refusal("op not allowed")) << request;
  }
}

TEST_F(BadInput, NulBytesInARequestAreBytesLikeOthers) {
  StartService();
  using namespace std::string_literals;
  EXPECT_EQ(Ask("\0\0{\"op\":\"status\"}\0"s), kDown);
  EXPECT_EQ(Ask("{\"op\":\"status\0\"}"s), Refusal("op not allowed"));
}

TEST_F(BadInput, NodeNameThatIsNotUtf8ConnectsToTheFirstNode) {
  StartService();
  EXPECT_EQ(Ask("{\"op\":\"connect\",\"node\":\"\xFF\xC0\x80\"}"), kUp);
}

TEST_F(BadInput, MissingSessionFile) {
  RemoveFile(session());
  ExpectConnectFails("not logged in");
}

TEST_F(BadInput, MissingAccountFile) {
  RemoveFile(account());
  ExpectConnectFails("cannot read " + Escaped(account()));
}

TEST_F(BadInput, DamagedAccountFile) {
  WriteText(account(), "\x01\x02 this is not JSON {{{");
  ExpectConnectFails("session does not match account");
}

TEST_F(BadInput, EmptyAccountFile) {
  WriteText(account(), "");
  ExpectConnectFails("session does not match account");
}

TEST_F(BadInput, AccountFileThatIsCutOffBeforeItsNode) {
  WriteText(account(), R"({"email":"user@tavrin.example","expireAt":"2099-12-31","nodeName":"x)");
  ExpectConnectFails("account.json is missing node fields");
}

TEST_F(BadInput, AccountOfAnotherUser) {
  WriteText(session(), SessionText("other@tavrin.example"));
  ExpectConnectFails("session does not match account");
}

TEST_F(BadInput, AccountWhoseTermIsOver) {
  Account account;
  account.expireAt = "2020-01-31";
  WriteAccount(account);
  ExpectConnectFails("account expired");
}

TEST_F(BadInput, AccountWithoutAPort) {
  Account account;
  account.port = 0;
  WriteAccount(account);
  ExpectConnectFails("account.json is missing node fields");
}

TEST_F(BadInput, AccountFileIsReadAnewOnceItIsRepaired) {
  RemoveFile(account());
  StartService();
  ASSERT_EQ(Ask(kConnect), Refusal("cannot read " + Escaped(account())));
  WriteAccount(Account());
  EXPECT_EQ(Ask(kConnect), kUp);
}

TEST_F(BadInput, PanelFileThatIsNotJsonCountsAsAbsent) {
  WriteText(box.runtime() + L"\\panel.json", "\xEF\xBB\xBF<html>not json</html>\"apiBase\"");
  StartService();
  EXPECT_EQ(Ask(kConnect), kUp);
}

TEST_F(BadInput, PanelFileWithoutAnAddressCountsAsAbsent) {
  WriteText(box.runtime() + L"\\panel.json", R"({"apiBase":"///"})");
  StartService();
  EXPECT_EQ(Ask(kConnect), kUp);
}

// A directory in the file's place refuses the writing for every user, the administrator included.
TEST_F(BadInput, ConfigurationThatCannotBeWritten) {
  MakeDirectories(box.runtime() + L"\\session.json.xray.json");
  ExpectConnectFails("cannot write generated xray config");
}

TEST_F(BadInput, ConfigurationThatCannotBeWrittenLeavesARunningTunnel) {
  StartService();
  ASSERT_EQ(Ask(kConnect), kUp);
  // Xray holds it open on no platform, so it can go while the tunnel runs.
  RemoveFile(box.runtime() + L"\\session.json.xray.json");
  MakeDirectories(box.runtime() + L"\\session.json.xray.json");
  EXPECT_EQ(Ask(kConnect), Refusal("cannot write generated xray config", true));
}

TEST_F(BadInput, LogThatCannotBeWrittenDoesNotMatter) {
  MakeDirectories(box.serviceLog());
  StartService();
  EXPECT_EQ(Ask(kConnect), kUp);
}

TEST_F(BadInput, RuntimeDirectoryThatDoesNotExist) {
  Launch(box.serviceExe(), L"--console --runtime \"" + box.root() + L"\\nowhere\"");
  EXPECT_EQ(Ask(kConnect), Refusal("not logged in"));
  ShutDown();
  EXPECT_FALSE(Exists(box.root() + L"\\nowhere"));
}

}  // namespace
}  // namespace e2e
