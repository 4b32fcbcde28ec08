// Runs of the client, tavrinctl.exe, beside the service of a sandbox.
#ifndef TAVRIN_TESTS_E2E_HARNESS_CLIENT_RUN_H_
#define TAVRIN_TESTS_E2E_HARNESS_CLIENT_RUN_H_

#include <nlohmann/json.hpp>

#include <string>

#include "tests/e2e/harness/sandbox.h"
#include "tests/e2e/harness/service_process.h"

namespace e2e {

// What stands for a keyboard: a pipe.
class InputPipe {
 public:
  InputPipe();
  ~InputPipe();
  InputPipe(const InputPipe&) = delete;
  InputPipe& operator=(const InputPipe&) = delete;

  HANDLE reading() const { return reading_; }
  void Write(const std::string& bytes) const;
  // The program's input ends; nothing more can be written.
  void End();

 private:
  HANDLE reading_ = nullptr;
  HANDLE writing_ = nullptr;
};

class ClientRun {
 public:
  // Starts at once. `--runtime` is added to the commands that take it.
  ClientRun(const Sandbox& box, const std::wstring& arguments);

  DWORD pid() const { return process_.pid(); }
  bool IsRunning() const { return process_.IsRunning(); }
  // A line on its standard input.
  void Say(const std::string& line) const { input_.Write(line + "\n"); }
  // Of the ended process, whose input ends at the latest now.
  DWORD ExitCode();
  // What it has printed so far on either stream.
  std::string Output() const { return ReadText(output_); }
  std::string Errors() const { return ReadText(output_ + kErrorsEnding); }

 private:
  const std::wstring output_;
  InputPipe input_;
  ServiceProcess process_;
};

// The object that a command prints with --json; expects the exit code.
nlohmann::json ClientObject(const Sandbox& box, const std::wstring& arguments, DWORD exitCode);

// The doctor's finding of one check.
nlohmann::json DoctorFinding(const Sandbox& box, const std::string& check);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_CLIENT_RUN_H_
