// What can be told of a file without taking more than its first bytes.
#ifndef TAVRIN_CLIENT_DOCTOR_FILE_LOOK_H_
#define TAVRIN_CLIENT_DOCTOR_FILE_LOOK_H_

#include <cstdint>
#include <string>

#include "client/doctor/finding.h"

namespace vpn {

enum class FileState {
  kReadable,
  kMissing,  // surely: the platform says that there is none
  kUnreadable,
  kDirectory,
  kEmpty,
  kHuge,
};

// Without opening it: a directory, missing, or there. The service can't write a line into a trace
// that is open here.
FileState LookAtName(const std::wstring& path);

// Opens it for a moment: a file that another program holds can't be read.
FileState LookAtFile(const std::wstring& path, std::uint64_t most);
// Of any size. `start` gets the first two bytes.
FileState LookAtProgram(const std::wstring& path, std::string& start);

// For every state but kReadable: "is not there" and the like.
std::wstring WordsFor(FileState state);

// For every state but kReadable: what can't be read is a remark, since it may be good; all else is
// a problem. `cure` is what to do about a file that is not as it should be.
Finding BadFile(const std::wstring& path, FileState state, const std::wstring& cure);

// The greatest size that a file of settings can sensibly have, in bytes.
inline constexpr std::uint64_t kMostSettings = 1 << 20;

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_FILE_LOOK_H_
