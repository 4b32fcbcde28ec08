// The local account: the input is the session file, one byte 0xFF, and the account file.
#include "src/account/local_control_plane.h"
#include "src/common/text.h"
#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

constexpr wchar_t kAccount[] = L"C:\\run\\account.json";
constexpr wchar_t kSession[] = L"C:\\run\\session.json";

// The value by the rules, told with a count of what has been passed.
std::string FlatString(std::string_view text, const std::string& key) {
  const size_t found = text.find('"' + key + '"');
  if (found == std::string_view::npos) {
    return {};
  }
  text.remove_prefix(found + key.size() + 2);
  for (const char mark : {':', '"'}) {
    const size_t at = text.find(mark);
    if (at == std::string_view::npos) {
      return {};
    }
    text.remove_prefix(at + 1);
  }
  std::string value;
  for (char previous = '"'; const char byte : text) {
    if (byte == '"' && previous != '\\') {
      break;
    }
    value += previous = byte;
  }
  return value;
}

std::string WithoutMark(std::string_view file) {
  return std::string(file.size() >= 3 && file[0] == '\xEF' ? file.substr(3) : file);
}

std::wstring Field(const std::string& text, const char* key) {
  return vpn::Utf8ToWide(FlatString(text, key));
}

bool IsBlank(const vpn::NodeInfo& node) {
  return node.address.empty() || node.uuid.empty() || node.port == 0;
}

void CheckNode(const vpn::NodeInfo& node, const std::string& account) {
  const std::wstring flow = Field(account, "flow");
  const std::wstring fingerprint = Field(account, "fingerprint");
  Require(node.name == Field(account, "nodeName") && node.address == Field(account, "address") &&
              node.uuid == Field(account, "uuid") && node.sni == Field(account, "sni") &&
              node.publicKey == Field(account, "publicKey") &&
              node.shortId == Field(account, "shortId"),
          "the node's texts are the file's");
  Require(node.flow == (flow.empty() ? L"xtls-rprx-vision" : flow) &&
              node.fingerprint == (fingerprint.empty() ? L"chrome" : fingerprint),
          "flow and fingerprint have defaults");
}

// In the order in which the reasons are looked at.
std::wstring WantedError(const vpn::AccountSession& session, const std::wstring& email) {
  if (session.email.empty() || session.email != email) {
    return L"session does not match account";
  }
  if (session.expired) {
    return L"account expired";
  }
  return IsBlank(session.nodes.front()) ? L"account.json is missing node fields" : L"";
}

void CheckFetch(vpn::LocalControlPlane& plane, const std::string& stored,
                const std::string& account) {
  vpn::AccountSession session;
  session.nodes.resize(2);  // of an earlier fetch
  std::wstring error;
  const bool good = plane.fetchAccount(session, error);
  Require(session.email == Field(stored, "email"), "the email is the session's");
  Require(session.expiryDate == Field(account, "expireAt"), "the date is the account's");
  Require(session.hasPlan == !session.expired && session.deviceUsed == 1 && session.planId == 0,
          "a plan is one that has not expired");
  const bool hasNode = session.loggedIn && !session.expired;
  Require(session.nodes.size() == (hasNode ? 1u : 0u), "one node, or none");
  if (hasNode) {
    CheckNode(session.nodes.front(), account);
  }
  Require(error == WantedError(session, Field(account, "email")), "the error is the first reason");
  Require(good == error.empty(), "no error, no failure");
}

// Nothing in it that the session's own layout, which escapes nothing, could not take.
bool IsPlain(const std::wstring& email) {
  return !email.empty() && email.find_first_of(L"\"\\") == std::wstring::npos &&
         email.find(L'\xFFFD') == std::wstring::npos;
}

void CheckLogin(const std::string& file, vpn::LocalControlPlane& plane,
                const std::string& account) {
  const std::string before = file;
  const std::wstring email = Field(account, "email");
  const std::wstring password = Field(account, "password");
  std::wstring error;
  const bool otherEmail = account.size() % 2 == 0;  // or the other password
  Require(!plane.login(otherEmail ? email + L"x" : email, otherEmail ? password : L"x" + password,
                       error),
          "another address or password does not sign in");
  Require(error == L"email or password is incorrect", "both mistakes have one text");
  Require(file == before, "a refused login leaves the session file");
  if (!plane.login(email, password, error)) {
    Require(error == L"account expired", "the file's own words sign in unless it expired");
    Require(file == before, "an expired account leaves the session file");
    return;
  }
  Require(file == R"({"email":")" + fuzz::Utf8(email) + R"(","expireAt":")" +
                      FlatString(account, "expireAt") + "\"}\n",
          "the session is written as it stands");
  vpn::AccountSession session;
  (void)plane.fetchAccount(session, error);
  Require(session.loggedIn || !IsPlain(email), "who signed in is signed in");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine shared;
  static std::shared_ptr<sim::FileNode> sessionFile;
  static std::shared_ptr<sim::FileNode> accountFile;
  (void)shared.Get([](sim::Machine& fresh) {
    fresh.files.Put(kSession);
    fresh.files.Put(kAccount);
    sessionFile = fresh.files.Find(kSession);
    accountFile = fresh.files.Find(kAccount);
  });
  std::string_view account = fuzz::Bytes(data, size);
  const std::string_view stored = fuzz::TakeUntil(account, '\xFF');
  sessionFile->content = stored;
  accountFile->content = account;
  vpn::LocalControlPlane plane(kAccount, kSession);
  if (size % 2 == 0) {
    CheckFetch(plane, WithoutMark(stored), WithoutMark(account));
  } else {
    CheckLogin(sessionFile->content, plane, WithoutMark(account));
  }
  return 0;
}
