// What may be shown of a person's data.
#ifndef TAVRIN_CLIENT_ACCOUNT_MASKED_H_
#define TAVRIN_CLIENT_ACCOUNT_MASKED_H_

#include <string>

namespace vpn {

// "so***@mail.example": at most two characters in front of the sign.
std::wstring MaskedEmail(const std::wstring& email);

}  // namespace vpn

#endif  // TAVRIN_CLIENT_ACCOUNT_MASKED_H_
