// A fixture for one HTTP call, with the arguments that most tests share.
#ifndef TAVRIN_TESTS_UNIT_PANEL_HTTP_TEST_H_
#define TAVRIN_TESTS_UNIT_PANEL_HTTP_TEST_H_

#include <string>
#include <utility>
#include <vector>

#include "src/panel/http_request.h"
#include "tests/sim/fixture.h"

namespace vpn {

using Texts = std::vector<std::string>;

class HttpTest : public sim::MachineTest {
 protected:
  void Answer(sim::HttpAnswer answer) { machine.http.OnNext("GET", url, std::move(answer)); }

  bool Get() {
    return HttpRequest(L"GET", L"https://panel.example/api/x?y=1", L"", "", L"", response, error,
                       nullptr, &status);
  }
  // The header block of one POST.
  std::string HeadersOf(const wchar_t* authorization, const char* body, const wchar_t* contentType,
                        const wchar_t* userAgent) {
    machine.http.Forget();
    machine.http.OnNext("POST", url, {});
    EXPECT_TRUE(HttpRequest(L"POST", L"https://panel.example/api/x?y=1", authorization, body,
                            contentType, response, error, userAgent, &status));
    return machine.http.Requests().at(0).headers;
  }

  // Outputs as a caller may pass them: not empty.
  std::string response = "earlier body";
  std::wstring error = L"earlier error";
  DWORD status = 777;

  const std::string url = "https://panel.example/api/x?y=1";
};

}  // namespace vpn

#endif  // TAVRIN_TESTS_UNIT_PANEL_HTTP_TEST_H_
