// The test panel as a test sees it. The launcher has started it and says in the environment where
// it listens; what it can be told stands in tests/panel/admin.h and tests/panel/behaviour.h.
#ifndef TAVRIN_TESTS_E2E_PANEL_HARNESS_PANEL_H_
#define TAVRIN_TESTS_E2E_PANEL_HARNESS_PANEL_H_

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/e2e/harness/expect.h"

namespace e2e {

using Json = nlohmann::ordered_json;

// What the panel knows from the start.
inline constexpr char kEmail[] = "user@tavrin.example";
inline constexpr char kPassword[] = "p+ss &wörd 密";
inline constexpr char kCredential[] = "Bearer 7QzKcXw1mUe5RtYh8JpLs2Vb9NdFg3Aa6Co4Ei0Uk7Wx5Zq8";
inline constexpr char kToken[] = "0f1e2d3c4b5a69788796a5b4c3d2e1f0";
inline constexpr char kUuid[] = "7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11";

struct ReceivedRequest {
  std::string listener;  // "http" or "https"
  std::string method;
  std::string target;
  Lines headers;
  std::string body;
};

class TestPanel {
 public:
  // Puts the panel back to its start. Throws std::runtime_error when there is none.
  TestPanel();

  std::uint16_t httpPort() const { return http_; }
  std::uint16_t httpsPort() const { return https_; }
  std::string http() const { return "http://127.0.0.1:" + std::to_string(http_); }
  std::string https() const { return "https://localhost:" + std::to_string(https_); }
  // Where nobody listens.
  std::string nowhere() const { return "http://127.0.0.1:" + std::to_string(closed_); }
  // Where somebody listens who never answers.
  std::string deaf() const { return "http://127.0.0.1:" + std::to_string(deaf_); }

  Json State() const;
  // The only user at the start.
  Json User() const { return State()["users"][0]; }
  // Replaces whole parts of the state.
  void Set(const Json& parts) const;
  // Changes fields of the first user.
  void SetUser(const Json& fields) const;
  // Adds a rule for the requests to come.
  void Behave(const Json& rule) const;
  void Answer(const std::string& path, int status, const std::string& body = "") const;
  void Pay(const std::string& tradeNo) const;
  void SetTls(const std::string& mode) const;
  void SetPort(const std::string& name, bool open) const;
  std::string Authority() const;

  std::vector<ReceivedRequest> Requests() const;
  void ForgetRequests() const;
  // The requests as lines: method, target, and the body if there is one.
  Lines Sequence() const;

 private:
  Json Ask(const std::string& method, const std::string& target, const Json& body = nullptr) const;

  std::uint16_t http_;
  std::uint16_t https_;
  std::uint16_t closed_;
  std::uint16_t deaf_;
  std::uint16_t admin_;
};

// The headers that the client has chosen, and expects of the others that they are the platform's.
Lines OwnHeaders(const ReceivedRequest& request);

}  // namespace e2e

#endif  // TAVRIN_TESTS_E2E_PANEL_HARNESS_PANEL_H_
