// One port of the panel: the HTTP library reads requests and writes answers, and what the library
// can't do is done on the connection below it.
#ifndef TAVRIN_TESTS_PANEL_PANEL_SERVER_H_
#define TAVRIN_TESTS_PANEL_PANEL_SERVER_H_

#include <atomic>
#include <string>

#include <httplib.h>

#include "tests/panel/certificates.h"
#include "tests/panel/connection.h"
#include "tests/panel/panel.h"

namespace panel {

enum class TlsMode { kTrusted, kUntrusted, kRefused };

// What the TLS port shows. A change ends the connections that were made before it.
struct TlsSettings {
  Certificates certificates = MakeCertificates();
  std::atomic<TlsMode> mode = TlsMode::kTrusted;
  std::atomic<unsigned> changes = 0;
  std::atomic<int> connections = 0;

  // Returns when no connection of the old kind is left.
  void Change(TlsMode newMode);
};

class PanelServer : public httplib::Server {
 public:
  // `name` is what the record of requests says. Plain HTTP when `tls` is null.
  PanelServer(std::string name, Panel& panel, TlsSettings* tls);

 private:
  bool process_and_close_socket(socket_t socket) override;
  // Serves one request after the other.
  void Converse(Connection& connection, const std::function<bool()>& stopped);
  void Serve(const httplib::Request& request, httplib::Response& response);
  // Null when there is no TLS connection in the end.
  TlsPointer Handshake(socket_t socket) const;
  bool IsStopping() const { return svr_sock_ == INVALID_SOCKET; }

  std::string name_;
  Panel& panel_;
  TlsSettings* tls_;
};

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_PANEL_SERVER_H_
