#include "client/commands/commands.h"
#include "client/console/moving_line.h"
#include "client/doctor/checks.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr size_t kTitleWidth = 19;

struct Tally {
  std::uint64_t problems = 0;
  std::uint64_t remarks = 0;
};

void Count(const Finding& finding, Tally& tally) {
  tally.problems += finding.verdict == Verdict::kProblem ? 1 : 0;
  tally.remarks += finding.verdict == Verdict::kRemark ? 1 : 0;
}

const char* VerdictWord(Verdict verdict) {
  switch (verdict) {
    case Verdict::kGood:
      return "good";
    case Verdict::kRemark:
      return "remark";
    default:
      return "problem";
  }
}

void ShowMark(Verdict verdict, Output& out) {
  switch (verdict) {
    case Verdict::kGood:
      out.write(L"✓", Ink::kGood);
      break;
    case Verdict::kRemark:
      out.write(L"!", Ink::kCaution);
      break;
    default:
      out.write(L"✗", Ink::kBad);
  }
}

void ShowFinding(const Check& check, const Finding& finding, Output& out) {
  ShowMark(finding.verdict, out);
  out.line(L" " + PadRight(check.title, kTitleWidth) + PlainLine(finding.text));
  if (!finding.whatToDo.empty()) {
    out.paragraph(L"    " + PlainLine(finding.whatToDo) + L".", 4);
  }
}

void AppendFinding(Json& findings, const Check& check, const Finding& finding) {
  Json& object = AppendObject(findings);
  PutUtf8(object, "check", check.key);
  PutUtf8(object, "verdict", VerdictWord(finding.verdict));
  PutText(object, "text", finding.text);
  PutText(object, "whatToDo", finding.whatToDo);
}

std::wstring Sum(const Tally& tally) {
  if (tally.problems == 0 && tally.remarks == 0) {
    return L"Everything is as it should be.";
  }
  return CountText(tally.problems, L"problem", L"problems") + L", " +
         CountText(tally.remarks, L"remark", L"remarks") + L".";
}

}  // namespace

int RunDoctor(const CommandLine& line, Screen& screen) {
  Tally tally;
  Json findings = Json::array();
  const Patient patient = ExaminePatient(line.runtimeDir);
  for (const Check& check : AllChecks()) {
    MovingLine moving(screen.err);
    moving.show(std::wstring(L"… ") + check.title);
    const Finding finding = check.run(patient);
    moving.clear();
    Count(finding, tally);
    if (line.json) {
      AppendFinding(findings, check, finding);
    } else {
      ShowFinding(check, finding, screen.out);
    }
  }
  if (line.json) {
    Json object = NewJson();
    PutNumber(object, "problems", static_cast<std::int64_t>(tally.problems));
    PutNumber(object, "remarks", static_cast<std::int64_t>(tally.remarks));
    PutList(object, "findings").swap(findings);
    screen.out.write(JsonText(object));
  } else {
    screen.out.line(Sum(tally));
  }
  return tally.problems == 0 ? kExitDone : kExitRefused;
}

}  // namespace vpn
