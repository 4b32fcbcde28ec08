#include "tests/strict/json_tokens.h"

#include <nlohmann/json.hpp>

namespace strict {
namespace {

class Tokenizer {
 public:
  explicit Tokenizer(std::string_view text) : text_(text) {}

  std::vector<Token> Run() {
    while (Skip(" \t\r\n:,") < text_.size()) {
      Take(text_[at_]);
    }
    return std::move(tokens_);
  }

 private:
  size_t Skip(std::string_view bytes) {
    at_ = std::min(text_.find_first_not_of(bytes, at_), text_.size());
    return at_;
  }

  void Take(char first) {
    if (first == '}' || first == ']') {
      tokens_[open_.back()].end = ++at_;
      open_.pop_back();
      return;
    }
    tokens_.push_back({.begin = at_, .depth = open_.size()});
    Token& token = tokens_.back();
    if (first == '{' || first == '[') {
      token.kind = first == '{' ? Kind::kObject : Kind::kArray;
      open_.push_back(tokens_.size() - 1);
      ++at_;
      return;
    }
    if (first == '"') {
      SkipString();
      const size_t next = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
      token.kind = next < text_.size() && text_[next] == ':' ? Kind::kKey : Kind::kString;
    } else {
      at_ = std::min(text_.find_first_of(" \t\r\n,]}", at_), text_.size());
      token.kind = first == 't'   ? Kind::kTrue
                   : first == 'f' ? Kind::kFalse
                   : first == 'n' ? Kind::kNull
                                  : Kind::kNumber;
    }
    token.end = at_;
  }

  void SkipString() {
    for (++at_; text_[at_] != '"'; ++at_) {
      at_ += text_[at_] == '\\' ? 1 : 0;
    }
    ++at_;
  }

  std::string_view text_;
  size_t at_ = 0;
  std::vector<Token> tokens_;
  std::vector<size_t> open_;  // the objects and arrays around, by their places in `tokens_`
};

}  // namespace

std::vector<Token> Tokens(std::string_view text) {
  return Tokenizer(text).Run();
}

std::string Decoded(std::string_view text, const Token& token) {
  return nlohmann::json::parse(Raw(text, token)).get<std::string>();
}

std::string_view Raw(std::string_view text, const Token& token) {
  return text.substr(token.begin, token.end - token.begin);
}

}  // namespace strict
