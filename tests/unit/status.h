#ifndef TAVRIN_TESTS_UNIT_STATUS_H_
#define TAVRIN_TESTS_UNIT_STATUS_H_

#include <string>

#include "src/common/status.h"

namespace unit {

// True for success. The text of a failure goes to `error`, which a success leaves as it is.
inline bool Succeeds(const vpn::Status& status, std::wstring& error) {
  if (!status) {
    error = status.text();
  }
  return static_cast<bool>(status);
}

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_STATUS_H_
