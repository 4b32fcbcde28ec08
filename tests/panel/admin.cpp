#include "tests/panel/admin.h"

#include <functional>
#include <stdexcept>

namespace panel {
namespace {

using Deed = std::function<void(const Json&)>;

// Carries out what the body says.
httplib::Server::Handler Doing(Deed deed) {
  return [deed = std::move(deed)](const httplib::Request& request, httplib::Response& response) {
    try {
      deed(request.body.empty() ? Json::object() : Json::parse(request.body));
      response.set_content("{}", "application/json");
    } catch (const std::exception& failure) {
      response.status = 400;
      response.set_content(failure.what(), "text/plain");
    }
  };
}

httplib::Server::Handler Showing(std::function<Json()> what) {
  return [what = std::move(what)](const httplib::Request&, httplib::Response& response) {
    response.set_content(what().dump(), "application/json");
  };
}

void SetTlsMode(TlsSettings& tls, const std::string& mode) {
  if (mode != "trusted" && mode != "untrusted" && mode != "refused") {
    throw std::invalid_argument("no such mode: " + mode);
  }
  tls.Change(mode == "trusted"     ? TlsMode::kTrusted
             : mode == "untrusted" ? TlsMode::kUntrusted
                                   : TlsMode::kRefused);
}

void SetPort(const Ports& ports, const Json& wish) {
  const std::string name = wish.at("name");
  if (name != "http" && name != "https") throw std::invalid_argument("no such port: " + name);
  Listener& listener = name == "http" ? ports.http : ports.https;
  if (wish.at("open").get<bool>()) {
    listener.Open();
  } else {
    listener.Close();
  }
}

void ResetAll(Panel& panel, const Ports& ports) {
  ports.http.Open();
  ports.https.Open();
  SetTlsMode(ports.tls, "trusted");
  panel.Reset();
}

void Pay(Panel& panel, const std::string& tradeNo) {
  if (!panel.Pay(tradeNo)) throw std::invalid_argument("no open order " + tradeNo);
}

}  // namespace

std::unique_ptr<httplib::Server> MakeAdminServer(Panel& panel, const Ports& ports) {
  auto server = std::make_unique<httplib::Server>();
  server->Get("/state", Showing([&panel] { return panel.State(); }));
  server->Get("/requests", Showing([&panel] { return panel.recorder.All(); }));
  server->Post("/state", Doing([&panel](const Json& parts) { panel.SetState(parts); }));
  server->Post("/reset", Doing([&panel, ports](const Json&) { ResetAll(panel, ports); }));
  server->Post("/requests/forget", Doing([&panel](const Json&) { panel.recorder.Forget(); }));
  server->Post("/behave", Doing([&panel](const Json& rule) { panel.behaviours.Add(rule); }));
  server->Post("/pay", Doing([&panel](const Json& order) { Pay(panel, order.at("trade_no")); }));
  server->Post("/tls",
               Doing([ports](const Json& wish) { SetTlsMode(ports.tls, wish.at("mode")); }));
  server->Post("/port", Doing([ports](const Json& wish) { SetPort(ports, wish); }));
  server->Get("/authority", [ports](const httplib::Request&, httplib::Response& response) {
    response.set_content(ports.tls.certificates.authority, "application/pkix-cert");
  });
  return server;
}

}  // namespace panel
