#include "tests/panel/recorder.h"

#include <sstream>

namespace panel {

Json DescribeRequest(const std::string& listener, const std::string& head,
                     const std::string& body) {
  std::istringstream lines(head);
  std::string method;
  std::string target;
  std::string line;
  lines >> method >> target;
  std::getline(lines, line);  // the rest of the request line
  Json headers = Json::array();
  while (std::getline(lines, line)) {
    if (line.ends_with('\r')) line.pop_back();
    if (!line.empty()) headers.push_back(line);
  }
  return {{"listener", listener},
          {"method", method},
          {"target", target},
          {"headers", headers},
          {"body", body}};
}

void Recorder::Add(Json request) {
  const std::lock_guard<std::mutex> lock(mutex_);
  requests_.push_back(std::move(request));
}

Json Recorder::All() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return requests_;
}

void Recorder::Forget() {
  const std::lock_guard<std::mutex> lock(mutex_);
  requests_.clear();
}

}  // namespace panel
