// A short program run whose output is wanted.
#ifndef TAVRIN_CLIENT_DOCTOR_CAPTURED_RUN_H_
#define TAVRIN_CLIENT_DOCTOR_CAPTURED_RUN_H_

#include <windows.h>

#include <cstddef>
#include <string>

namespace vpn {

struct CapturedRun {
  bool hasStarted = false;
  bool hasEnded = false;  // by itself; else it was ended when its time was over
  DWORD exitCode = 0;     // of one that has ended
  std::string output;     // both streams, at most 64 KiB
};

// Without a window. `limit` in milliseconds. The program reads `input`, if there is any, from its
// standard input; at most `kMostInput` bytes.
CapturedRun RunCaptured(const std::wstring& commandLine, const std::wstring& directory, DWORD limit,
                        const std::string& input = {});

inline constexpr size_t kMostInput = 64 << 10;

// The first text of digits and dots that looks like a version, as "26.3.27"; empty when there is
// none.
std::wstring VersionIn(const std::string& output);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_CAPTURED_RUN_H_
