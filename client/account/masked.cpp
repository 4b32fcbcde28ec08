#include "client/account/masked.h"

#include <algorithm>

namespace vpn {

std::wstring MaskedEmail(const std::wstring& email) {
  const size_t sign = email.find(L'@');
  if (sign == std::wstring::npos) {
    return L"***";
  }
  return email.substr(0, std::min<size_t>(sign > 2 ? 2 : 1, sign)) + L"***" + email.substr(sign);
}

}  // namespace vpn
