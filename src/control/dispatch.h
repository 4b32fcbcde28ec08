// Serves one connected pipe client: one request, one operation, one reply.
#ifndef TAVRIN_SRC_CONTROL_DISPATCH_H_
#define TAVRIN_SRC_CONTROL_DISPATCH_H_

#include <windows.h>

namespace vpn {

// Never closes the pipe. A request that can't be read gets no reply; a reply that can't be written
// changes nothing: the tunnel stays as the operation left it.
void HandleClient(HANDLE pipe);

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_DISPATCH_H_
