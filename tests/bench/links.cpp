#include "tests/bench/links.h"

#include <openssl/evp.h>

#include <vector>

namespace bench {

std::string Links(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += "vless://7b1f6c0e-3a52-4d6b-9a53-6a1f9d3a2c11@n" + std::to_string(i) +
            ".node.example:443?mode=multi&security=reality&encryption=none&type=tcp"
            "&flow=xtls-rprx-vision&pbk=K3yAbcdefghijklmnopqrstuvwxyz0123456789-_ABC&sid=01ab"
            "&sni=www.site.example&servername=www.site.example&spx=%2F&fp=chrome"
            "#%E9%A6%99%E6%B8%AF+" +
            std::to_string(i) + "\r\n";
  }
  return text;
}

std::wstring LastName(std::size_t count) {
  return L"香港 " + std::to_wstring(count - 1);
}

std::string Encode(const std::string& text) {
  std::vector<unsigned char> encoded((text.size() + 2) / 3 * 4 + 1);  // ends in a zero byte
  const int size =
      EVP_EncodeBlock(encoded.data(), reinterpret_cast<const unsigned char*>(text.data()),
                      static_cast<int>(text.size()));
  return {encoded.begin(), encoded.begin() + size};
}

}  // namespace bench
