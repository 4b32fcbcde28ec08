#include "src/panel/account_reply.h"

#include <windows.h>

#include <array>
#include <cstdlib>
#include <ctime>

#include "src/common/key_scan.h"
#include "src/common/number_text.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {
namespace {

constexpr std::int64_t kEpochGap = 11644473600;       // seconds from 1601 to 1970
constexpr std::int64_t kTicksPerSecond = 10000000;    // of a FILETIME
constexpr std::int64_t kMilliseconds = 100000000000;  // above this a number is in milliseconds
constexpr std::int64_t kFirstPlausible = 1000000000;  // in seconds: September 2001

std::int64_t PlausibleSeconds(std::int64_t value) {
  const std::int64_t seconds = value > kMilliseconds ? value / 1000 : value;
  return seconds >= 1 && seconds < kFirstPlausible ? 0 : seconds;
}

// The last second of the day in UTC; 0 for one that the platform can't express.
std::int64_t EndOfDay(const std::array<int, 3>& day) {
  std::tm date = {};
  date.tm_year = day[0] - 1900;
  // Unsigned, since the panel may send any number and a signed difference could overflow.
  date.tm_mon = static_cast<int>(static_cast<unsigned>(day[1]) - 1U);
  date.tm_mday = day[2];
  date.tm_hour = 23;
  date.tm_min = 59;
  date.tm_sec = 59;
  const std::int64_t seconds = _mkgmtime64(&date);
  return seconds < 0 ? 0 : seconds;
}

std::int64_t ParseQuotedExpiry(const std::string& value) {
  const auto day = ReadDate(value);
  if (day && day->front() >= 1971) {
    return EndOfDay(*day);
  }
  return std::strtoll(value.c_str(), nullptr, 10);
}

std::string EitherString(const std::string& json, std::string_view first, std::string_view second) {
  std::string value = JsonString(json, first);
  return value.empty() ? JsonString(json, second) : value;
}

std::int32_t ServerPort(const std::string& server) {
  auto port = static_cast<std::int32_t>(JsonInt(server, "server_port", 0));
  if (port == 0) {
    port = std::atoi(JsonString(server, "port").c_str());
  }
  if (port == 0) {
    port = static_cast<std::int32_t>(JsonInt(server, "port", 0));
  }
  return port;
}

bool IsVlessServer(const std::string& server) {
  const std::wstring type = ToLowerText(Utf8ToWide(JsonString(server, "type")));
  return type.empty() || type == L"vless" || type == L"v2ray";
}

}  // namespace

std::int64_t ParseExpiredAt(const std::string& text) {
  const size_t behindColon = FindBehindColon(text, "expired_at");
  const size_t at =
      behindColon == std::string::npos ? text.size() : SkipBytes(text, behindColon, " \t");
  if (at >= text.size()) {
    return 0;
  }
  if (text[at] != '"') {
    return PlausibleSeconds(std::strtoll(text.c_str() + at, nullptr, 10));
  }
  return ParseQuotedExpiry(text.substr(at + 1, FindClosingQuote(text, at + 1) - at - 1));
}

std::wstring DateText(std::int64_t unixSeconds) {
  constexpr std::int64_t kLastSecond = INT64_MAX / kTicksPerSecond - kEpochGap;
  if (unixSeconds <= 0 || unixSeconds > kLastSecond) {
    return {};
  }
  const auto ticks = static_cast<std::uint64_t>((unixSeconds + kEpochGap) * kTicksPerSecond);
  const FILETIME fileTime = {static_cast<DWORD>(ticks & 0xFFFFFFFF),
                             static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME date = {};
  if (FileTimeToSystemTime(&fileTime, &date) == FALSE) {
    return {};
  }
  return DecimalText(date.wYear, 4) + L'-' + DecimalText(date.wMonth, 2) + L'-' +
         DecimalText(date.wDay, 2);
}

std::int64_t NowSeconds() {
  FILETIME now = {};
  GetSystemTimeAsFileTime(&now);
  const auto ticks = static_cast<std::int64_t>(
      static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime);
  return ticks / kTicksPerSecond - kEpochGap;
}

NodeInfo NodeFromServer(const std::string& serverJson, const std::wstring& uuid) {
  NodeInfo node;
  node.name = Utf8ToWide(EitherString(serverJson, "name", "host"));
  node.address = Utf8ToWide(JsonString(serverJson, "host"));
  node.port = ServerPort(serverJson);
  node.uuid = uuid;
  AssignIfGiven(JsonString(serverJson, "flow"), node.flow);
  node.sni = Utf8ToWide(EitherString(serverJson, "server_name", "sni"));
  AssignIfGiven(JsonString(serverJson, "fingerprint"), node.fingerprint);
  node.publicKey = Utf8ToWide(EitherString(serverJson, "public_key", "publicKey"));
  node.shortId = Utf8ToWide(EitherString(serverJson, "short_id", "shortId"));
  return node;
}

std::vector<NodeInfo> NodesFromServers(const std::vector<std::string>& servers,
                                       const std::wstring& uuid) {
  std::vector<NodeInfo> nodes;
  for (const std::string& server : servers) {
    if (!IsVlessServer(server)) {
      continue;
    }
    NodeInfo node = NodeFromServer(server, uuid);
    if (!node.address.empty() && node.port >= 1 && !node.uuid.empty() && !node.publicKey.empty()) {
      nodes.push_back(std::move(node));
    }
  }
  return nodes;
}

}  // namespace vpn
