// A fixture for one HTTP call, with the arguments that most tests share.
#ifndef TAVRIN_TESTS_UNIT_PANEL_PANEL_CLIENT_TEST_H_
#define TAVRIN_TESTS_UNIT_PANEL_PANEL_CLIENT_TEST_H_

#include <string>
#include <utility>
#include <vector>

#include "src/panel/panel_client.h"
#include "tests/sim/fixture.h"

namespace vpn {

using Texts = std::vector<std::string>;

class HttpTest : public sim::MachineTest {
 protected:
  void Answer(sim::HttpAnswer answer) { machine.http.OnNext("GET", url, std::move(answer)); }

  // Takes over what the reply has: a body only with an answer, an error only with a failure.
  bool Keep(const PanelReply& reply) {
    status = reply.status;
    if (reply.answered) {
      response = reply.body;
    }
    EXPECT_TRUE(reply.answered || reply.body.empty());
    if (!reply.error.empty()) {
      error = reply.error;
    }
    return reply.ok();
  }
  bool Get() { return Get(L"https://panel.example/api/x?y=1"); }
  bool Get(const std::wstring& address) { return Keep(PanelClient{address}.get(L"")); }
  // The header block of one POST.
  std::string HeadersOf(const wchar_t* credential, const char* body, const wchar_t* contentType,
                        const wchar_t* userAgent) {
    machine.http.Forget();
    machine.http.OnNext("POST", url, {});
    const PanelClient client = {L"https://panel.example", credential, userAgent};
    EXPECT_TRUE(Keep(client.post(L"/api/x?y=1", body, contentType)));
    return machine.http.Requests().at(0).headers;
  }

  // What the last request came to; not empty before, to show what it leaves alone.
  std::string response = "earlier body";
  std::wstring error = L"earlier error";
  DWORD status = 777;

  const std::string url = "https://panel.example/api/x?y=1";
};

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_PANEL_PANEL_CLIENT_TEST_H_
