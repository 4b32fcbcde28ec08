#include "client/pipe/exchange.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "client/service/presence.h"
#include "src/common/unique_handle.h"
#include "src/control/frame.h"
#include "src/control/pipe_server.h"

namespace vpn {
namespace {

constexpr DWORD kOpenPause = 50;            // milliseconds between two attempts to open the pipe
constexpr DWORD kReplyPause = 10;           // and between two looks for the reply
constexpr std::uint64_t kRestLimit = 5000;  // for the rest of a reply that has begun
constexpr std::size_t kHeader = 4;          // bytes of length in front of the payload

// Whoever made the pipe, perhaps no service at all, must not act in this user's name.
constexpr DWORD kPipeFlags =
    FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

bool IsInterrupted(const ExchangeHooks& hooks) {
  return hooks.isInterrupted && hooks.isInterrupted();
}

void Tell(const std::function<void(std::uint64_t)>& hook, std::uint64_t waited) {
  if (hook) {
    hook(waited);
  }
}

// How an attempt that failed ends when nothing changes. ERROR_PIPE_BUSY says that somebody is
// served. Between two clients there is no pipe for a moment, as there is none for a service that
// starts: only then do the service manager and the running processes tell whether to wait.
ExchangeEnd EndOfAttempt(DWORD error) {
  switch (error) {
    case ERROR_PIPE_BUSY:
      return ExchangeEnd::kBusy;
    case ERROR_ACCESS_DENIED:
      return ExchangeEnd::kRefused;
    default:
      return error == ERROR_FILE_NOT_FOUND && IsServiceAlive() ? ExchangeEnd::kNoPipe
                                                               : ExchangeEnd::kAbsent;
  }
}

ExchangeEnd OpenPipe(const ExchangeHooks& hooks, KernelHandle& pipe) {
  const ULONGLONG start = GetTickCount64();
  for (;;) {
    pipe = KernelHandle(CreateFileW(kControlPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, kPipeFlags, nullptr));
    const DWORD error = GetLastError();
    if (pipe) {
      return ExchangeEnd::kReplied;
    }
    const ExchangeEnd end = EndOfAttempt(error);
    const bool mayComeSoon = end == ExchangeEnd::kBusy || end == ExchangeEnd::kNoPipe;
    const ULONGLONG waited = GetTickCount64() - start;
    if (!mayComeSoon || waited >= hooks.patience) {
      return end;
    }
    if (IsInterrupted(hooks)) {
      return ExchangeEnd::kInterrupted;
    }
    Tell(end == ExchangeEnd::kBusy ? hooks.whileBusy : hooks.whileNoPipe, waited);
    Sleep(kOpenPause);
  }
}

// A reply as it comes in. Nothing here waits for the peer.
class IncomingFrame {
 public:
  // Takes what is there. False when the connection has ended.
  bool take(HANDLE pipe) {
    DWORD available = 0;
    if (PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) == FALSE) {
      return false;
    }
    std::array<char, 4096> chunk{};
    DWORD count = 0;
    const DWORD wanted = std::min<DWORD>(available, chunk.size());
    if (wanted > 0 && ReadFile(pipe, chunk.data(), wanted, &count, nullptr) == FALSE) {
      return false;
    }
    bytes_.append(chunk.data(), count);
    return true;
  }

  bool hasBegun() const { return !bytes_.empty(); }
  bool isNone() const {
    return bytes_.size() >= kHeader && (length() == 0 || length() > kMaxPayload);
  }
  bool isWhole() const { return bytes_.size() >= kHeader && bytes_.size() >= kHeader + length(); }
  std::string payload() const { return bytes_.substr(kHeader, length()); }

 private:
  std::size_t length() const {
    std::size_t value = 0;
    for (std::size_t byte = kHeader; byte-- > 0;) {
      value = value << 8 | static_cast<unsigned char>(bytes_[byte]);
    }
    return value;
  }

  std::string bytes_;
};

// Both limits in milliseconds since the sending, and since the first byte came.
ExchangeEnd EndOfWait(const ExchangeHooks& hooks, std::uint64_t waited, bool hasBegun,
                      std::uint64_t sinceFirst) {
  if (hasBegun && sinceFirst >= kRestLimit) {
    return ExchangeEnd::kHalfReply;
  }
  if (hooks.replyLimit != 0 && waited >= hooks.replyLimit) {
    return hasBegun ? ExchangeEnd::kHalfReply : ExchangeEnd::kTimedOut;
  }
  return IsInterrupted(hooks) ? ExchangeEnd::kInterrupted : ExchangeEnd::kReplied;
}

ExchangeEnd AwaitReply(HANDLE pipe, const ExchangeHooks& hooks, std::string& reply) {
  IncomingFrame frame;
  const ULONGLONG start = GetTickCount64();
  ULONGLONG lastWithout = start;  // when the reply had not begun yet
  for (;;) {
    if (!frame.take(pipe) || frame.isNone()) {
      return ExchangeEnd::kBroken;
    }
    if (frame.isWhole()) {
      reply = frame.payload();
      return ExchangeEnd::kReplied;
    }
    const ULONGLONG now = GetTickCount64();
    lastWithout = frame.hasBegun() ? lastWithout : now;
    const ExchangeEnd end = EndOfWait(hooks, now - start, frame.hasBegun(), now - lastWithout);
    if (end != ExchangeEnd::kReplied) {
      return end;
    }
    Tell(hooks.whileWaiting, now - start);
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
  return AwaitReply(pipe.get(), hooks, reply);
}

}  // namespace vpn
