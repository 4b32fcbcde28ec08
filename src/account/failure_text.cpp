#include "src/account/failure_text.h"

#include <algorithm>

#include "src/common/number_text.h"
#include "src/common/text.h"
#include "src/panel/json_reader.h"

namespace vpn {

std::wstring MessageIn(const std::string& response) {
  return Utf8ToWide(JsonString(response, "message"));
}

std::wstring FirstText(std::initializer_list<std::wstring> texts) {
  const auto* const first =
      std::ranges::find_if(texts, [](const std::wstring& text) { return !text.empty(); });
  return first == texts.end() ? std::wstring() : *first;
}

std::wstring PanelErrorWithDetail(const std::wstring& text, const std::wstring& step,
                                  DWORD status) {
  std::wstring detailed = FirstText({text, L"请求失败"}) + L"（" + step;
  if (status != 0) {
    detailed += L" " + DecimalText(status);
  }
  return detailed + L"）";
}

}  // namespace vpn
