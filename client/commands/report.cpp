// One Markdown file for support, without a secret in it.
#include <windows.h>

#include <algorithm>
#include <utility>

#include "client/commands/commands.h"
#include "client/console/moving_line.h"
#include "client/doctor/checks.h"
#include "client/doctor/file_look.h"
#include "client/exit_codes.h"
#include "client/report/secrets.h"
#include "client/report/whole_file.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/trace/trace_file.h"
#include "client/trace/waterfall.h"
#include "src/common/deployment.h"
#include "src/common/text.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr size_t kLogLines = 200;
constexpr size_t kConnects = 20;
constexpr std::uint64_t kLogTail = 256 << 10;  // bytes; far more than that many lines
constexpr size_t kRowWidth = 100;

std::string Fenced(const std::string& text) {
  return "```text\n" + text + (text.ends_with('\n') ? "" : "\n") + "```\n\n";
}

std::wstring TwoDigits(WORD value) {
  return (value < 10 ? L"0" : L"") + std::to_wstring(value);
}

std::wstring Now() {
  SYSTEMTIME time = {};
  GetSystemTime(&time);
  return std::to_wstring(time.wYear) + L"-" + TwoDigits(time.wMonth) + L"-" + TwoDigits(time.wDay) +
         L" " + TwoDigits(time.wHour) + L":" + TwoDigits(time.wMinute) + L" UTC";
}

std::string Head(const Patient& patient) {
  const std::wstring version = FileVersion(patient.place.directory + L"\\TavrinService.exe");
  return "# Tavrin: report for support\n\n" + WideToUtf8(Now()) + ", tavrinctl " +
         WideToUtf8(kProductVersion) + ", service " +
         (version.empty() ? "of unknown version" : WideToUtf8(version)) + "\n\n";
}

const wchar_t* MarkOf(Verdict verdict) {
  return verdict == Verdict::kGood ? L"✓ " : verdict == Verdict::kRemark ? L"! " : L"✗ ";
}

std::string DoctorSection(const Patient& patient, MovingLine& moving) {
  std::wstring text;
  for (const Check& check : AllChecks()) {
    moving.show(std::wstring(L"… ") + check.title);
    const Finding finding = check.run(patient);
    text += MarkOf(finding.verdict) + PadRight(check.title, 19) + PlainLine(finding.text) + L"\n";
    text += finding.whatToDo.empty() ? L"" : L"    " + PlainLine(finding.whatToDo) + L".\n";
  }
  return "## Doctor\n\n" + Fenced(WideToUtf8(text));
}

// The last lines of a text.
std::string LastLines(const std::string& text, size_t count) {
  size_t at = text.size();
  for (size_t lines = 0; at > 0; --at) {
    if (text[at - 1] == '\n' && at < text.size() && ++lines == count) {
      break;
    }
  }
  return text.substr(at);
}

std::string LogSection(const Patient& patient) {
  FileTail tail;
  const std::wstring path = patient.place.runtimeDir + L"\\" + kServiceLogFile;
  if (!ReadFileTail(path, kLogTail, tail)) {
    return "## Service log\n\nIt can't be read.\n\n";
  }
  return "## Service log, the last " + std::to_string(kLogLines) + " lines\n\n" +
         Fenced(LastLines(tail.text, kLogLines));
}

std::string OneConnect(const ConnectTrace& connect, size_t number, const StepMedians& before) {
  std::wstring text = L"Connect " + std::to_wstring(number) + L", " +
                      (connect.isComplete() ? L"complete, " : L"not complete, ") +
                      SecondsText(connect.totalTime()) + L"\n";
  for (const WaterfallRow& row : DrawWaterfall(connect, before.times(), kRowWidth)) {
    text += L"  " + row.text + L"\n";
  }
  return WideToUtf8(text);
}

std::string TraceSection(const Patient& patient) {
  FileTail tail;
  if (!ReadFileTail(TracePath(patient.place.directory), kTraceLimit, tail)) {
    return "## Connects\n\nThe trace can't be read.\n\n";
  }
  const std::vector<ConnectTrace> connects = ParseTrace(std::move(tail.text), tail.isCut).connects;
  const size_t first = connects.size() - std::min(connects.size(), kConnects);
  std::string text;
  StepMedians before;
  for (size_t at = 0; at < connects.size(); ++at) {
    if (at >= first) {
      text += OneConnect(connects[at], at + 1, before);
    }
    before.add(connects[at]);
  }
  return "## Connects, the last " + std::to_string(kConnects) + "\n\n" +
         (text.empty() ? "None.\n\n" : Fenced(text));
}

std::string ConfigurationSection(const Patient& patient) {
  std::string text;
  if (!ReadFileFrom(patient.place.runtimeDir + L"\\" + kXrayConfigFile, 0, kMostSettings, text)) {
    return "## Generated configuration\n\nIt can't be read.\n\n";
  }
  return "## Generated configuration, its values masked\n\n" + Fenced(ShapeOfJson(text));
}

std::vector<std::string> AllSecrets(const Patient& patient) {
  std::vector<std::string> all;
  for (const wchar_t* name : {kAccountFile, kCredentialFile, kXrayConfigFile}) {
    std::string text;
    if (ReadFileFrom(patient.place.runtimeDir + L"\\" + name, 0, kMostSettings, text)) {
      const std::vector<std::string> secrets = SecretsIn(text);
      all.insert(all.end(), secrets.begin(), secrets.end());
    }
  }
  return all;
}

}  // namespace

int RunReport(const CommandLine& line, Screen& screen) {
  const Patient patient = ExaminePatient(line.runtimeDir);
  MovingLine moving(screen.err);
  const std::string report = Head(patient) + DoctorSection(patient, moving) + LogSection(patient) +
                             TraceSection(patient) + ConfigurationSection(patient);
  moving.clear();
  if (!WriteWholeFile(line.file, Scrub(report, AllSecrets(patient)))) {
    screen.err.line(L"The report can't be written: " + line.file);
    screen.err.line(
        L"  What to do: name a file in a directory of your own, on a disk with room for it.");
    return kExitRefused;
  }
  screen.out.line(L"Written to " + line.file + L". Passwords, keys and tokens are left out.");
  return kExitDone;
}

}  // namespace vpn
