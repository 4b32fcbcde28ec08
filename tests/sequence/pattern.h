// A POSIX extended regular expression that stands for whole texts.
#ifndef TAVRIN_TESTS_SEQUENCE_PATTERN_H_
#define TAVRIN_TESTS_SEQUENCE_PATTERN_H_

#include <regex.h>

#include <string>

namespace sequence {

class Pattern {
 public:
  // Ends the program when the expression is none.
  explicit Pattern(const std::string& expression);
  ~Pattern();
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  bool Matches(const std::string& text) const;

 private:
  regex_t compiled_{};
};

}  // namespace sequence

#endif  // TAVRIN_TESTS_SEQUENCE_PATTERN_H_
