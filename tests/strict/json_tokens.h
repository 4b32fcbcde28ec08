// The keys and values of a JSON text with the places where they stand, which a parser does not
// tell.
#ifndef TAVRIN_TESTS_STRICT_JSON_TOKENS_H_
#define TAVRIN_TESTS_STRICT_JSON_TOKENS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace strict {

enum class Kind { kKey, kString, kNumber, kTrue, kFalse, kNull, kObject, kArray };

struct Token {
  Kind kind = Kind::kNull;
  size_t begin = 0;
  size_t end = 0;    // behind the last byte; an object's and an array's is behind its bracket
  size_t depth = 0;  // the number of objects and arrays around it
};

// In the order in which they begin, so that a key's value is the token behind it. `text` is JSON,
// as a strict parser has found.
std::vector<Token> Tokens(std::string_view text);

// The text of a key or a string.
std::string Decoded(std::string_view text, const Token& token);

// The bytes of a token as they stand.
std::string_view Raw(std::string_view text, const Token& token);

}  // namespace strict

#endif  // TAVRIN_TESTS_STRICT_JSON_TOKENS_H_
