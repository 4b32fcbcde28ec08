// A client of the control pipe, with framing of its own: it must not share a mistake with the
// product. Every wait has a deadline; a fault of the connection throws std::runtime_error.
#ifndef TAVRIN_TESTS_E2E_HARNESS_PIPE_CLIENT_H_
#define TAVRIN_TESTS_E2E_HARNESS_PIPE_CLIENT_H_

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace e2e {

// The length as four bytes, least significant first.
std::string LengthPrefix(std::uint32_t length);
std::string Frame(std::string_view payload);

class PipeClient {
 public:
  // Tries until the server takes it.
  PipeClient();
  ~PipeClient() { Close(); }
  PipeClient(const PipeClient&) = delete;
  PipeClient& operator=(const PipeClient&) = delete;

  void Write(std::string_view bytes);
  // Returns when the server has read all that was written. Only for bytes that it does read: under
  // Wine this wait does not end when the server drops the client.
  void WaitUntilRead();
  // A moment in which the server can take what was written, so that the next bytes come by
  // themselves, for bytes that the server may drop unread.
  static void Pause() { Sleep(20); }
  // One reply frame's payload.
  std::string ReadReply();
  // Waits for the server to drop the connection: the bytes that came before that.
  std::string ReadUntilClosed();
  void Close();

 private:
  // Up to `limit` bytes; empty when the server has closed the connection.
  std::string ReadSome(std::size_t limit);

  HANDLE pipe_ = INVALID_HANDLE_VALUE;
};

// One attempt to open the pipe, closed again at once: 0, or the platform's code.
DWORD TryToConnect();

// Returns when the server waits for its next client, and so is at work no more.
void WaitForListening();

// One whole exchange: the reply's payload. Checks that the server closes behind it.
std::string Ask(std::string_view request);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_HARNESS_PIPE_CLIENT_H_
