#include "client/pipe/exchange.h"

#include <windows.h>

#include "client/service/presence.h"
#include "src/common/unique_handle.h"
#include "src/control/frame.h"
#include "src/control/pipe_server.h"

namespace vpn {
namespace {

constexpr DWORD kOpenPause = 50;   // milliseconds between two attempts to open the pipe
constexpr DWORD kReplyPause = 10;  // and between two looks for the reply

bool IsInterrupted(const ExchangeHooks& hooks) {
  return hooks.isInterrupted && hooks.isInterrupted();
}

// ERROR_PIPE_BUSY says that somebody is served. Between two clients there is no pipe for a moment,
// as there is none for a service that starts: only then do the service manager and the running
// processes tell whether to wait.
bool MayComeSoon(DWORD error) {
  return error == ERROR_PIPE_BUSY || (error == ERROR_FILE_NOT_FOUND && IsServiceAlive());
}

ExchangeEnd OpenPipe(const ExchangeHooks& hooks, KernelHandle& pipe) {
  const ULONGLONG start = GetTickCount64();
  for (;;) {
    pipe = KernelHandle(CreateFileW(kControlPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD error = GetLastError();
    if (pipe) {
      return ExchangeEnd::kReplied;
    }
    if (!MayComeSoon(error)) {
      return error == ERROR_ACCESS_DENIED ? ExchangeEnd::kRefused : ExchangeEnd::kAbsent;
    }
    const ULONGLONG waited = GetTickCount64() - start;
    if (waited >= hooks.patience) {
      return ExchangeEnd::kBusy;
    }
    if (IsInterrupted(hooks)) {
      return ExchangeEnd::kInterrupted;
    }
    if (hooks.whileBusy) {
      hooks.whileBusy(waited);
    }
    Sleep(kOpenPause);
  }
}

// Returns kReplied once there is something to read.
ExchangeEnd AwaitReply(HANDLE pipe, const ExchangeHooks& hooks) {
  const ULONGLONG start = GetTickCount64();
  for (;;) {
    DWORD available = 0;
    if (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) == FALSE) {
      return ExchangeEnd::kBroken;
    }
    if (available > 0) {
      return ExchangeEnd::kReplied;
    }
    const ULONGLONG waited = GetTickCount64() - start;
    if (hooks.replyLimit != 0 && waited >= hooks.replyLimit) {
      return ExchangeEnd::kTimedOut;
    }
    if (IsInterrupted(hooks)) {
      return ExchangeEnd::kInterrupted;
    }
    if (hooks.whileWaiting) {
      hooks.whileWaiting(waited);
    }
    Sleep(kReplyPause);
  }
}

// Unlike the service's own writer this one does not wait until everything is read: what follows is
// to be watched meanwhile.
bool SendRequest(HANDLE pipe, const std::string& request) {
  std::string frame;
  for (std::size_t length = request.size(), byte = 0; byte < 4; ++byte, length >>= 8) {
    frame += static_cast<char>(length & 0xFF);
  }
  frame += request;
  for (std::size_t done = 0; done < frame.size();) {
    DWORD count = 0;
    if (WriteFile(pipe, frame.data() + done, static_cast<DWORD>(frame.size() - done), &count,
                  nullptr) == FALSE ||
        count == 0) {
      return false;
    }
    done += count;
  }
  return true;
}

}  // namespace

ExchangeEnd Exchange(const std::string& request, const ExchangeHooks& hooks, std::string& reply) {
  KernelHandle pipe;
  ExchangeEnd end = OpenPipe(hooks, pipe);
  if (end != ExchangeEnd::kReplied) {
    return end;
  }
  if (hooks.beforeSending) {
    hooks.beforeSending();
  }
  if (!SendRequest(pipe.get(), request)) {
    return ExchangeEnd::kBroken;
  }
  end = AwaitReply(pipe.get(), hooks);
  if (end != ExchangeEnd::kReplied) {
    return end;
  }
  return ReadFrame(pipe.get(), reply) ? ExchangeEnd::kReplied : ExchangeEnd::kBroken;
}

}  // namespace vpn
