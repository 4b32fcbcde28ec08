// What the contract tests need of the world that they run in, and can't say through the platform
// calls under test: on Windows or Wine the real thing, natively the simulated machine.
//
// Each test runs in both worlds and asserts what Windows documents or is known to do. Where Wine
// does something else the test says so through IsWine().
#ifndef TAVRIN_TESTS_CONTRACT_WORLD_H_
#define TAVRIN_TESTS_CONTRACT_WORLD_H_

#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace contract {

bool IsWine();

// A machine to test on, and a directory of the test's own, empty, without a trailing separator.
class World {
 public:
  World();
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  const std::wstring& directory() const { return directory_; }

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  std::wstring directory_;
};

void SetVariable(const wchar_t* name, const wchar_t* value);
void MakeDirectory(const std::wstring& path);

// A listener on the loopback address that accepts connections, for its own lifetime.
class Listener {
 public:
  Listener();
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  USHORT port() const { return port_; }

 private:
  SOCKET socket_ = INVALID_SOCKET;
  USHORT port_ = 0;
};
// A port on which nobody listens.
USHORT FreePort();

// Values below a key of the current user that is the tests' own.
inline constexpr wchar_t kTestKey[] = L"Software\\TavrinContract";
void PutDword(const wchar_t* name, DWORD value);
void PutText(const wchar_t* name, const wchar_t* text);

// The tests' own executable, which can act as a child: "exit 7" ends with this code, "sleep" never
// ends by itself.
std::wstring ProgramPath();
inline std::wstring ChildLine(const std::wstring& behaviour) {
  return L"\"" + ProgramPath() + L"\" --contract-child " + behaviour;
}

// All of the file.
std::string Bytes(const std::wstring& path);

class ContractTest : public ::testing::Test {
 protected:
  // A file with these bytes in the test's directory; gives its path.
  std::wstring Put(const std::wstring& name, const std::string& bytes = "");

  World world;
};

}  // namespace contract

#endif  // TAVRIN_TESTS_CONTRACT_WORLD_H_
