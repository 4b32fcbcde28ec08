#include "tests/panel/listeners.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace panel {
namespace {

constexpr char kLoopback[] = "127.0.0.1";

sockaddr_in LoopbackAddress(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = inet_addr(kLoopback);
  return address;
}

// Binds to a port that the system chooses.
int BindSomewhere(int socket) {
  sockaddr_in address = LoopbackAddress(0);
  socklen_t size = sizeof(address);
  auto* const raw = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket, raw, size) != 0 || getsockname(socket, raw, &size) != 0) {
    throw std::runtime_error("no port to be had");
  }
  return ntohs(address.sin_port);
}

}  // namespace

Listener::Listener(MakeServer make) : make_(std::move(make)) {
  Open();
}

void Listener::Open() {
  if (server_ != nullptr) return;
  server_ = make_();
  if (port_ == 0) {
    port_ = server_->bind_to_any_port(kLoopback);
  } else if (!server_->bind_to_port(kLoopback, port_)) {
    port_ = -1;
  }
  if (port_ < 0) throw std::runtime_error("no port to listen at");
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  while (!server_->is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void Listener::Close() {
  if (server_ == nullptr) return;
  server_->stop();
  thread_.join();
  server_.reset();
}

ClosedPort::ClosedPort()
    : socket_(socket(AF_INET, SOCK_STREAM, 0)), port_(BindSomewhere(socket_)) {}

ClosedPort::~ClosedPort() {
  close(socket_);
}

DeafPort::DeafPort()
    : sockets_{socket(AF_INET, SOCK_STREAM, 0)}, port_(BindSomewhere(sockets_[0])) {
  constexpr int kMoreThanFit = 4;
  (void)listen(sockets_[0], 0);
  const sockaddr_in address = LoopbackAddress(port_);
  for (int i = 0; i < kMoreThanFit; ++i) {
    sockets_.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
    (void)connect(sockets_.back(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  }
}

DeafPort::~DeafPort() {
  for (const int socket : sockets_) close(socket);
}

}  // namespace panel
