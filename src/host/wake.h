// How everything that wants the process to end reaches the pipe server.
#ifndef TAVRIN_SRC_HOST_WAKE_H_
#define TAVRIN_SRC_HOST_WAKE_H_

namespace vpn {

// Sets `StopRequested` and makes a throw-away connection to the control pipe, which returns a
// server that waits for a client. Any thread; takes no lock. A failed connection does no harm: the
// server then reads the flag when the client that it serves is done.
void WakeControlPipe();

}  // namespace vpn

#endif  // TAVRIN_SRC_HOST_WAKE_H_
