// Every request that the panel has received, as it came.
#ifndef TAVRIN_TESTS_PANEL_RECORDER_H_
#define TAVRIN_TESTS_PANEL_RECORDER_H_

#include <mutex>
#include <string>
#include <vector>

#include "tests/panel/replies.h"

namespace panel {

// "listener", "method", "target" (path and query), "headers" (the lines in the order received,
// without the request line) and "body".
Json DescribeRequest(const std::string& listener, const std::string& head, const std::string& body);

class Recorder {
 public:
  void Add(Json request);
  Json All() const;
  void Forget();

 private:
  mutable std::mutex mutex_;
  Json requests_ = Json::array();
};

}  // namespace panel

#endif  // TAVRIN_TESTS_PANEL_RECORDER_H_
