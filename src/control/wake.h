// How everything that wants the process to end reaches the pipe server.
#ifndef TAVRIN_SRC_CONTROL_WAKE_H_
#define TAVRIN_SRC_CONTROL_WAKE_H_

namespace vpn {

// Sets `g_stopRequested` and makes a throw-away connection to the control pipe, which returns a
// server that waits for a client. Any thread; takes no lock. A failed connection does no harm: the
// server then serves a client or creates its next instance, and reads the flag after either.
void WakeControlPipe();

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_WAKE_H_
