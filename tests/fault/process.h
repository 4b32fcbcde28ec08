// Lives of the service's process within one test program. Its globals outlast a life, so each life
// is begun and ended here.
#ifndef TAVRIN_TESTS_FAULT_PROCESS_H_
#define TAVRIN_TESTS_FAULT_PROCESS_H_

#include <string>

namespace fault {

// The globals as a new process finds them, whatever the last one left: after a kill a lock may be
// held for ever, and the tunnel's members belong to a thread that stands still. Needs an installed
// machine.
void BeginProcess();

// What the process's exit does: the destructor of the one tunnel.
void EndProcess();

// A connect to the first node and a disconnect, as the two operations carry them out. The text is
// the connect's: empty on success.
std::wstring Connect();
void Disconnect();

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_PROCESS_H_
