// What programs wrote on simulated machines, kept on the host for other programs to judge.
#ifndef TAVRIN_TESTS_SIM_KEPT_FILES_H_
#define TAVRIN_TESTS_SIM_KEPT_FILES_H_

#include <string>

namespace sim {

// Copies a JSON file into the directory that the environment variable TAVRIN_KEPT_FILES names,
// under a name that depends on the content, so that the same content is there once. Does nothing
// for other files, and without the variable.
void KeepWrittenFile(const std::wstring& path, const std::string& content);

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_KEPT_FILES_H_
