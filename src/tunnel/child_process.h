// The long-lived helper programs: finding and starting them.
#ifndef TAVRIN_SRC_TUNNEL_CHILD_PROCESS_H_
#define TAVRIN_SRC_TUNNEL_CHILD_PROCESS_H_

#include <windows.h>

#include <string>

#include "src/common/hidden_process.h"
#include "src/common/status.h"

namespace vpn {

// One double quote before and one after; nothing inside is escaped.
std::wstring QuoteArgument(const std::wstring& text);

// Full path of the first entry that the directory lists for `pattern`, or empty.
std::wstring FindFileByPattern(const std::wstring& directory, const std::wstring& pattern);

// Creates the child suspended, puts it into `job` (null: into none) and lets it run, so that it
// never runs outside the job. An empty working directory means this process's own. A failure leaves
// `child` as it is, and no child behind.
Status SpawnChild(HANDLE job, const std::wstring& executable, const std::wstring& commandLine,
                  const std::wstring& workingDirectory, HiddenProcess& child);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_CHILD_PROCESS_H_
