#include "src/control/dispatch.h"

#include <string>
#include <string_view>

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

struct Outcome {
  bool ok = false;
  std::wstring error;
};

// Byte by byte, sign-extended to one 16-bit unit; no decoding, since this is only for the log.
std::wstring WidenBytes(std::string_view bytes) {
  std::wstring text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += static_cast<wchar_t>(value < 0x80 ? value : 0xFF00 | value);
  }
  return text;
}

Outcome Connect(const std::string& request) {
  const std::wstring error = ConnectOperation(Utf8ToWide(RequestField(request, "node")));
  return {error.empty(), error};
}

Outcome Shutdown() {
  StopTunnel();
  // In service mode this is no more than `disconnect`: the service manager alone ends a service.
  if (ShutdownAllowed.load() != 0) {
    StopRequested.exchange(1);
  }
  return {true, L""};
}

Outcome RunOperation(const std::string& op, const std::string& request) {
  if (op == "connect") {
    return Connect(request);
  }
  if (op == "disconnect") {
    StopTunnel();
    return {true, L""};
  }
  if (op == "shutdown") {
    return Shutdown();
  }
  if (op == "status") {
    return {true, L""};
  }
  return {false, L"op not allowed"};
}

bool IsTunnelRunning() {
  const MutexLock lock(TunnelLock);
  return Tunnel.isRunning();
}

}  // namespace

void HandleClient(HANDLE pipe) {
  std::string request;
  if (!ReadFrame(pipe, request)) {
    const DWORD readError = GetLastError();
    WriteLog(L"ipc read failed err=" + std::to_wstring(readError));
    return;
  }
  const std::string op = RequestOp(request);
  WriteLog(L"ipc op=" + WidenBytes(op));
  const Outcome outcome = RunOperation(op, request);
  if (!outcome.ok) {
    WriteLog(L"ipc error=" + outcome.error);
  }
  const std::string reply = EncodeReply(outcome.ok, IsTunnelRunning(), outcome.error);
  if (!WriteFrame(pipe, reply)) {
    const DWORD writeError = GetLastError();
    WriteLog(L"ipc write reply failed err=" + std::to_wstring(writeError));
  }
}

}  // namespace vpn
