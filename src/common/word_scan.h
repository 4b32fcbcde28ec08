// Scanning a text eight bytes at a time. The plain C++ of this file is what the compilers turn into
// a few instructions for each word; a panel's answers are long, and each key is one scan.
#ifndef TAVRIN_SRC_COMMON_WORD_SCAN_H_
#define TAVRIN_SRC_COMMON_WORD_SCAN_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vpn {

inline constexpr std::uint64_t kEachByte = 0x0101010101010101;

// A byte is 0 where the eight bytes at `at` hold `byte`. The lowest byte is the first of them:
// Windows runs on little-endian machines alone.
inline std::uint64_t Differences(const char* at, char byte) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof(word));
  return word ^ kEachByte * static_cast<unsigned char>(byte);
}

// The top bit of each byte that is 0. Bytes above the lowest such one may be marked wrongly.
inline std::uint64_t ZeroBytes(std::uint64_t word) {
  return (word - kEachByte) & ~word & kEachByte << 7;
}

// The first position at or behind `from` for which `isHit` holds, else npos. `candidates` marks, by
// the top bits of their bytes, those of eight positions that may be hits; it reads the eight bytes
// at its argument and `Ahead` more. The last few positions are all tried.
template <std::size_t Ahead, class Candidates, class IsHit>
std::size_t FindByWords(std::string_view text, std::size_t from, Candidates candidates,
                        IsHit isHit) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  for (; from + kWord + Ahead <= text.size(); from += kWord) {
    for (std::uint64_t marks = candidates(text.data() + from); marks != 0; marks &= marks - 1) {
      const std::size_t at = from + static_cast<std::size_t>(std::countr_zero(marks)) / 8;
      if (isHit(at)) {
        return at;
      }
    }
  }
  for (; from < text.size(); ++from) {
    if (isHit(from)) {
      return from;
    }
  }
  return std::string_view::npos;
}

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_WORD_SCAN_H_
