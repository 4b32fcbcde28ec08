// The long-lived helper programs: finding, starting and asking after them.
#ifndef TAVRIN_SRC_TUNNEL_CHILD_PROCESS_H_
#define TAVRIN_SRC_TUNNEL_CHILD_PROCESS_H_

#include <windows.h>

#include <string>

#include "src/common/unique_handle.h"

namespace vpn {

// One double quote before and one after; nothing inside is escaped.
std::wstring QuoteArgument(const std::wstring& text);

// Full path of the first entry that the directory lists for `pattern`, or empty.
std::wstring FindFileByPattern(const std::wstring& directory, const std::wstring& pattern);

// Creates the child suspended, puts it into `job` (null: into none) and lets it run, so that it
// never runs outside the job. An empty working directory means this process's own. On false the
// outputs are untouched, no child is left, and `error` is set.
bool SpawnChild(HANDLE job, const std::wstring& executable, const std::wstring& commandLine,
                const std::wstring& workingDirectory, KernelHandle& process, KernelHandle& thread,
                std::wstring& error);

// False for null.
bool IsProcessRunning(HANDLE process);

}  // namespace vpn

#endif  // TAVRIN_SRC_TUNNEL_CHILD_PROCESS_H_
