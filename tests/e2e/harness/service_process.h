// One run of the service's executable. It never outlives the object, nor this program: a job that
// kills on close holds it and everything that it starts.
#ifndef TAVRIN_TESTS_E2E_HARNESS_SERVICE_PROCESS_H_
#define TAVRIN_TESTS_E2E_HARNESS_SERVICE_PROCESS_H_

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace e2e {

// For the started process only; an empty value leaves the variable unset.
using Environment = std::vector<std::pair<std::wstring, std::wstring>>;

inline constexpr wchar_t kErrorsEnding[] = L".errors";

class ServiceProcess {
 public:
  // `arguments` is the command line behind the quoted path of the executable. What the process
  // prints goes to `outputPath`, and to the same with `kErrorsEnding` what goes to the error
  // stream.
  // `input` is an inheritable handle for its standard input, or null. `console` is the flag of
  // CreateProcess that says which console it has.
  ServiceProcess(const std::wstring& executable, const std::wstring& arguments,
                 const Environment& environment, const std::wstring& outputPath,
                 HANDLE input = nullptr, DWORD console = CREATE_NO_WINDOW);
  ~ServiceProcess();
  ServiceProcess(const ServiceProcess&) = delete;
  ServiceProcess& operator=(const ServiceProcess&) = delete;

  DWORD pid() const { return pid_; }
  bool IsRunning() const;
  // Throws std::runtime_error when it does not end.
  DWORD WaitForExitCode();
  // As a crash or the task manager would: no handler runs. Returns when it is gone.
  void Kill();

 private:
  HANDLE job_ = nullptr;
  HANDLE process_ = nullptr;
  DWORD pid_ = 0;
};

// Some other program, outside any job: the caller ends it and closes the handle. The environment
// stays set in this process, as nothing else here reads it.
HANDLE StartProgram(const std::wstring& executable, const std::wstring& arguments,
                    const std::wstring& workingDirectory, const Environment& environment);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_SERVICE_PROCESS_H_
