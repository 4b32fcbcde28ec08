#ifndef TAVRIN_SRC_COMMON_STATUS_H_
#define TAVRIN_SRC_COMMON_STATUS_H_

#include <string>
#include <utility>

namespace vpn {

// How an operation ends whose failure the user may read about: success, or one line of text.
class [[nodiscard]] Status {
 public:
  static Status success() { return {}; }
  static Status failure(std::wstring text) {
    Status status;
    status.failed_ = true;
    status.text_ = std::move(text);
    return status;
  }

  // True for success.
  explicit operator bool() const { return !failed_; }

  // What the user reads; empty on success.
  const std::wstring& text() const { return text_; }

  // The result of `next`, which is called after a success only.
  template <class Next>
  Status andThen(Next next) const {
    return failed_ ? *this : next();
  }

 private:
  bool failed_ = false;
  std::wstring text_;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_COMMON_STATUS_H_
