#include "src/control/dispatch.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "src/common/number_text.h"
#include "src/common/text.h"
#include "src/control/connect_operation.h"
#include "src/control/frame.h"
#include "src/control/reply.h"
#include "src/control/request.h"
#include "src/control/tunnel_instance.h"
#include "src/runtime/process_state.h"
#include "src/runtime/service_log.h"

namespace vpn {
namespace {

// "ipc op=" and the operation. For the log alone, so nothing is decoded: each byte becomes one
// 16-bit unit. A `char` has a sign here and keeps it, so the byte 0xE4 becomes the unit 0xFFE4.
std::wstring OpLine(std::string_view op) {
  constexpr std::wstring_view kPrefix = L"ipc op=";
  std::wstring line(kPrefix.size() + op.size(), L'\0');
  wchar_t* const behindPrefix = std::copy(kPrefix.begin(), kPrefix.end(), line.data());
  std::transform(op.begin(), op.end(), behindPrefix, [](char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return static_cast<wchar_t>(value < 0x80 ? value : 0xFF00 | value);
  });
  return line;
}

Status Shutdown() {
  StopTunnel();
  // In service mode this is no more than `disconnect`: the service manager alone ends a service.
  if (g_shutdownAllowed.load() != 0) {
    g_stopRequested.exchange(1);
  }
  return Status::success();
}

Status RunOperation(std::string_view op, const std::string& request) {
  if (op == "connect") {
    return ConnectOperation(Utf8ToWide(RequestField(request, "node")));
  }
  if (op == "disconnect") {
    StopTunnel();
    return Status::success();
  }
  if (op == "shutdown") {
    return Shutdown();
  }
  return op == "status" ? Status::success() : Status::failure(L"op not allowed");
}

bool IsTunnelRunning() {
  const MutexLock lock(g_tunnelLock);
  return g_tunnel.childrenAlive();
}

}  // namespace

void HandleClient(HANDLE pipe) {
  std::string request;
  if (!ReadFrame(pipe, request)) {
    const DWORD readError = GetLastError();
    WriteLog(L"ipc read failed err=" + DecimalText(readError));
    return;
  }
  const std::string op = RequestOp(request);
  WriteLog(OpLine(op));
  const Status outcome = RunOperation(op, request);
  if (!outcome) {
    WriteLog(L"ipc error=" + outcome.text());
  }
  const std::string reply =
      EncodeReply(static_cast<bool>(outcome), IsTunnelRunning(), outcome.text());
  if (!WriteFrame(pipe, reply)) {
    const DWORD writeError = GetLastError();
    WriteLog(L"ipc write reply failed err=" + DecimalText(writeError));
  }
}

}  // namespace vpn
