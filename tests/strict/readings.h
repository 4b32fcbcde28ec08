// One value of a JSON text, read twice: by a strict parser and by one of the product's scanners.
// The two differ by design; here each difference has a class, which is told from the text alone.
#ifndef TAVRIN_TESTS_STRICT_READINGS_H_
#define TAVRIN_TESTS_STRICT_READINGS_H_

#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tests/strict/json_tokens.h"

namespace strict {

enum class Reader {
  kRequestField,    // the pipe's requests
  kFlatJsonString,  // account.json
  kFlatJsonInt,     // account.json
  kJsonString,      // the panel's texts, here and below
  kJsonInt,
  kJsonOptionalInt,
  kJsonBool,
  kJsonObject,
  kJsonObjectArray,
  kJsonNumberArray,
  kParseExpiredAt,  // its key is always expired_at
};
constexpr size_t kReaders = 11;

enum class Class {
  // Where the value is looked for.
  kNestedKey,      // the key stands first inside another value, or only there
  kKeyAsValue,     // a text that is the key stands first
  kTailOfAString,  // a text that ends in a quote and the key stands first
  kFirstOfTwo,     // the key stands there twice: the scanner takes the first, the parser the last
  kEscapedKey,     // the key is written with an escape: the scanner does not see it
  kDataStandsIn,   // the key is not there: the array of the key `data` is read
  // How it is read.
  kLineBreak,        // a line break between colon and value, where only blanks are passed over
  kEscape,           // an escape that the scanner does not know
  kEndsInBackslash,  // a text that ends in a backslash runs on behind its quote
  kNoStringRunsOn,   // no text is there: the next one in the file is read
  kQuotedNumber,     // a text is read as the number at its front
  kNoNumberIsZero,   // something else than a number is 0, and not missing
  kFraction,         // a fraction is cut off, an exponent is not understood
  kBeyondRange,      // a number that the type does not hold
  kThroughADouble,   // a number above 2^53 is rounded, and the lowest one beyond 64 bits
  kNumberAsFlag,     // a number other than 0 is true
  kBracketInString,  // brackets inside texts are counted too
  kRunsOnToBracket,  // no object or array is there: the next one is read
  kNestedArray,      // the objects of an array in the array are read too
  kDigitsAnywhere,   // digits are read out of every element, to the first closing bracket
};
constexpr size_t kClasses = 20;

// Of the class, as documents and tests call it.
const char* Name(Class difference);

// A text that a strict parser accepts.
struct Document {
  explicit Document(std::string json);

  std::string text;
  nlohmann::json parsed;  // of two equal keys the last one counts
  std::vector<Token> tokens;
};

// Both in words: a text as it stands, a number in decimals, `true`, `false`, `none`, `fallback`, or
// objects and arrays as a parser writes them again.
std::string Scanned(Reader reader, const Document& document, const std::string& key);
std::string Parsed(Reader reader, const Document& document, const std::string& key);

// The class of the difference between the two, told from the text; none where they must be equal.
// (Where there is a class, the two can be equal by chance.)
std::optional<Class> ClassOf(Reader reader, const Document& document, const std::string& key);

// The part of ClassOf for a value that both look for at one place: `key` is its key's token.
std::optional<Class> ValueClass(Reader reader, const Document& document, const Token& key);

}  // namespace strict

#endif  // TAVRIN_TESTS_STRICT_READINGS_H_
