// The commands that are one exchange and nothing else.
#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "src/common/text.h"

namespace vpn {
namespace {

int RunOne(const char* request, const wchar_t* done, bool json, Screen& screen) {
  Reply reply;
  const ExchangeEnd end = AskPatiently(request, screen, reply);
  if (end != ExchangeEnd::kReplied) {
    return FailWithoutReply(end, json, screen);
  }
  if (json) {
    Json object = NewJson();
    PutFlag(object, "reachable", true);
    PutFlag(object, "ok", reply.ok);
    PutFlag(object, "running", reply.running);
    PutText(object, "error", reply.error);
    screen.out.write(JsonText(object));
  }
  if (!reply.ok) {
    TellRefusal(reply.error, screen);
    return kExitRefused;
  }
  if (!json) {
    screen.out.line(done);
  }
  return kExitDone;
}

}  // namespace

int RunDisconnect(const CommandLine& line, Screen& screen) {
  return RunOne(kDisconnectRequest, L"Disconnected.", line.json, screen);
}

int RunShutdown(const CommandLine& line, Screen& screen) {
  return RunOne(kShutdownRequest,
                L"The tunnel is down. The process ends too, unless it is a Windows service.",
                line.json, screen);
}

int RunRequest(const CommandLine& line, Screen& screen) {
  const InterruptWatch interrupt;
  MovingLine moving(screen.err);
  std::string text;
  const ExchangeEnd end =
      Exchange(WideToUtf8(line.text), PatientHooks(moving, screen.err, interrupt), text);
  if (end != ExchangeEnd::kReplied) {
    return FailWithoutReply(end, false, screen);
  }
  screen.out.writeBytes(text + "\n");
  Reply reply;
  if (!ParseReply(text, reply)) {
    return FailWithoutReply(ExchangeEnd::kBroken, false, screen);
  }
  return reply.ok ? kExitDone : kExitRefused;
}

}  // namespace vpn
