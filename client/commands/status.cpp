#include "client/commands/asking.h"
#include "client/commands/commands.h"
#include "client/commands/tunnel_status.h"
#include "client/exit_codes.h"
#include "client/json/json_text.h"
#include "client/text/amounts.h"
#include "client/text/display_width.h"

namespace vpn {
namespace {

constexpr DWORD kWatchPause = 1000;  // milliseconds
constexpr DWORD kWatchStep = 50;
constexpr std::uint64_t kWatchLimit = 10'000;  // milliseconds for one reply

std::wstring UpText(const TunnelStatus& status) {
  return status.upFor ? L"up for " + DurationText(*status.upFor) : std::wstring();
}

std::wstring ServiceLine(const TunnelStatus& status) {
  std::wstring text = status.serviceState;
  text += status.version.empty() ? L"" : L", version " + status.version;
  return text + L", " + status.place.runtimeDir;
}

void ShowStatus(const TunnelStatus& status, Output& out) {
  if (!status.isUp) {
    out.line(L"Tavrin is not connected.");
  } else {
    const std::wstring sentence = L"Tavrin is connected.";
    out.write(status.upFor ? PadRight(sentence, 28) : sentence, Ink::kGood);
    out.line(UpText(status));
    std::wstring node = status.node.address.empty()
                            ? std::wstring(L"unknown: the generated configuration can't be read")
                            : Endpoint(status.node.address, status.node.port);
    node += status.nodeName.empty() ? L"" : L"   (" + PlainLine(status.nodeName) + L")";
    out.line(L"Node     " + node);
  }
  out.line(L"Service  " + ServiceLine(status));
}

Json StatusObject(const TunnelStatus& status) {
  Json object = NewJson();
  PutFlag(object, "reachable", true);
  PutFlag(object, "connected", status.isUp);
  if (status.isUp) {
    PutIfAny(object, "upSeconds", status.upFor);
    PutIfAny(object, "connectMilliseconds", status.connectTime);
    Json& node = PutObject(object, "node");
    PutText(node, "address", status.node.address);
    PutNumber(node, "port", status.node.port);
    PutText(node, "name", status.nodeName);
  }
  Json& service = PutObject(object, "service");
  PutText(service, "state", status.serviceState);
  PutText(service, "version", status.version);
  PutText(service, "runtimeDir", status.place.runtimeDir);
  return object;
}

int StatusOnce(const CommandLine& line, Screen& screen) {
  Reply reply;
  ServicePlace place;
  LastConnect last;
  const ExchangeEnd end = AskPatiently(kStatusRequest, screen, reply, [&] {
    place = FindServicePlace(line.runtimeDir);
    last = ReadLastConnect(place);
  });
  if (end != ExchangeEnd::kReplied) {
    return FailWithoutReply(end, line.json, screen);
  }
  const TunnelStatus status = LookAround(place, last, reply.running);
  if (line.json) {
    screen.out.write(JsonText(StatusObject(status)));
  } else {
    ShowStatus(status, screen.out);
  }
  return kExitDone;
}

// One look of the watch.
struct Look {
  ExchangeEnd end = ExchangeEnd::kAbsent;
  TunnelStatus status;
};

Look LookOnce(const CommandLine& line, const InterruptWatch& interrupt) {
  ExchangeHooks hooks;
  hooks.patience = 0;  // a connect of somebody else's is told, not waited for
  hooks.replyLimit = kWatchLimit;
  hooks.isInterrupted = [&interrupt] { return interrupt.wasInterrupted(); };
  ServicePlace place;
  LastConnect last;
  hooks.beforeSending = [&] {
    place = FindServicePlace(line.runtimeDir);
    last = ReadLastConnect(place);
  };
  Look look;
  Reply reply;
  look.end = Ask(kStatusRequest, hooks, reply);
  if (look.end == ExchangeEnd::kReplied) {
    look.status = LookAround(place, last, reply.running);
  }
  return look;
}

// What changes by itself, the time, stands in the moving line.
std::wstring WatchLine(const Look& look) {
  if (look.end == ExchangeEnd::kBusy) {
    return L"The service is busy with another client.";
  }
  if (look.end == ExchangeEnd::kNoPipe) {
    return L"The service has no pipe yet.";
  }
  if (look.end != ExchangeEnd::kReplied) {
    return DescribeNoReply(look.end).sentence;
  }
  return look.status.isUp
             ? L"Connected to " + Endpoint(look.status.node.address, look.status.node.port)
             : L"Not connected";
}

std::wstring WatchObject(const Look& look) {
  const bool hasReply = look.end == ExchangeEnd::kReplied;
  Json object = NewJson();
  PutFlag(object, "reachable", WasReached(look.end));
  PutNull(object, "reason");
  PutNull(object, "connected");
  if (hasReply) {
    PutFlag(object, "connected", look.status.isUp);
  } else {
    PutUtf8(object, "reason", DescribeNoReply(look.end).key);
  }
  PutText(object, "address", look.status.node.address);
  return JsonLine(object);
}

bool PauseForNextLook(const InterruptWatch& interrupt) {
  for (DWORD waited = 0; waited < kWatchPause; waited += kWatchStep) {
    if (interrupt.wasInterrupted()) {
      return false;
    }
    Sleep(kWatchStep);
  }
  return !interrupt.wasInterrupted();
}

// A line for each change, until Ctrl+C.
int WatchStatus(const CommandLine& line, Screen& screen) {
  const InterruptWatch interrupt;
  MovingLine moving(screen.out);
  std::wstring before;
  do {
    const Look look = LookOnce(line, interrupt);
    if (look.end == ExchangeEnd::kInterrupted) {
      break;
    }
    const std::wstring now = line.json ? WatchObject(look) : WatchLine(look);
    if (now != before) {
      moving.clear();
      screen.out.line(now);
      before = now;
    }
    if (look.status.upFor && !line.json) {
      moving.show(L"  " + UpText(look.status));
    }
  } while (PauseForNextLook(interrupt));
  return kExitInterrupted;
}

}  // namespace

int RunStatus(const CommandLine& line, Screen& screen) {
  return line.watch ? WatchStatus(line, screen) : StatusOnce(line, screen);
}

}  // namespace vpn
