// The scanners beside a strict parser, on JSON that is valid: what they read differs in the ways
// that tests/strict/ names, and in no other. The input's first byte chooses the key, the others a
// text.
#include <array>
#include <cstdio>

#include "tests/fuzz/fuzz.h"
#include "tests/strict/readings.h"

using fuzz::Require;

namespace {

constexpr std::array<const char*, 8> kKeys = {"op",   "node", "data", "id",
                                              "name", "port", "k",    "expired_at"};

// Writes a JSON text by the choices of the input's bytes; all of them are 0 behind its end.
class Writer {
 public:
  explicit Writer(std::string_view input) : input_(input) {}

  std::string Key() { return kKeys.at(Choose(kKeys.size())); }

  std::string Whole() {
    if (Choose(8) == 7) {
      Value(0);
    } else {
      Object(0);
    }
    return text_;
  }

 private:
  static constexpr size_t kDeepest = 4;

  size_t Choose(size_t count) {
    if (input_.empty()) {
      return 0;
    }
    const size_t byte = static_cast<unsigned char>(input_.front());
    input_.remove_prefix(1);
    return byte % count;
  }

  template <size_t count>
  void OneOf(const std::array<const char*, count>& pieces) {
    text_ += pieces.at(Choose(count));
  }

  void Blanks() { OneOf(std::array{"", "", "", "", " ", " ", "\t", "\n", "\r\n  ", " \t "}); }

  void Value(size_t depth) {
    switch (Choose(depth < kDeepest ? 13 : 10)) {
      case 0:
      case 1:
      case 2:
      case 3:
        return String();
      case 4:
      case 5:
      case 6:
        return Number();
      case 7:
        text_ += "null";
        return;
      case 8:
        text_ += "true";
        return;
      case 9:
        text_ += "false";
        return;
      case 10:
      case 11:
        return Object(depth);
      default:
        return Array(depth);
    }
  }

  void Object(size_t depth) {
    text_ += '{';
    const size_t members = Choose(5);
    for (size_t i = 0; i < members; ++i) {
      text_ += i > 0 ? "," : "";
      Blanks();
      MemberKey();
      Blanks();
      text_ += ':';
      Blanks();
      Value(depth + 1);
      Blanks();
    }
    text_ += '}';
  }

  void Array(size_t depth) {
    text_ += '[';
    const size_t elements = Choose(5);
    for (size_t i = 0; i < elements; ++i) {
      text_ += i > 0 ? "," : "";
      Blanks();
      Value(depth + 1);
      Blanks();
    }
    text_ += ']';
  }

  void MemberKey() {
    const size_t form = Choose(16);
    const std::string key = Key();
    if (form == 14) {
      return String();
    }
    if (form < 15) {
      text_ += '"' + key + '"';
      return;
    }
    std::array<char, 8> first{};
    std::snprintf(first.data(), first.size(), "\\u%04x", static_cast<unsigned>(key.front()));
    text_ += '"' + std::string(first.data()) + key.substr(1) + '"';
  }

  void String() {
    text_ += '"';
    const size_t pieces = Choose(4);
    for (size_t i = 0; i < pieces; ++i) {
      if (Choose(3) == 0) {
        text_ += Key();
        continue;
      }
      OneOf(std::array{"\\\"",     "\\\\",    "\\/",        "\\n",        "\\t",
                       "\\b",      "\\f",     "\\r",        "\\u4e2d",    "\\ud83d\\ude00",
                       "\\u0000",  "\\u0022", "\\u005C",    "{",          "}",
                       "[",        "]",       ":",          ",",          "42",
                       "-7",       " ",       "2027-03-01", "1700000000", "\xE4\xB8\xAD",
                       "null",     "true",    "a",          "x:y",        "\\\"op",
                       "\\\\\\\"k"});
    }
    text_ += '"';
  }

  void Number() {
    OneOf(std::array{"0",
                     "-0",
                     "7",
                     "-7",
                     "42",
                     "1.9",
                     "-0.5",
                     "1e3",
                     "2E+2",
                     "5e-1",
                     "2147483647",
                     "2147483648",
                     "-2147483649",
                     "4294967297",
                     "1700000000",
                     "1700000000000",
                     "9007199254740992",
                     "9007199254740993",
                     "-9007199254740993",
                     "9223372036854775807",
                     "9223372036854775808",
                     "-9223372036854775808",
                     "-9223372036854775809",
                     "18446744073709551615",
                     "18446744073709551616",
                     "123456789012345678901234567890"});
  }

  std::string_view input_;
  std::string text_;
};

// How often each class was met, told when the run ends.
class Tally {
 public:
  ~Tally() {
    for (size_t i = 0; i < counts_.size(); ++i) {
      std::fprintf(stderr, "differences, %-18s %lu\n", strict::Name(static_cast<strict::Class>(i)),
                   counts_[i]);
    }
  }
  void Count(strict::Class difference) { ++counts_.at(static_cast<size_t>(difference)); }

 private:
  std::array<unsigned long, strict::kClasses> counts_{};
};

void Compare(strict::Reader reader, const strict::Document& document, const std::string& key) {
  static Tally tally;
  const std::string scanned = strict::Scanned(reader, document, key);
  const std::string parsed = strict::Parsed(reader, document, key);
  if (scanned == parsed) {
    return;
  }
  const std::optional<strict::Class> difference = strict::ClassOf(reader, document, key);
  if (!difference) {
    std::fprintf(stderr, "reader %d, key %s:\n%s\nscanned: %s\nparsed:  %s\n",
                 static_cast<int>(reader), key.c_str(), document.text.c_str(), scanned.c_str(),
                 parsed.c_str());
  }
  Require(difference.has_value(), "what is read otherwise has a name for that");
  tally.Count(*difference);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  static fuzz::SharedMachine machine;
  (void)machine.Get([](sim::Machine&) {});
  Writer writer(fuzz::Bytes(data, size));
  const std::string key = writer.Key();
  const std::string text = writer.Whole();
  Require(nlohmann::json::accept(text), "what is written is JSON");
  const strict::Document document(text);
  for (size_t i = 0; i < strict::kReaders; ++i) {
    const auto reader = static_cast<strict::Reader>(i);
    Compare(reader, document, reader == strict::Reader::kParseExpiredAt ? "expired_at" : key);
  }
  return 0;
}
