// Windows, or Wine, as the contract tests' world; and the child that the tests start.
#include "tests/contract/world.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace contract {

bool IsWine() {
  return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

struct World::Impl {};

World::World() {
  static int count = 0;
  const std::filesystem::path root = std::filesystem::temp_directory_path();
  const std::wstring name = L"tavrin-contract-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                            std::to_wstring(++count);
  directory_ = (root / name).wstring();
  std::filesystem::create_directories(directory_);
}

World::~World() {
  SetCurrentDirectoryW(L"C:\\");  // a current directory can't be removed
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
  RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey);
}

void SetVariable(const wchar_t* name, const wchar_t* value) {
  SetEnvironmentVariableW(name, value);
}

void MakeDirectory(const std::wstring& path) {
  std::filesystem::create_directories(path);
}

namespace {

// A bound socket of the loopback address, and its port.
SOCKET Bind(USHORT* port) {
  const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int length = sizeof address;
  bind(socket, reinterpret_cast<sockaddr*>(&address), length);
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
  *port = ntohs(address.sin_port);
  return socket;
}

}  // namespace

Listener::Listener() {
  socket_ = Bind(&port_);
  listen(socket_, 5);
}

Listener::~Listener() {
  closesocket(socket_);
}

USHORT FreePort() {
  USHORT port = 0;
  closesocket(Bind(&port));
  return port;
}

namespace {

void PutValue(const wchar_t* name, DWORD type, const void* data, size_t size) {
  RegSetKeyValueW(HKEY_CURRENT_USER, kTestKey, name, type, data, static_cast<DWORD>(size));
}

}  // namespace

void PutDword(const wchar_t* name, DWORD value) {
  PutValue(name, REG_DWORD, &value, sizeof value);
}

void PutText(const wchar_t* name, const wchar_t* text) {
  PutValue(name, REG_SZ, text, (std::wcslen(text) + 1) * sizeof *text);
}

}  // namespace contract

int main(int argc, char** argv) {
  if (argc >= 3 && std::strcmp(argv[1], "--contract-child") == 0) {
    if (std::strcmp(argv[2], "exit") == 0 && argc >= 4) {
      return std::atoi(argv[3]);
    }
    Sleep(INFINITE);
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
