// Whole files by wide path. All sharing is allowed, since a reader may come at any time.
#ifndef TAVRIN_TESTS_STANDINS_FILES_H_
#define TAVRIN_TESTS_STANDINS_FILES_H_

#include <optional>
#include <string>
#include <string_view>

namespace standins {

// Empty when the file cannot be opened.
std::optional<std::string> ReadWholeFile(const std::wstring& path);
// The content goes to a neighbour first and takes the file's place in one step, so that a writer
// that is killed on the way leaves the old content whole. False when that failed.
bool ReplaceWholeFile(const std::wstring& path, std::string_view content);
// In one write at the end; creates the file.
bool AppendToFile(const std::wstring& path, std::string_view text);

}  // namespace standins

#endif  // TAVRIN_TESTS_STANDINS_FILES_H_
