#include "src/panel/subscription.h"

#include <openssl/evp.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/bench/figures.h"

namespace bench {
namespace {

// As a panel writes them: percent-encoded names, CR LF at the end of each.
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

const unsigned char* BytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Encode(const std::string& text) {
  std::vector<unsigned char> encoded((text.size() + 2) / 3 * 4 + 1);  // ends in a zero byte
  const int size = EVP_EncodeBlock(encoded.data(), BytesOf(text), static_cast<int>(text.size()));
  return {encoded.begin(), encoded.begin() + size};
}

void Read(const std::string& text, std::size_t links) {
  std::vector<vpn::NodeInfo> nodes;
  vpn::ParseSubscription(text, nodes);
  if (nodes.size() != links) {
    Fail("not every link became a node");
  }
}

Case Copy(const std::shared_ptr<const std::string>& text, std::size_t links) {
  return {"memcpy", links, [text, copy = std::string(*text)]() mutable {
            std::memcpy(copy.data(), text->data(), text->size());
            Keep(copy);
          }};
}

Case Decoder(const std::shared_ptr<const std::string>& text, std::size_t links) {
  return {
      "decoder", links, [text, decoded = std::vector<unsigned char>(text->size())]() mutable {
        if (EVP_DecodeBlock(decoded.data(), BytesOf(*text), static_cast<int>(text->size())) < 0) {
          Fail("the decoder refused the text");
        }
        Keep(decoded);
      }};
}

std::vector<std::size_t> Sizes(bool quick) {
  return quick ? std::vector<std::size_t>{10, 100} : std::vector<std::size_t>{10, 100, 1000, 10000};
}

}  // namespace

Figure SubscriptionBase64(bool quick) {
  Figure figure{"subscription-base64", {}};
  for (const std::size_t links : Sizes(quick)) {
    const auto text = std::make_shared<const std::string>(Encode(Links(links)));
    figure.cases.push_back({"service", links, [text, links] { Read(*text, links); }});
    figure.cases.push_back(Decoder(text, links));
    figure.cases.push_back(Copy(text, links));
  }
  return figure;
}

// Beside the decoder of the same links in base64: plain text has no decoder of its own.
Figure SubscriptionPlain(bool quick) {
  Figure figure{"subscription-plain", {}};
  for (const std::size_t links : Sizes(quick)) {
    const auto text = std::make_shared<const std::string>(Links(links));
    figure.cases.push_back({"service", links, [text, links] { Read(*text, links); }});
    figure.cases.push_back(Decoder(std::make_shared<const std::string>(Encode(*text)), links));
    figure.cases.push_back(Copy(text, links));
  }
  return figure;
}

}  // namespace bench
