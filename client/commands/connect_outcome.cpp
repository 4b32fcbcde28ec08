#include "client/commands/connect_outcome.h"

#include "client/advice/advice.h"
#include "client/commands/asking.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/report/secrets.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"
#include "client/trace/steps.h"
#include "client/trace/trace_file.h"
#include "client/trace/trace_json.h"
#include "src/common/files.h"
#include "src/common/text.h"
#include "src/runtime/runtime_files.h"

namespace vpn {
namespace {

constexpr size_t kXrayStep = 5;
constexpr std::uint64_t kXrayWords = 64 << 10;  // bytes of Xray's log that are looked at

// The last line that Xray has written since the log had `before` bytes, empty when there is none.
// Xray quotes what it refuses, and that may be a key of the configuration.
std::wstring LastXrayLine(const std::wstring& runtimeDir, std::uint64_t before) {
  std::string text;
  if (!ReadFileEnd(runtimeDir + L"\\" + kXrayErrorLog, before, kXrayWords, text)) {
    return {};
  }
  text.erase(text.find_last_not_of("\r\n") + 1);
  std::string config;
  (void)ReadFileBytes(runtimeDir + L"\\" + kXrayConfigFile,
                      config);                                 // without one it quotes nothing
  const std::string line = text.substr(text.rfind('\n') + 1);  // npos + 1 is 0
  return PlainLine(Utf8ToWide(Scrub(line, SecretsIn(config))));
}

// True when Xray's own words explain the failure: it was started, and did not come to listen.
bool FailedAtXray(const ConnectTrace* connect) {
  return connect != nullptr && NextStep(StepsOf(*connect)) == kXrayStep;
}

Json OutcomeObject(const ConnectPlan& plan, const ConnectOutcome& outcome,
                   const ConnectTrace* connect) {
  Json object = NewJson();
  PutFlag(object, "reachable", true);
  PutFlag(object, "ok", outcome.reply.ok);
  PutFlag(object, "running", outcome.reply.running);
  PutText(object, "error", outcome.reply.error);
  PutText(object, "whatToDo", outcome.reply.ok ? L"" : WhatToDo(outcome.reply.error));
  PutNumber(object, "milliseconds", static_cast<std::int64_t>(outcome.time));
  if (plan.isKnown) {
    Json& node = PutObject(object, "node");
    PutText(node, "name", plan.node.name);
    PutText(node, "address", plan.node.address);
    PutNumber(node, "port", plan.node.port);
  }
  Json& trace = PutObject(object, "trace");
  if (connect != nullptr) {
    FillTrace(*connect, trace);
  }
  return object;
}

void TellFailure(const ConnectPlan& plan, const ConnectOutcome& outcome,
                 const ConnectTrace* connect, Screen& screen) {
  screen.err.line(PlainLine(outcome.reply.error), Ink::kBad);
  if (FailedAtXray(connect)) {
    const std::wstring words = LastXrayLine(plan.place.runtimeDir, outcome.xrayLogSize);
    screen.err.line(words.empty() ? L"  Xray has written nothing into xray-error.log."
                                  : L"  Xray's own words (xray-error.log): " + words);
  }
  screen.err.paragraph(L"  What to do: " + WhatToDo(outcome.reply.error) + L".", 14);
  if (outcome.reply.running) {
    screen.err.line(L"The tunnel from before is still up.");
  }
}

// A service that hung up may have died; one that was left alone goes on.
int TellNoReply(const CommandLine& line, const ConnectOutcome& outcome, Screen& screen) {
  const int exitCode = FailWithoutReply(outcome.end, line.json, screen);
  const bool wasLeftAlone =
      outcome.end == ExchangeEnd::kInterrupted || outcome.end == ExchangeEnd::kTimedOut;
  if (outcome.wasSent && wasLeftAlone) {
    screen.err.line(L"The service goes on with the connect.");
  }
  return exitCode;
}

}  // namespace

bool FailedInChecks(const std::wstring& error) {
  FoundAdvice advice;
  return FindAdvice(error, advice) && advice.place == FailurePlace::kChecks;
}

int TellOutcome(const CommandLine& line, const ConnectPlan& plan, const ConnectOutcome& outcome,
                const ConnectTrace* connect, Screen& screen) {
  if (outcome.end != ExchangeEnd::kReplied) {
    return TellNoReply(line, outcome, screen);
  }
  if (line.json) {
    screen.out.write(JsonText(OutcomeObject(plan, outcome, connect)));
  }
  if (!outcome.reply.ok) {
    TellFailure(plan, outcome, connect, screen);
    return kExitRefused;
  }
  if (!line.json && !line.quiet) {
    screen.out.line(L"Connected in " + SecondsText(outcome.time) + L".", Ink::kGood);
  }
  return kExitDone;
}

int TellUnknownNode(const CommandLine& line, const std::wstring& nearest, Screen& screen) {
  const std::wstring sentence = L"No node is called \"" + PlainLine(line.node) + L"\".";
  const std::wstring whatToDo = L"choose one that tavrinctl nodes shows";
  if (line.json) {
    Json object = NewJson();
    PutFlag(object, "ok", false);
    PutUtf8(object, "reason", "unknown node");
    PutText(object, "error", sentence);
    PutNull(object, "didYouMean");
    if (!nearest.empty()) {
      PutText(object, "didYouMean", nearest);
    }
    PutText(object, "whatToDo", whatToDo);
    screen.out.write(JsonText(object));
  }
  screen.err.line(sentence +
                  (nearest.empty() ? L"" : L" Did you mean \"" + PlainLine(nearest) + L"\"?"));
  screen.err.line(L"  What to do: " + whatToDo + L".");
  return kExitRefused;
}

}  // namespace vpn
