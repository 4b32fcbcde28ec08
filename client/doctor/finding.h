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

// What is looked at once, for all checks.
struct Patient {
  ServicePlace place;
  InstalledService installed;
  bool hasProcess = false;  // one of the service runs
  ExchangeEnd end = ExchangeEnd::kAbsent;
  Reply reply;                   // for kReplied
  std::uint64_t answerTime = 0;  // milliseconds

  bool isUp() const { return end == ExchangeEnd::kReplied && reply.running; }
};

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_FINDING_H_
