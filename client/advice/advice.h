// What to do for each text of the service. docs/operations.md shows this table.
#ifndef TAVRIN_CLIENT_ADVICE_ADVICE_H_
#define TAVRIN_CLIENT_ADVICE_ADVICE_H_

#include <string>
#include <utility>
#include <vector>

namespace vpn {

// Where a connect fails with a text. The checks stand between two steps of the trace and have no
// mark of their own.
enum class FailurePlace { kElsewhere, kChecks };

// Words in braces stand for a value, in both texts for the same one.
struct Advice {
  const wchar_t* pattern;
  const wchar_t* whatToDo;
  FailurePlace place;
};

std::vector<Advice> AllAdvice();

struct FoundAdvice {
  std::wstring whatToDo;
  FailurePlace place = FailurePlace::kElsewhere;
};

// False for a text that is none of the service's.
bool FindAdvice(const std::wstring& text, FoundAdvice& found);

// Never empty.
std::wstring WhatToDo(const std::wstring& text);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ADVICE_ADVICE_H_
