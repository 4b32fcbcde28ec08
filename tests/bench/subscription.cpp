#include "src/panel/subscription.h"

#include <openssl/evp.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/bench/figures.h"
#include "tests/bench/links.h"

namespace bench {
namespace {

const unsigned char* BytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
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

// From 10 on: one link is no subscription.
std::vector<std::size_t> LinkCounts(bool quick) {
  std::vector<std::size_t> counts = Sizes(10'000, false);
  counts.erase(counts.begin());
  counts.resize(quick ? 2 : counts.size());
  return counts;
}

}  // namespace

Cases SubscriptionBase64(bool quick) {
  Cases cases;
  for (const std::size_t links : LinkCounts(quick)) {
    const auto text = std::make_shared<const std::string>(Encode(Links(links)));
    cases.push_back({"service", links, [text, links] { Read(*text, links); }});
    cases.push_back(Decoder(text, links));
    cases.push_back(Copy(text, links));
  }
  return cases;
}

Cases SubscriptionPlain(bool quick) {
  Cases cases;
  for (const std::size_t links : LinkCounts(quick)) {
    const auto text = std::make_shared<const std::string>(Links(links));
    cases.push_back({"service", links, [text, links] { Read(*text, links); }});
    cases.push_back(Decoder(std::make_shared<const std::string>(Encode(*text)), links));
    cases.push_back(Copy(text, links));
  }
  return cases;
}

}  // namespace bench
