#include "src/panel/subscription.h"

#include <windows.h>
#include <wincrypt.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "src/common/text.h"
#include "src/panel/subscription_internal.h"

namespace vpn {
namespace {

constexpr std::string_view kScheme = "vless://";
constexpr size_t kNone = std::string_view::npos;

// Panels add links that lead nowhere and whose name is a notice to the user: traffic left, expiry
// of the plan, time to the next reset, nodes filtered out.
constexpr const wchar_t* kNoticeMarkers[] = {L"剩余流量", L"套餐到期", L"距离下次", L"过滤掉"};

bool IsNotice(const std::wstring& name) {
  return std::ranges::any_of(kNoticeMarkers, [&](const wchar_t* marker) {
    return name.find(marker) != std::wstring::npos;
  });
}

// The links in plain text; a text that is no base64 of links is taken as it stands.
std::string PlainLinks(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos || std::string_view(text).substr(first).starts_with(kScheme)) {
    return text;
  }
  const std::optional<std::string> decoded = DecodeBase64(text);
  return decoded && decoded->find(kScheme) != std::string::npos ? *decoded : text;
}

struct HostPort {
  std::string_view host;
  int port = 0;
};

// No host without the bracket or colon that ends it.
HostPort SplitHostPort(std::string_view text) {
  const size_t begin = text.starts_with('[') ? 1 : 0;
  const size_t end = begin == 1 ? text.find(']') : text.rfind(':');
  if (end == kNone) {
    return {};
  }
  const std::string rest(text.substr(end + begin));
  return {text.substr(begin, end - begin), rest.starts_with(':') ? std::atoi(rest.c_str() + 1) : 0};
}

// Cuts `text` at the first `mark` and hands back what stood behind it.
std::string_view CutBehind(std::string_view& text, char mark) {
  const size_t at = text.find(mark);
  if (at == kNone) {
    return {};
  }
  const std::string_view behind = text.substr(at + 1);
  text = text.substr(0, at);
  return behind;
}

bool IsPlain(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return c == '%' || c == '+'; });
}

// Nearly every key is plain, and decoding the others is left to where it can matter.
bool IsKey(std::string_view encoded, std::string_view key) {
  return IsPlain(encoded) ? encoded == key : PercentDecode(encoded) == key;
}

// The value of the first of two keys that has one.
std::string EitherParam(std::string_view query, std::string_view first, std::string_view second) {
  std::string value = QueryParam(query, first);
  return value.empty() ? QueryParam(query, second) : value;
}

}  // namespace

void ParseSubscription(const std::string& text, std::vector<NodeInfo>& nodes) {
  const std::string links = PlainLinks(text);
  std::string line;  // one buffer for all lines
  for (size_t start = 0; start < links.size();) {
    const size_t end = std::min(links.find('\n', start), links.size());
    line.assign(links, start, end - start);
    std::optional<NodeInfo> node = ParseVlessLink(line);
    if (node && !IsNotice(node->name)) {
      nodes.push_back(std::move(*node));
    }
    start = end + 1;
  }
}

std::optional<NodeInfo> ParseVlessLink(std::string& line) {
  line.erase(line.find_last_not_of("\r\n ") + 1);
  if (!line.starts_with(kScheme)) {
    return std::nullopt;
  }
  std::string_view rest = std::string_view(line).substr(kScheme.size());
  const std::string name = PercentDecode(CutBehind(rest, '#'));
  const std::string_view query = CutBehind(rest, '?');
  const size_t at = rest.rfind('@');
  if (at == kNone || at == 0) {
    return std::nullopt;
  }
  const HostPort target = SplitHostPort(rest.substr(at + 1));
  const std::string publicKey = EitherParam(query, "pbk", "publicKey");
  if (target.host.empty() || target.port < 1 || publicKey.empty()) {
    return std::nullopt;
  }
  NodeInfo node;
  node.name = Utf8ToWide(name.empty() ? target.host : std::string_view(name));
  node.address = Utf8ToWide(target.host);
  node.port = target.port;
  node.uuid = Utf8ToWide(rest.substr(0, at));
  AssignIfGiven(QueryParam(query, "flow"), node.flow);
  AssignIfGiven(EitherParam(query, "sni", "servername"), node.sni);
  AssignIfGiven(QueryParam(query, "fp"), node.fingerprint);
  node.publicKey = Utf8ToWide(publicKey);
  AssignIfGiven(EitherParam(query, "sid", "shortId"), node.shortId);
  return node;
}

std::string QueryParam(std::string_view query, std::string_view key) {
  while (!query.empty()) {
    const size_t end = std::min(query.find('&'), query.size());
    const std::string_view pair = query.substr(0, end);
    const size_t equals = pair.find('=');
    if (IsKey(pair.substr(0, equals), key)) {
      return equals == kNone ? std::string() : PercentDecode(pair.substr(equals + 1));
    }
    query.remove_prefix(std::min(end + 1, query.size()));
  }
  return {};
}

std::string PercentDecode(std::string_view text) {
  if (IsPlain(text)) {
    return std::string(text);
  }
  std::string decoded;
  decoded.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const bool fits = text[i] == '%' && i + 2 < text.size();
    const int high = fits ? HexDigitValue(text[i + 1]) : -1;
    const int low = fits ? HexDigitValue(text[i + 2]) : -1;
    if (high >= 0 && low >= 0) {
      decoded += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

std::optional<std::string> DecodeBase64(const std::string& text) {
  DWORD size = 0;
  const auto decode = [&](void* bytes) {
    return CryptStringToBinaryA(text.data(), static_cast<DWORD>(text.size()), CRYPT_STRING_BASE64,
                                static_cast<BYTE*>(bytes), &size, nullptr, nullptr) != FALSE;
  };
  if (!decode(nullptr)) {
    return std::nullopt;
  }
  std::string bytes(size, '\0');
  if (!decode(bytes.data())) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace vpn
