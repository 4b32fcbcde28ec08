#include "tests/e2e/panel/harness/raw_http.h"

#include <winsock2.h>

#include <cstdlib>
#include <stdexcept>

namespace e2e {
namespace {

// Winsock for as long as the object lives; the platform counts.
struct Winsock {
  Winsock() {
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0) throw std::runtime_error("no Winsock");
  }
  ~Winsock() { WSACleanup(); }
  Winsock(const Winsock&) = delete;
  Winsock& operator=(const Winsock&) = delete;
};

class Socket {
 public:
  explicit Socket(std::uint16_t port) : socket_(socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
      const int code = WSAGetLastError();
      closesocket(socket_);
      throw std::runtime_error("the test panel can't be reached, code " + std::to_string(code));
    }
  }
  ~Socket() { closesocket(socket_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  void Send(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const int count =
          send(socket_, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
      if (count <= 0) throw std::runtime_error("the test panel doesn't listen");
      sent += static_cast<std::size_t>(count);
    }
  }

  std::string ReceiveAll() {
    std::string bytes;
    char buffer[8192];
    for (int count; (count = recv(socket_, buffer, sizeof(buffer), 0)) > 0;) {
      bytes.append(buffer, static_cast<std::size_t>(count));
    }
    return bytes;
  }

 private:
  SOCKET socket_;
};

}  // namespace

RawAnswer RawExchange(std::uint16_t port, const std::string& method, const std::string& target,
                      const std::string& headers, const std::string& body) {
  const Winsock winsock;
  Socket socket(port);
  socket.Send(method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" +
              headers + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  const std::string bytes = socket.ReceiveAll();
  const std::size_t end = bytes.find("\r\n\r\n");
  if (!bytes.starts_with("HTTP/1.1 ") || end == std::string::npos) {
    throw std::runtime_error("no answer to " + method + " " + target);
  }
  return {std::atoi(bytes.c_str() + 9), bytes.substr(0, end), bytes.substr(end + 4)};
}

}  // namespace e2e
