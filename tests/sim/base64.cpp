#include "tests/sim/base64.h"

#include <array>

namespace sim {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kSkipped = " \t\r\n";

// Up to four digits of six bits each.
struct Group {
  std::array<unsigned, 4> digits{};
  size_t count = 0;

  // One digit alone still gives a byte.
  void Flush(std::string* bytes) {
    const unsigned bits = digits[0] << 18 | digits[1] << 12 | digits[2] << 6 | digits[3];
    const size_t size = count < 2 ? count : count - 1;
    for (size_t i = 0; i < size; ++i) {
      *bytes += static_cast<char>((bits >> (16 - 8 * i)) & 0xFF);
    }
    *this = Group();
  }
};

std::string WithoutWhiteSpace(std::string_view text) {
  std::string kept;
  for (const char byte : text) {
    if (kSkipped.find(byte) == std::string_view::npos) {
      kept += byte;
    }
  }
  return kept;
}

}  // namespace

bool DecodeBase64(std::string_view text, std::string* bytes) {
  bytes->clear();
  Group group;
  const std::string digits = WithoutWhiteSpace(text);
  for (size_t at = 0; at < digits.size(); ++at) {
    if (digits[at] == '=') {
      const size_t needed = group.count == 0 ? 0 : 4 - group.count;
      group.Flush(bytes);
      return std::string_view(digits).substr(at, needed) == std::string(needed, '=');
    }
    const size_t value = kAlphabet.find(digits[at]);
    if (value == std::string_view::npos) {
      group.Flush(bytes);
      return false;
    }
    group.digits[group.count++] = static_cast<unsigned>(value);
    if (group.count == 4) {
      group.Flush(bytes);
    }
  }
  group.Flush(bytes);
  return true;
}

}  // namespace sim
