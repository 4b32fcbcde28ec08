// Sends one request to the running service and prints the exchange:
//   tavrin_control status | disconnect | shutdown | connect [NODE]
//   tavrin_control --raw TEXT          any payload, byte for byte
// Exit code 0 when the reply says "ok":true, 1 for any other reply, 2 when there is no answer.
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\TavrinService";
constexpr int kAttempts =
    600;  // 50 ms apart: half a minute, for a service that is busy or starting

std::string ToUtf8(const std::wstring& text) {
  const int units = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

std::string Escape(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') {
      escaped += '\\';
    }
    escaped += byte;
  }
  return escaped;
}

// Empty for arguments that name no request.
std::string RequestText(int argc, wchar_t** argv) {
  const std::wstring op = argc > 1 ? argv[1] : L"";
  if (op == L"--raw" && argc == 3) {
    return ToUtf8(argv[2]);
  }
  if (op == L"connect" && argc == 3) {
    return R"({"op":"connect","node":")" + Escape(ToUtf8(argv[2])) + R"("})";
  }
  const bool isOp = op == L"status" || op == L"connect" || op == L"disconnect" || op == L"shutdown";
  return isOp && argc == 2 ? R"({"op":")" + ToUtf8(op) + R"("})" : std::string();
}

// While another client is served, the pipe can't be opened; there is no queue.
HANDLE OpenPipe() {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const HANDLE pipe = CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) {
      return pipe;
    }
    Sleep(50);
  }
  return INVALID_HANDLE_VALUE;
}

bool ReadAll(HANDLE pipe, void* buffer, DWORD size) {
  char* bytes = static_cast<char*>(buffer);
  while (size > 0) {
    DWORD count = 0;
    if (ReadFile(pipe, bytes, size, &count, nullptr) == FALSE || count == 0) {
      return false;
    }
    bytes += count;
    size -= count;
  }
  return true;
}

bool Exchange(HANDLE pipe, const std::string& request, std::string& reply) {
  const std::uint32_t length = static_cast<std::uint32_t>(request.size());
  std::string frame(reinterpret_cast<const char*>(&length), sizeof(length));  // little-endian
  frame += request;
  DWORD written = 0;
  std::uint32_t replyLength = 0;
  if (WriteFile(pipe, frame.data(), static_cast<DWORD>(frame.size()), &written, nullptr) == FALSE ||
      !ReadAll(pipe, &replyLength, sizeof(replyLength))) {
    return false;
  }
  reply.assign(replyLength, '\0');
  return ReadAll(pipe, reply.data(), replyLength);
}

}  // namespace

extern "C" int wmain(int argc, wchar_t** argv) {
  SetConsoleOutputCP(CP_UTF8);
  const std::string request = RequestText(argc, argv);
  if (request.empty()) {
    std::fputs("usage: tavrin_control status|disconnect|shutdown|connect [NODE]|--raw TEXT\n",
               stderr);
    return 2;
  }
  std::printf("request %s\n", request.c_str());
  const HANDLE pipe = OpenPipe();
  std::string reply;
  if (pipe == INVALID_HANDLE_VALUE || !Exchange(pipe, request, reply)) {
    std::printf("no answer, error %lu\n", GetLastError());
    return 2;
  }
  CloseHandle(pipe);
  std::printf("reply   %s\n", reply.c_str());
  return reply.starts_with(R"({"ok":true,)") ? 0 : 1;
}
