// Holds Winsock open for a scope.
#ifndef TAVRIN_SRC_NET_WINSOCK_SCOPE_H_
#define TAVRIN_SRC_NET_WINSOCK_SCOPE_H_

#include <winsock2.h>
#include <ws2tcpip.h>

namespace vpn {

class WinsockScope {
 public:
  WinsockScope() {
    WSADATA data = {};
    open_ = WSAStartup(MAKEWORD(2, 2), &data) == 0;
  }
  WinsockScope(const WinsockScope&) = delete;
  WinsockScope& operator=(const WinsockScope&) = delete;
  ~WinsockScope() {
    if (open_) {
      (void)WSACleanup();
    }
  }

  bool isOpen() const { return open_; }

 private:
  bool open_ = false;
};

}  // namespace vpn

#endif  // TAVRIN_SRC_NET_WINSOCK_SCOPE_H_
