// Stand-in for xray.exe: reads its configuration strictly, listens on the SOCKS inbound and keeps
// an error log. The machine state says how slow it is and how it fails.
#include <winsock2.h>
#include <ws2tcpip.h>
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>

#include "tests/standins/files.h"
#include "tests/standins/helper_process.h"
#include "tests/standins/shared_machine.h"
#include "tests/standins/text.h"
#include "tests/standins/xray_config.h"

namespace standins {
namespace {

constexpr std::int64_t kUsage = 2;
constexpr std::int64_t kBadConfiguration = 23;
constexpr std::int64_t kStartFailed = -1;

std::string Timestamp() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  char text[64] = {};
  std::snprintf(text, sizeof(text), "%04u/%02u/%02u %02u:%02u:%02u.%06u", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds * 1000U);
  return text;
}

// Opened before anything listens; a log that cannot be opened ends the real one as well.
void OpenErrorLog(const XrayConfig& config) {
  if (config.errorLog.empty()) return;
  if (!AppendToFile(ToWide(config.errorLog), "")) throw std::runtime_error("cannot open the log");
}

void LogStarted(const XrayConfig& config) {
  if (config.errorLog.empty()) return;
  AppendToFile(ToWide(config.errorLog), Timestamp() + " [Warning] core: Xray 26.1.1 started\r\n");
}

void PrintVersion() {
  std::printf("Xray 26.1.1 (Xray, Penetrates Everything.) standin (go1.26 windows/amd64)\n");
}

// "stdin:" stands for the standard input, as for the real one.
std::optional<std::string> ReadConfigText(const std::wstring& path) {
  if (path != L"stdin:") return ReadWholeFile(path);
  _setmode(_fileno(stdin), _O_BINARY);
  std::string text;
  char chunk[4096];
  for (size_t count = 0; (count = std::fread(chunk, 1, sizeof(chunk), stdin)) > 0;) {
    text.append(chunk, count);
  }
  return text;
}

XrayConfig LoadConfig(const wchar_t* path) {
  PrintVersion();
  try {
    const auto text = ReadConfigText(path);
    if (!text) throw std::runtime_error("cannot read the file");
    const XrayConfig config = ReadXrayConfig(*text);
    OpenErrorLog(config);
    return config;
  } catch (const std::exception& failure) {
    std::printf("Failed to start: main: failed to load config files: [%s] > %s\n",
                ToUtf8(path).c_str(), failure.what());
    End(kBadConfiguration);
  }
}

SOCKET Listen(const XrayConfig& config) {
  WSADATA data{};
  WSAStartup(MAKEWORD(2, 2), &data);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(config.port);
  InetPtonA(AF_INET, config.listen.c_str(), &address.sin_addr);
  const SOCKET listener = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(listener, SOMAXCONN) != 0) {
    std::printf("Failed to start: listen tcp %s:%u: error %d\n", config.listen.c_str(), config.port,
                WSAGetLastError());
    End(kStartFailed);
  }
  return listener;
}

// Waits for the peer to close first, so that the port is free again when this process ends.
void ServeUntilClosed(SOCKET client) {
  char buffer[512];
  while (recv(client, buffer, sizeof(buffer), 0) > 0) {
  }
  closesocket(client);
}

SOCKET AcceptNext(SOCKET listener) {
  for (;;) {
    const SOCKET client = accept(listener, nullptr, nullptr);
    if (client != INVALID_SOCKET) return client;
  }
}

// The first connection is the service's, which has waited for the port.
void AcceptAndNote(SOCKET listener, std::uint64_t opened) {
  const SOCKET client = AcceptNext(listener);
  const std::uint64_t noticed = MomentNow();
  {
    const SharedMachine machine;
    machine.Note("port open", opened);
    machine.Note("port noticed", noticed);
  }
  ServeUntilClosed(client);
}

[[noreturn]] void AcceptForEver(SOCKET listener, std::int64_t exitOnAccept) {
  for (;;) {
    const SOCKET client = AcceptNext(listener);
    if (exitOnAccept != kNever) End(exitOnAccept);
    ServeUntilClosed(client);
  }
}

[[noreturn]] void Run(const wchar_t* configPath) {
  // By the time of the next start Windows has removed what an ended tun2socks left.
  SharedMachine().RemovePhantoms();
  const MachineState state = LogOwnStart();
  const XrayBehaviour& behaviour = state.xray;
  const XrayConfig config = LoadConfig(configPath);
  SleepFor(behaviour.delayMs);
  if (behaviour.exitCode != kNever) End(behaviour.exitCode);
  if (!behaviour.listens) SleepFor(kNever);
  const SOCKET listener = Listen(config);
  const std::uint64_t opened = MomentNow();
  LogStarted(config);
  DieAfter(behaviour.diesAfterMs);
  if (state.keepsMoments) AcceptAndNote(listener, opened);
  AcceptForEver(listener, behaviour.exitOnAccept);
}

}  // namespace
}  // namespace standins

int wmain(int argc, wchar_t** argv) {
  if (argc == 2 && std::wstring(argv[1]) == L"version") {
    standins::PrintVersion();
    return 0;
  }
  if (argc == 5 && std::wstring(argv[1]) == L"run" && std::wstring(argv[2]) == L"-test") {
    (void)standins::LoadConfig(argv[4]);
    std::printf("Configuration OK.\n");
    return 0;
  }
  const bool understood =
      argc == 4 && std::wstring(argv[1]) == L"run" && std::wstring(argv[2]) == L"-c";
  if (!understood) {
    std::fprintf(stderr, "usage: xray run -c FILE\n");
    return static_cast<int>(standins::kUsage);
  }
  standins::Run(argv[3]);
}
