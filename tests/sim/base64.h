// Base64 as the platform's own decoder reads it.
#ifndef TAVRIN_TESTS_SIM_BASE64_H_
#define TAVRIN_TESTS_SIM_BASE64_H_

#include <string>
#include <string_view>

namespace sim {

// Blanks, tabs and line ends count for nothing. Padding may be missing altogether, and what is
// missing of a last byte reads as zero bits; where there is some, it must fill up the group of
// four, and everything behind it is ignored. False for any other byte; `bytes` then holds what came
// before it.
bool DecodeBase64(std::string_view text, std::string* bytes);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_BASE64_H_
