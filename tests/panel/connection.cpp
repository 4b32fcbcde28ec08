#include "tests/panel/connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <thread>

namespace panel {
namespace {

constexpr int kSlice = 20;        // milliseconds between two looks at whether to stop
constexpr int kPatience = 10000;  // milliseconds for the rest of a request that has begun

}  // namespace

Connection::~Connection() {
  if (tls_ != nullptr && !finished_) (void)SSL_shutdown(tls_.get());
  close(socket_);
}

bool Connection::Poll(int milliseconds) const {
  pollfd waiting = {socket_, POLLIN | POLLRDHUP, 0};
  return poll(&waiting, 1, milliseconds) > 0;
}

bool Connection::is_readable() const {
  return !buffer_.empty() || (tls_ != nullptr && SSL_pending(tls_.get()) > 0) || Poll(kPatience);
}

// Clients send headers and body in two pieces, and hold the second back until the first has been
// acknowledged, which the system delays unless it is told each time.
bool Connection::FillBuffer() {
  const int yes = 1;
  (void)setsockopt(socket_, IPPROTO_TCP, TCP_QUICKACK, &yes, sizeof(yes));
  if (!is_readable()) return false;
  std::array<char, 16384> bytes;
  const ssize_t count = tls_ != nullptr
                            ? SSL_read(tls_.get(), bytes.data(), static_cast<int>(bytes.size()))
                            : recv(socket_, bytes.data(), bytes.size(), 0);
  if (count <= 0) return false;
  buffer_.assign(bytes.data(), static_cast<size_t>(count));
  return true;
}

ssize_t Connection::read(char* buffer, size_t size) {
  if (finished_ || (buffer_.empty() && !FillBuffer())) return -1;
  const size_t count = std::min(size, buffer_.size());
  std::copy_n(buffer_.begin(), count, buffer);
  seen_.append(buffer_, 0, count);
  buffer_.erase(0, count);
  return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* bytes, size_t size) {
  size_t sent = 0;
  while (sent < size && !finished_) {
    const ssize_t count = tls_ != nullptr
                              ? SSL_write(tls_.get(), bytes + sent, static_cast<int>(size - sent))
                              : send(socket_, bytes + sent, size - sent, MSG_NOSIGNAL);
    if (count <= 0) finished_ = true;
    if (count > 0) sent += static_cast<size_t>(count);
  }
  return sent == size ? static_cast<ssize_t>(size) : -1;
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
  ip = "127.0.0.1";
  port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
  ip = "127.0.0.1";
  port = 0;
}

bool Connection::AwaitRequest(const std::function<bool()>& stopped) {
  while (buffer_.empty() && (tls_ == nullptr || SSL_pending(tls_.get()) == 0) && !Poll(kSlice)) {
    if (stopped()) return false;
  }
  seen_.clear();
  return !stopped() && (!buffer_.empty() || FillBuffer());
}

void Connection::AwaitClose(const std::function<bool()>& stopped) const {
  while (!Poll(kSlice) && !stopped()) {
  }
}

void Connection::FinishWithReset() {
  const linger abort = {1, 0};
  (void)setsockopt(socket_, SOL_SOCKET, SO_LINGER, &abort, sizeof(abort));
  finished_ = true;
}

}  // namespace panel
