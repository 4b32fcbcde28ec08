// The control pipe: the only way into the running system, and the one loop of the program.
#ifndef TAVRIN_SRC_CONTROL_PIPE_SERVER_H_
#define TAVRIN_SRC_CONTROL_PIPE_SERVER_H_

namespace vpn {

inline constexpr wchar_t kControlPipeName[] = L"\\\\.\\pipe\\TavrinService";

// Serves one client at a time, one request and one reply per connection, until `g_stopRequested` is
// set; then stops the tunnel and returns. Runs on the caller's thread. Between two instances and
// during a request no other client can open the pipe.
void ServeControlPipe();

// Sets `g_stopRequested` and makes a throw-away connection to the control pipe, which returns a
// server that waits for a client. Any thread; takes no lock. A failed connection does no harm: the
// server then serves a client or creates its next instance, and reads the flag after either.
void WakeControlPipe();

}  // namespace vpn

#endif  // TAVRIN_SRC_CONTROL_PIPE_SERVER_H_
