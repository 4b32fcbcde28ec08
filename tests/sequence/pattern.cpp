#include "tests/sequence/pattern.h"

#include <cstdio>
#include <cstdlib>

namespace sequence {

Pattern::Pattern(const std::string& expression) {
  const std::string whole = "^(" + expression + ")$";
  if (regcomp(&compiled_, whole.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
    std::fprintf(stderr, "not a regular expression: %s\n", whole.c_str());
    std::abort();
  }
}

Pattern::~Pattern() {
  regfree(&compiled_);
}

bool Pattern::Matches(const std::string& text) const {
  return regexec(&compiled_, text.c_str(), 0, nullptr, 0) == 0;
}

}  // namespace sequence
