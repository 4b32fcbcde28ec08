// What the panel has been told to do with the next requests for a path instead of answering them.
#ifndef TAVRIN_TESTS_PANEL_BEHAVIOUR_H_
#define TAVRIN_TESTS_PANEL_BEHAVIOUR_H_

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <httplib.h>

#include "tests/panel/connection.h"
#include "tests/panel/replies.h"

namespace panel {

// Rules as the admin endpoint takes them, tried in the order in which they were given:
//   path    exactly this path, or "*" for any
//   times   for so many requests; without it, for all
//   do      one of
//     answer        `status` (200), `body` ("") and `type` (application/json)
//     html          a web page with `status` (200)
//     repeat        `body` over and over, `size` bytes in all, with `status` (200)
//     redirect      `status` (302) to `location`
//     chunked       the ordinary answer, chunked, in pieces of `piece` bytes (7)
//     hang          nothing at all, until the client gives up
//     hang-in-body  half of the ordinary answer, then nothing until the client gives up
//     cut           half of the ordinary answer, then the end of the connection
//     reset-in-body half of the ordinary answer, then a reset
//     reset         a reset instead of an answer
//     close         the end of the connection instead of an answer
//     garbage       bytes that are no HTTP, then the end of the connection
class Behaviours {
 public:
  void Add(Json rule);
  void Clear();
  // The rule for this request, which counts as used.
  std::optional<Json> Take(const std::string& path);

 private:
  std::mutex mutex_;
  std::vector<Json> rules_;
};

// Carries the rule out. `ordinary` gives the answer that the panel would have given; `stopped` ends
// every waiting.
void Misbehave(const Json& rule, const std::function<Reply()>& ordinary,
               const std::function<bool()>& stopped, Connection& connection,
               httplib::Response& response);

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_BEHAVIOUR_H_
