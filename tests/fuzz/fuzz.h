// What the fuzz targets share. A target takes any bytes, hands them to the product, and says what
// must hold of the result; the sanitizers watch the rest.
#ifndef TAVRIN_TESTS_FUZZ_FUZZ_H_
#define TAVRIN_TESTS_FUZZ_FUZZ_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tests/sim/machine.h"

namespace fuzz {

// Ends the run with the claim that does not hold, so that the fuzzer keeps the input.
void Require(bool holds, const char* claim);

std::string_view Bytes(const std::uint8_t* data, size_t size);

// Cuts the front of `text` off, up to the first `mark`; the mark goes too.
std::string_view TakeUntil(std::string_view& text, char mark);

// UTF-8, in which the byte 0xFE stands before two bytes that are one 16-bit unit as it is, so that
// lone surrogates, NULs and line feeds can be had too.
std::wstring Wide(std::string_view text);

// UTF-8 of 16-bit units by the standard's own rules; an unpaired surrogate becomes U+FFFD.
std::string Utf8(std::wstring_view units);

// %XX for every byte.
std::string PercentEncode(std::string_view bytes);

std::string Base64(std::string_view bytes);

// A machine is too dear for each execution, and remembers too much to be kept for good.
class SharedMachine {
 public:
  // The machine of this execution; `prepare` runs on every new one.
  template <class Prepare>
  sim::Machine& Get(const Prepare& prepare) {
    constexpr unsigned kExecutions = 1024;
    if (used_++ % kExecutions == 0) {
      machine_.reset();
      machine_.emplace();
      prepare(**machine_);
    }
    (*machine_)->calls.Clear();
    return **machine_;
  }

 private:
  std::optional<sim::InstalledMachine> machine_;
  unsigned used_ = 0;
};

}  // namespace fuzz

#endif  // TAVRIN_TESTS_FUZZ_FUZZ_H_
