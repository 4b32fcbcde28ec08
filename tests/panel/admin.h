// How tests talk to the panel, on a port of its own:
//   GET  /state             the whole state
//   POST /state             replaces the parts that the body names
//   POST /reset             state as at the start; no record, no rules; all ports open and trusted
//   GET  /requests          the record of requests
//   POST /requests/forget
//   POST /behave            adds the rule in the body (behaviour.h)
//   POST /pay               the order "trade_no" has been paid
//   POST /tls               "mode": trusted, untrusted or refused
//   POST /port              "name": http or https, "open": true or false
//   GET  /authority         the certificate authority, in DER
// Whatever can't be done is answered with 400 and the reason.
#ifndef TAVRIN_TESTS_PANEL_ADMIN_H_
#define TAVRIN_TESTS_PANEL_ADMIN_H_

#include <memory>

#include "tests/panel/listeners.h"
#include "tests/panel/panel_server.h"

namespace panel {

struct Ports {
  Listener& http;
  Listener& https;
  TlsSettings& tls;
};

std::unique_ptr<httplib::Server> MakeAdminServer(Panel& panel, const Ports& ports);

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_ADMIN_H_
