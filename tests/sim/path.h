// Windows paths as text.
#ifndef TAVRIN_TESTS_SIM_PATH_H_
#define TAVRIN_TESTS_SIM_PATH_H_

#include <string>

namespace sim {

// The absolute path: separators become backslashes, "." and ".." go, trailing blanks and dots of a
// component go, a trailing separator stays. `currentDirectory` is absolute.
std::wstring FullPath(const std::wstring& path, const std::wstring& currentDirectory);

// Behind the last separator; the whole text if there is none.
std::wstring BaseName(const std::wstring& path);
// In front of the last separator, "C:\" for a name in the root; empty if there is none.
std::wstring DirectoryName(const std::wstring& path);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_PATH_H_
