// The panel's account and server replies: the expiry, its date text, and the nodes of a server
// list. The input is a reply's body.
#include "src/panel/account_reply.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "src/common/text.h"
#include "src/panel/json_reader.h"
#include "src/panel/request_text.h"
#include "tests/fuzz/fuzz.h"

using fuzz::Require;

namespace {

using Nodes = std::vector<vpn::NodeInfo>;

constexpr std::int64_t kDay = 86400;
constexpr std::int64_t kLastSecond = 32535215999;  // of the year 3000

std::string Expiry(const std::string& value) {
  return "{\"expired_at\":" + value + "}";
}

// The days from 1970 to the first of a month, counted; month 0 is January.
std::int64_t DaysTo(std::int64_t year, std::int64_t month) {
  constexpr std::array<int, 12> kBefore = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const auto leapDays = [](std::int64_t last) { return last / 4 - last / 100 + last / 400; };
  const bool isLeap = leapDays(year) != leapDays(year - 1);
  return 365 * (year - 1970) + leapDays(year - 1) - leapDays(1969) +
         kBefore.at(static_cast<size_t>(month)) + (isLeap && month > 1 ? 1 : 0);
}

// The end of a day by the calendar; the platform knows no other years.
std::int64_t DayEnd(int year, int month, int day) {
  constexpr std::int64_t kFirstYear = 1969;
  constexpr std::int64_t kLastYear = 3001;
  if (year > kLastYear || month == INT32_MIN) {
    return 0;
  }
  const std::int64_t months = std::int64_t{year} * 12 + month - 1;
  if (months < kFirstYear * 12 || months >= (kLastYear + 1) * 12) {
    return 0;
  }
  const std::int64_t end = (DaysTo(months / 12, months % 12) + day) * kDay - 1;
  return end < 0 || end > kLastSecond ? 0 : end;
}

std::int64_t QuotedExpiry(const std::string& value) {
  std::array<int, 3> date{};
  const int count = std::sscanf(value.c_str(), "%d-%d-%d", date.data(), &date[1], &date[2]);
  return count == 3 && date[0] > 1970 ? DayEnd(date[0], date[1], date[2])
                                      : std::strtoll(value.c_str(), nullptr, 10);
}

std::int64_t PlainExpiry(std::int64_t number) {
  if (number < 1) {
    return number;
  }
  const std::int64_t seconds = number / (number > 100000000000 ? 1000 : 1);
  return seconds < 1000000000 ? 0 : seconds;
}

// The rules once more, on pointers.
std::int64_t ExpiryByRules(const std::string& text) {
  const size_t key = text.find("\"expired_at\"");
  const size_t colon = key == std::string::npos ? key : text.find(':', key + 12);
  if (colon == std::string::npos) {
    return 0;
  }
  const char* at = text.c_str() + colon + 1;
  at += std::strspn(at, " \t");
  if (*at != '"') {
    return PlainExpiry(std::strtoll(at, nullptr, 10));
  }
  std::string value;
  const char* const end = text.data() + text.size();
  for (++at; at != end && (*at != '"' || at[-1] == '\\'); ++at) {
    value += *at;
  }
  return QuotedExpiry(value);
}

void CheckExpiry(const std::string& text) {
  const std::int64_t expiry = vpn::ParseExpiredAt(text);
  Require(expiry == ExpiryByRules(text), "the expiry is read by its rules");
  std::int64_t number = 0;
  std::memcpy(&number, text.data(), std::min(sizeof(number), text.size()));
  for (const std::int64_t seconds : {expiry, number, number >> 20, number >> 28}) {
    const std::wstring date = vpn::DateText(seconds);
    Require(seconds > 0 || date.empty(), "there is no date in front of 1970");
    if (date.empty() || seconds > kLastSecond || seconds < 366 * kDay) {
      continue;
    }
    const std::string quoted = '"' + vpn::WideToUtf8(date) + '"';
    Require(vpn::ParseExpiredAt(Expiry(quoted)) == seconds / kDay * kDay + kDay - 1,
            "a date text reads back as the last second of its day");
  }
  Require(vpn::ParseExpiredAt(Expiry(std::to_string(number))) == PlainExpiry(number),
          "a number is seconds or milliseconds");
}

bool IsSame(const vpn::NodeInfo& a, const vpn::NodeInfo& b) {
  return a.name == b.name && a.address == b.address && a.port == b.port && a.uuid == b.uuid &&
         a.flow == b.flow && a.sni == b.sni && a.fingerprint == b.fingerprint &&
         a.publicKey == b.publicKey && a.shortId == b.shortId;
}

void CheckServers(const std::string& text) {
  const std::vector<std::string> servers = vpn::JsonObjectArray(text, "data");
  const Nodes nodes = vpn::NodesFromServers(servers, L"id");
  Nodes oneByOne;
  for (const std::string& server : servers) {
    for (const vpn::NodeInfo& node : vpn::NodesFromServers({server}, L"id")) {
      Require(IsSame(node, vpn::NodeFromServer(server, L"id")), "a node is its server's");
      oneByOne.push_back(node);
    }
  }
  Require(std::equal(nodes.begin(), nodes.end(), oneByOne.begin(), oneByOne.end(), IsSame),
          "servers stand for themselves, in order");
  for (const vpn::NodeInfo& node : nodes) {
    Require(!node.name.empty() && !node.address.empty() && !node.publicKey.empty() && node.port > 0,
            "a node has a name, an address, a port and a key");
    Require(!node.flow.empty() && !node.fingerprint.empty() && node.uuid == L"id",
            "flow and fingerprint have defaults, the id is the account's");
  }
  Require(vpn::NodesFromServers(servers, L"").empty(), "without an id there are no nodes");
}

// The keys of a server that have a second spelling.
struct Spelling {
  const char* serverName;
  const char* publicKey;
  const char* shortId;
};

// A server that is put together from one text reads back in each of its places.
void CheckServer(const std::string& text) {
  constexpr std::array kSpellings = {Spelling{"server_name", "public_key", "short_id"},
                                     Spelling{"sni", "publicKey", "shortId"}};
  const std::string value = '=' + vpn::JsonEscape(text);
  if (value.ends_with('\\')) {
    return;  // runs on past its end
  }
  const Spelling keys = kSpellings.at(text.size() / 3 % kSpellings.size());
  std::string server = R"({"type":"VLESS","port":")" + std::to_string(text.size() + 1) + '"';
  for (const char* key :
       {"name", "host", "flow", "fingerprint", keys.serverName, keys.publicKey, keys.shortId}) {
    server += std::string(",\"") + key + "\":\"" + value + '"';
  }
  server += '}';
  const Nodes nodes = vpn::NodesFromServers({server}, L"id");
  const std::wstring wide = vpn::Utf8ToWide('=' + text);
  Require(nodes.size() == 1, "such a server is a node");
  const vpn::NodeInfo wanted = {
      wide, wide, static_cast<std::int32_t>(text.size() + 1), L"id", wide, wide, wide, wide, wide};
  Require(IsSame(nodes.front(), wanted), "every value reads back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine machine;
  (void)machine.Get([](sim::Machine&) {});
  const std::string text(fuzz::Bytes(data, size));
  // One question each time; the fuzzer comes back with every length.
  constexpr std::array kQuestions = {CheckExpiry, CheckServers, CheckServer};
  kQuestions[size % kQuestions.size()](text);
  return 0;
}
