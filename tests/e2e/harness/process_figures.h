// What a process holds, as the platform counts it.
#ifndef TAVRIN_TESTS_E2E_HARNESS_PROCESS_FIGURES_H_
#define TAVRIN_TESTS_E2E_HARNESS_PROCESS_FIGURES_H_

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace e2e {

struct ProcessFigures {
  std::size_t handles = 0;
  std::size_t threads = 0;
  std::size_t privateBytes = 0;
  std::size_t peakWorkingSet = 0;  // bytes
};

// Throws std::runtime_error when the platform does not tell.
ProcessFigures FiguresOf(DWORD processId);

// Those of a service in console or daemon mode whose warm-up has ended and which waits for a
// client.
ProcessFigures SettledFiguresOf(DWORD processId);

// The figures as one line for the test's output.
std::string FigureText(const ProcessFigures& figures);

// Those of the files below the directory that some process has open.
std::vector<std::string> OpenFilesBelow(const std::wstring& directory);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_PROCESS_FIGURES_H_
