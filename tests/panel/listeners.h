// The ports of the panel, all on the loopback interface and chosen by the system.
#ifndef TAVRIN_TESTS_PANEL_LISTENERS_H_
#define TAVRIN_TESTS_PANEL_LISTENERS_H_

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <httplib.h>

namespace panel {

// A server that can go away and come back at the same port.
class Listener {
 public:
  using MakeServer = std::function<std::unique_ptr<httplib::Server>()>;

  // Opens at once. Throws std::runtime_error when there is no port to have.
  explicit Listener(MakeServer make);
  ~Listener() { Close(); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  int port() const { return port_; }
  void Open();
  // Ends every connection; whoever comes now is refused by the system.
  void Close();

 private:
  MakeServer make_;
  int port_ = 0;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
};

// A port that belongs to this process, and at which nobody listens.
class ClosedPort {
 public:
  ClosedPort();
  ~ClosedPort();
  ClosedPort(const ClosedPort&) = delete;
  ClosedPort& operator=(const ClosedPort&) = delete;

  int port() const { return port_; }

 private:
  int socket_;
  int port_;
};

// A listener that never answers: its queue is full, so the system drops whoever knocks.
class DeafPort {
 public:
  DeafPort();
  ~DeafPort();
  DeafPort(const DeafPort&) = delete;
  DeafPort& operator=(const DeafPort&) = delete;

  int port() const { return port_; }

 private:
  std::vector<int> sockets_;  // the listener and those who fill its queue
  int port_;
};

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_LISTENERS_H_
