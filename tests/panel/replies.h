// What the panels' answers look like: envelopes, statuses and the way that JSON is written.
#ifndef TAVRIN_TESTS_PANEL_REPLIES_H_
#define TAVRIN_TESTS_PANEL_REPLIES_H_

#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace panel {

// Keeps the order of keys, which is part of what the product's scanners meet.
using Json = nlohmann::ordered_json;

struct Reply {
  int status = 200;
  std::string type = "application/json";
  std::string body;
};

// Without blanks, Chinese as \uXXXX in lower case, a slash as \/.
std::string Dump(const Json& value);
// As the framework writes exceptions: four blanks, and slashes as they are.
std::string DumpPretty(const Json& value);

// Any answer without an envelope.
Reply Plain(int status, const Json& value);

// The envelopes differ between the two families of panels, "xboard" and "v2board"; the state's
// "family" says which this one is, and its "quotedNumbers" has whole numbers come as texts.
Reply Success(const Json& state, const Json& data);
// In the second family every refusal is an exception with status 500.
Reply Refusal(const Json& state, int status, const std::string& message);
Reply SignedOut(const Json& state);
// Rendered by the framework in both families.
Reply Thrown(int status, const std::string& message);
// Field validation: pairs of a field's name and its complaint, at least one.
Reply Invalid(const Json& state,
              const std::vector<std::pair<std::string, std::string>>& complaints);

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_REPLIES_H_
