// The texts of requests to the panel: JSON bodies and percent-encoded values.
#ifndef TAVRIN_SRC_PANEL_REQUEST_TEXT_H_
#define TAVRIN_SRC_PANEL_REQUEST_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace vpn {

// Writes one flat object: the fields in the order of the calls, without blanks.
class JsonBody {
 public:
  JsonBody& addText(std::string_view key, std::wstring_view text);
  JsonBody& addUtf8(std::string_view key, std::string_view text);
  JsonBody& addNumber(std::string_view key, std::int64_t number);
  std::string str() const { return "{" + fields_ + "}"; }

 private:
  JsonBody& addRaw(std::string_view key, const std::string& value);
  std::string fields_;
};

// Double quote, backslash and line feed only: enough for the short values of these bodies.
std::string JsonEscape(std::string_view text);

// Letters, digits and "-._@" stay; every other byte becomes %XX.
std::string UrlEncode(std::string_view bytes);

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_REQUEST_TEXT_H_
