#include "tests/panel/panel_server.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

#include <chrono>
#include <ctime>
#include <thread>
#include <utility>
#include <vector>

namespace panel {
namespace {

// A thread for each connection. With a fixed number of them, clients that keep connections open
// would shut the others out without a word.
class ThreadPerConnection : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> task) override { threads_.emplace_back(std::move(task)); }
  void shutdown() override {
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

 private:
  std::vector<std::thread> threads_;
};

// Now, as HTTP writes it.
std::string DateText() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  (void)gmtime_r(&now, &parts);
  char text[64] = {};
  (void)std::strftime(text, sizeof(text), "%a, %d %b %Y %H:%M:%S GMT", &parts);
  return text;
}

// The connection whose request this thread serves; the library doesn't hand it on.
thread_local Connection* Current = nullptr;

// Reads the client's greeting, since a reset would go out with it unread, and refuses it with the
// alert "handshake failure".
void RefuseHandshake(socket_t socket) {
  char greeting[4096];
  (void)recv(socket, greeting, sizeof(greeting), 0);
  constexpr char kAlert[] = {0x15, 0x03, 0x03, 0x00, 0x02, 0x02, 0x28};
  (void)send(socket, kAlert, sizeof(kAlert), MSG_NOSIGNAL);
}

}  // namespace

void TlsSettings::Change(TlsMode newMode) {
  mode = newMode;
  ++changes;
  while (connections > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

PanelServer::PanelServer(std::string name, Panel& panel, TlsSettings* tls)
    : name_(std::move(name)), panel_(panel), tls_(tls) {
  new_task_queue = [] { return new ThreadPerConnection; };
  set_tcp_nodelay(true);
  set_socket_options([](socket_t socket) {  // without sharing the port, which is the default
    const int yes = 1;
    (void)setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  });
  const auto serve = [this](const httplib::Request& request, httplib::Response& response) {
    Serve(request, response);
  };
  Get(".*", serve);
  Post(".*", serve);
  set_post_routing_handler([](const httplib::Request&, httplib::Response& response) {
    response.set_header("Date", DateText());
  });
}

TlsPointer PanelServer::Handshake(socket_t socket) const {
  TlsPointer none(nullptr, SSL_free);
  const TlsMode mode = tls_->mode;
  if (mode == TlsMode::kRefused) {
    RefuseHandshake(socket);
    return none;
  }
  const Certificates& certificates = tls_->certificates;
  TlsPointer connection(
      SSL_new((mode == TlsMode::kTrusted ? certificates.trusted : certificates.untrusted).get()),
      SSL_free);
  SSL_set_fd(connection.get(), socket);
  return SSL_accept(connection.get()) == 1 ? std::move(connection) : std::move(none);
}

bool PanelServer::process_and_close_socket(socket_t socket) {
  if (tls_ == nullptr) {
    Connection connection(socket, TlsPointer(nullptr, SSL_free));
    Converse(connection, [this] { return IsStopping(); });
    return true;
  }
  ++tls_->connections;
  {
    const unsigned changes = tls_->changes;
    Connection connection(socket, Handshake(socket));
    const auto outdated = [&] { return IsStopping() || tls_->changes != changes; };
    if (connection.IsSecure()) Converse(connection, outdated);
  }
  --tls_->connections;
  return true;
}

void PanelServer::Converse(Connection& connection, const std::function<bool()>& stopped) {
  Current = &connection;
  bool closed = false;
  while (!closed && !connection.finished() && connection.AwaitRequest(stopped)) {
    if (!process_request(connection, false, closed, [](httplib::Request&) {})) break;
  }
  // An idle connection ends without a word: what a TLS client has been told and not yet read would
  // make it look alive.
  if (!closed) connection.Finish();
  Current = nullptr;
}

void PanelServer::Serve(const httplib::Request& request, httplib::Response& response) {
  panel_.recorder.Add(DescribeRequest(name_, Current->Head(), request.body));
  const auto ordinary = [&] { return panel_.Answer(request); };
  if (const auto rule = panel_.behaviours.Take(request.path)) {
    Misbehave(
        *rule, ordinary, [this] { return IsStopping(); }, *Current, response);
    return;
  }
  const Reply reply = ordinary();
  response.status = reply.status;
  response.set_content(reply.body, reply.type);
}

}  // namespace panel
