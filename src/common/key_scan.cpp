#include "src/common/key_scan.h"

#include <algorithm>

#include "src/common/word_scan.h"

namespace vpn {
namespace {

// `at` is a position of the text. The needle is never put together: most calls look for one of the
// short keys of a short text.
bool IsQuotedKey(std::string_view text, size_t at, std::string_view key) {
  return text.size() - at >= key.size() + 2 && text[at] == '"' &&
         text[at + key.size() + 1] == '"' && text.substr(at + 1, key.size()) == key;
}

}  // namespace

size_t FindBehindKey(std::string_view text, std::string_view key) {
  const char first = key.empty() ? '"' : key.front();
  const size_t at = FindByWords<1>(
      text, 0,
      [first](const char* word) {
        return ZeroBytes(Differences(word, '"') | Differences(word + 1, first));
      },
      [&](size_t position) { return IsQuotedKey(text, position, key); });
  return at == std::string_view::npos ? at : at + key.size() + 2;
}

size_t FindBehindColon(std::string_view text, std::string_view key) {
  const size_t behindKey = FindBehindKey(text, key);
  const size_t colon = behindKey == std::string_view::npos ? behindKey : text.find(':', behindKey);
  return colon == std::string_view::npos ? colon : colon + 1;
}

size_t FindClosingQuote(std::string_view text, size_t from) {
  size_t quote = text.find('"', from);
  while (quote != std::string_view::npos && text[quote - 1] == '\\') {
    quote = text.find('"', quote + 1);
  }
  return std::min(quote, text.size());
}

size_t SkipBytes(std::string_view text, size_t from, std::string_view skipped) {
  const auto isSkipped = [skipped](char byte) {
    return std::any_of(skipped.begin(), skipped.end(), [byte](char one) { return one == byte; });
  };
  while (from < text.size() && isSkipped(text[from])) {
    ++from;
  }
  return std::min(from, text.size());
}

}  // namespace vpn
