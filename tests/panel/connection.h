// One connection, with or without TLS, as the HTTP library's stream. It keeps the bytes of the
// request as they came, and can do what no well-behaved server does.
#ifndef TAVRIN_TESTS_PANEL_CONNECTION_H_
#define TAVRIN_TESTS_PANEL_CONNECTION_H_

#include <openssl/ssl.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <httplib.h>

namespace panel {

using TlsPointer = std::unique_ptr<SSL, decltype(&SSL_free)>;

class Connection : public httplib::Stream {
 public:
  // `tls` is null for a plain connection. Takes over both and closes the socket at its end.
  Connection(int socket, TlsPointer tls) : socket_(socket), tls_(std::move(tls)) {}
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool is_readable() const override;
  bool is_writable() const override { return !finished_; }
  ssize_t read(char* buffer, size_t size) override;
  ssize_t write(const char* bytes, size_t size) override;
  using httplib::Stream::write;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return socket_; }

  // Waits for the first byte of the next request, and begins to keep it; false when the client has
  // closed the connection or `stopped` has become true.
  bool AwaitRequest(const std::function<bool()>& stopped);
  // The request line and the headers of the present request.
  std::string Head() const { return seen_.substr(0, seen_.find("\r\n\r\n") + 2); }

  // Sends bytes past the library.
  void Send(std::string_view bytes) { (void)write(bytes.data(), bytes.size()); }
  // Waits until the client has gone away, or `stopped`.
  void AwaitClose(const std::function<bool()>& stopped) const;
  // Nothing more is sent; the connection ends in the ordinary way.
  void Finish() { finished_ = true; }
  // The connection ends with a reset.
  void FinishWithReset();
  bool finished() const { return finished_; }
  bool IsSecure() const { return tls_ != nullptr; }

 private:
  bool FillBuffer();
  bool Poll(int milliseconds) const;

  int socket_;
  TlsPointer tls_;
  std::string buffer_;  // received, not yet asked for
  std::string seen_;    // what the library has read of the present request
  bool finished_ = false;
};

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_CONNECTION_H_
