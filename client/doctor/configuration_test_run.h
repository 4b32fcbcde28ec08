// Xray's own check of a configuration, without a trace on the machine.
#ifndef TAVRIN_CLIENT_DOCTOR_CONFIGURATION_TEST_RUN_H_
#define TAVRIN_CLIENT_DOCTOR_CONFIGURATION_TEST_RUN_H_

#include <string>

#include "client/doctor/captured_run.h"

namespace vpn {

// The check opens the logs that a configuration names, which makes a file, or changes the time of
// one. Here their names are empty; all else, damage too, stays as it is.
std::string WithoutLogFiles(std::string json);

// Runs `xray` on this text, which it reads from its standard input: no copy with the node's keys
// gets onto a disk. `json` has at most `kMostInput` bytes.
CapturedRun TestConfiguration(const std::wstring& xray, const std::wstring& directory,
                              const std::string& json);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_DOCTOR_CONFIGURATION_TEST_RUN_H_
