// The HTTP API of the panel, or of the device service beside it.
#ifndef TAVRIN_SRC_PANEL_PANEL_CLIENT_H_
#define TAVRIN_SRC_PANEL_PANEL_CLIENT_H_

#include <string>

#include "src/panel/http_request.h"

namespace vpn {

// Paths begin with a slash and are appended to the base address. Every request carries the
// credential unless it is empty.
struct PanelClient {
  std::wstring base;        // with scheme, without a slash at its end
  std::wstring credential;  // empty means signed out

  [[nodiscard]] HttpReply get(const std::wstring& path) const;

  // A JSON body.
  [[nodiscard]] HttpReply post(const std::wstring& path, const std::string& json) const;

  // A body of percent-encoded pairs.
  [[nodiscard]] HttpReply postForm(const std::wstring& path, const std::string& pairs) const;

  // For requests that carry no credential.
  PanelClient signedOut() const { return {base, {}}; }
};

}  // namespace vpn

#endif  // TAVRIN_SRC_PANEL_PANEL_CLIENT_H_
