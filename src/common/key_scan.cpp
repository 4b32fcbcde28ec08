#include "src/common/key_scan.h"

#include <algorithm>
#include <string>

namespace vpn {

size_t FindBehindKey(std::string_view text, std::string_view key) {
  const std::string needle = '"' + std::string(key) + '"';
  const size_t at = text.find(needle);
  return at == std::string_view::npos ? at : at + needle.size();
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
  return std::min(text.find_first_not_of(skipped, from), text.size());
}

}  // namespace vpn
