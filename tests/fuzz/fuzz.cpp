#include "tests/fuzz/fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/sim/text.h"

namespace fuzz {
namespace {

void AppendUtf8(char32_t point, std::string& out) {
  if (point < 0x80) {
    out += static_cast<char>(point);
    return;
  }
  const int trail = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  constexpr unsigned char kLead[] = {0, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kLead[trail] | (point >> (6 * trail)));
  for (int left = trail - 1; left >= 0; --left) {
    out += static_cast<char>(0x80 | ((point >> (6 * left)) & 0x3F));
  }
}

}  // namespace

void Require(bool holds, const char* claim) {
  if (!holds) {
    std::fprintf(stderr, "\nfuzz: this does not hold: %s\n", claim);
    std::abort();
  }
}

std::string_view Bytes(const std::uint8_t* data, size_t size) {
  return size == 0 ? std::string_view()
                   : std::string_view(reinterpret_cast<const char*>(data), size);
}

std::string_view TakeUntil(std::string_view& text, char mark) {
  const size_t end = text.find(mark);
  const std::string_view front = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return front;
}

std::wstring Wide(std::string_view text) {
  std::wstring units;
  for (;;) {
    units += sim::Widen(TakeUntil(text, '\xFE'));
    if (text.size() < 2) {
      return units;
    }
    units += static_cast<wchar_t>(static_cast<unsigned char>(text[0]) << 8 |
                                  static_cast<unsigned char>(text[1]));
    text.remove_prefix(2);
  }
}

std::string Utf8(std::wstring_view units) {
  std::string bytes;
  for (size_t at = 0; at < units.size(); ++at) {
    char32_t point = static_cast<char32_t>(units[at]);
    const char32_t next = at + 1 < units.size() ? static_cast<char32_t>(units[at + 1]) : 0;
    if (point >= 0xD800 && point <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF) {
      point = 0x10000 + ((point - 0xD800) << 10) + (next - 0xDC00);
      ++at;
    } else if (point >= 0xD800 && point <= 0xDFFF) {
      point = 0xFFFD;
    }
    AppendUtf8(point, bytes);
  }
  return bytes;
}

std::string PercentEncode(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string encoded;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    encoded += {'%', kDigits[value >> 4], kDigits[value & 0x0F]};
  }
  return encoded;
}

std::string Base64(std::string_view bytes) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string encoded;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    const size_t count = std::min<size_t>(3, bytes.size() - at);
    std::uint32_t group = 0;
    for (size_t i = 0; i < 3; ++i) {
      group = group << 8 | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0u);
    }
    for (size_t i = 0; i < 4; ++i) {
      encoded += i <= count ? kAlphabet[group >> (18 - 6 * i) & 0x3F] : '=';
    }
  }
  return encoded;
}

}  // namespace fuzz

// Short stacks of allocations and a small quarantine: what they cost is most of an execution.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
  return "malloc_context_size=4:quarantine_size_mb=1";
}
