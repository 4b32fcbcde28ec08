// A directory of its own for each test, laid out as an installation: the service with the
// stand-ins beside it, the runtime directory with the helper programs and account files, and the
// simulated machine. All of it goes with the object.
#ifndef TAVRIN_TESTS_E2E_HARNESS_SANDBOX_H_
#define TAVRIN_TESTS_E2E_HARNESS_SANDBOX_H_

#include <string>
#include <string_view>
#include <vector>

namespace e2e {

class Sandbox {
 public:
  // `runtimeName` is the name of the runtime directory within the sandbox.
  explicit Sandbox(const std::wstring& runtimeName = L"runtime");
  ~Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  const std::wstring& root() const { return root_; }
  std::wstring service() const { return root_ + L"\\service"; }
  std::wstring runtime() const { return runtime_; }
  std::wstring machine() const { return root_ + L"\\machine"; }
  std::wstring serviceExe() const { return service() + L"\\TavrinService.exe"; }
  std::wstring trace() const { return service() + L"\\connect-timing.log"; }
  std::wstring serviceLog() const { return runtime_ + L"\\tavrin-service.log"; }

  // The service and the two stand-ins that belong beside it, into a directory that is made.
  void InstallService(const std::wstring& directory) const;
  // The helper programs and nothing else, below a directory that is made.
  void InstallHelpers(const std::wstring& directory) const;

 private:
  std::wstring root_;
  std::wstring runtime_;
};

// All of these throw std::runtime_error with the path when the platform refuses.
void MakeDirectories(const std::wstring& path);
void RemoveFile(const std::wstring& path);
void RemoveTree(const std::wstring& path);
void WriteText(const std::wstring& path, std::string_view text);
// The empty text when there is no such file.
std::string ReadText(const std::wstring& path);
bool Exists(const std::wstring& path);
std::vector<std::string> ReadLines(const std::wstring& path);

// One stand-in program or the service, as built.
void CopyProgram(const std::wstring& builtName, const std::wstring& target);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_SANDBOX_H_
