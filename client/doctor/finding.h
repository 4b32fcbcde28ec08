// What one check of the doctor found.
#ifndef TAVRIN_CLIENT_DOCTOR_FINDING_H_
#define TAVRIN_CLIENT_DOCTOR_FINDING_H_

#include <cstdint>
#include <string>

#include "client/pipe/exchange.h"
#include "client/pipe/requests.h"
#include "client/service/presence.h"

namespace vpn {

enum class Verdict {
  kGood,
  kRemark,   // works, and should be looked at; also what could not be found out
  kProblem,  // a connect fails with it, or will
};

struct Finding {
  Verdict verdict = Verdict::kGood;
  std::wstring text;
  std::wstring whatToDo;  // empty for a good one
};

inline Finding Good(std::wstring text) {
  return {Verdict::kGood, std::move(text), {}};
}
inline Finding Remark(std::wstring text, std::wstring whatToDo) {
  return {Verdict::kRemark, std::move(text), std::move(whatToDo)};
}
inline Finding Problem(std::wstring text, std::wstring whatToDo) {
  return {Verdict::kProblem, std::move(text), std::move(whatToDo)};
}

inline constexpr wchar_t kAskAgain[] = L"wait until the service answers, then run this again";

// What is looked at once, for all checks.
struct Patient {
  ServicePlace place;
  InstalledService installed;
  bool isSurelyAbsent = false;  // no pipe, no process, and the service manager knows of none
  ExchangeEnd end = ExchangeEnd::kAbsent;
  Reply reply;                   // for kReplied
  std::uint64_t answerTime = 0;  // milliseconds

  bool isUp() const { return end == ExchangeEnd::kReplied && reply.running; }
  // False: a tunnel may be up, or a connect under way, without the service saying so.
  bool isStateKnown() const { return end == ExchangeEnd::kReplied || isSurelyAbsent; }
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_FINDING_H_
