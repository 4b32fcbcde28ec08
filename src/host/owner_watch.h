// Ties the daemon to the process that started it.
#ifndef TAVRIN_SRC_HOST_OWNER_WATCH_H_
#define TAVRIN_SRC_HOST_OWNER_WATCH_H_

#include <windows.h>

namespace vpn {

// Thread body: waits for the end of the process `g_ownerPid`, then stops this one. An owner that
// can't be opened (gone already, say) is logged, and the process goes on with no owner.
DWORD WINAPI OwnerWatch(void* unused);

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_OWNER_WATCH_H_
