#include "client/commands/asking.h"

#include "client/advice/advice.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/service/presence.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr std::uint64_t kWorthTelling = 500;   // milliseconds of being busy
constexpr std::uint64_t kReplyLimit = 60'000;  // milliseconds; a stop is bounded by half of them

NoReply DescribeAbsence() {
  const InstalledService installed = FindInstalledService();
  if (!installed.isReadable) {
    return {"absent",
            L"The service is not running, and the service manager tells nothing about it.",
            L"run this with administrator's rights"};
  }
  if (!installed.isInstalled) {
    return {"absent", L"The service is not running, and it is not installed.",
            L"run TavrinService.exe --install with administrator's rights"};
  }
  return {"absent", L"The service is installed, but it is not running.",
          L"run \"sc start TavrinService\" with administrator's rights"};
}

// A hook that says why it is waited: in a line that moves, else once.
std::function<void(std::uint64_t)> TellWaiting(const wchar_t* why, MovingLine& moving,
                                               Output& err) {
  return [&moving, &err, why, told = false](std::uint64_t waited) mutable {
    if (waited < kWorthTelling) {
      return;
    }
    if (!err.isLively() && !told) {
      err.line(std::wstring(why) + L"; waiting.");
    }
    told = true;
    moving.show(std::wstring(1, WheelAt(waited)) + L" " + why + L"; waiting … (" +
                DurationText(waited / 1000) + L")");
  };
}

}  // namespace

ExchangeHooks PatientHooks(MovingLine& moving, Output& err, const InterruptWatch& interrupt) {
  ExchangeHooks hooks;
  hooks.whileBusy = TellWaiting(L"The service is busy with another client", moving, err);
  hooks.whileNoPipe = TellWaiting(L"The service has no pipe yet", moving, err);
  hooks.beforeSending = [&moving] { moving.clear(); };
  hooks.isInterrupted = [&interrupt] { return interrupt.wasInterrupted(); };
  return hooks;
}

ExchangeEnd Ask(const std::string& request, const ExchangeHooks& hooks, Reply& reply) {
  std::string text;
  const ExchangeEnd end = Exchange(request, hooks, text);
  if (end != ExchangeEnd::kReplied) {
    return end;
  }
  return ParseReply(text, reply) ? ExchangeEnd::kReplied : ExchangeEnd::kBroken;
}

ExchangeEnd AskPatiently(const std::string& request, Screen& screen, Reply& reply,
                         const std::function<void()>& whenOurs) {
  const InterruptWatch interrupt;
  MovingLine moving(screen.err);
  ExchangeHooks hooks = PatientHooks(moving, screen.err, interrupt);
  hooks.replyLimit = kReplyLimit;
  hooks.beforeSending = [&] {
    moving.clear();
    whenOurs();
  };
  return Ask(request, hooks, reply);
}

NoReply DescribeNoReply(ExchangeEnd end) {
  switch (end) {
    case ExchangeEnd::kNoPipe:
      return {
          "starting", L"The service's process runs, but it has had no pipe for a minute.",
          L"restart the service, or end the process TavrinService.exe; tavrin-service.log tells "
          L"how far it came"};
    case ExchangeEnd::kHalfReply:
      return {"broken", L"The reply broke off in the middle.",
              L"run tavrinctl status to see how things stand; if it stays so, restart the service"};
    case ExchangeEnd::kBusy:
      return {"busy", L"The service has been busy with another client for a minute.",
              L"wait for the other client, or end it; tavrin-service.log tells what it asked"};
    case ExchangeEnd::kRefused:
      return {"refused", L"This user may not open the service's pipe.",
              L"sign in to Windows with an account of this machine"};
    case ExchangeEnd::kBroken:
      return {"broken", L"The connection ended without a proper reply.",
              L"look at the end of tavrin-service.log, and try again"};
    case ExchangeEnd::kTimedOut:
      return {"timeout", L"There was no reply in time; the service may still be at work.",
              L"run tavrinctl status, which waits until the service is free"};
    case ExchangeEnd::kInterrupted:
      return {"interrupted", L"Interrupted.", L"run tavrinctl status to see how things stand"};
    default:
      return DescribeAbsence();
  }
}

bool WasReached(ExchangeEnd end) {
  return end == ExchangeEnd::kReplied || end == ExchangeEnd::kTimedOut ||
         end == ExchangeEnd::kInterrupted;
}

int FailWithoutReply(ExchangeEnd end, bool json, Screen& screen) {
  const NoReply reason = DescribeNoReply(end);
  if (json) {
    Json object = NewJson();
    PutFlag(object, "reachable", WasReached(end));
    PutUtf8(object, "reason", reason.key);
    screen.out.write(JsonText(object));
  }
  screen.err.line(reason.sentence);
  screen.err.paragraph(L"  What to do: " + reason.whatToDo + L".", 14);
  return end == ExchangeEnd::kInterrupted ? kExitInterrupted : kExitUnreachable;
}

void TellRefusal(const std::wstring& error, Screen& screen) {
  TellRefusal(error, WhatToDo(error), screen);
}

void TellRefusal(const std::wstring& error, const std::wstring& whatToDo, Screen& screen) {
  screen.err.line(PlainLine(error));
  screen.err.paragraph(L"  What to do: " + whatToDo + L".", 14);
}

}  // namespace vpn
