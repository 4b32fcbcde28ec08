#include "tests/sim/console.h"

#include <algorithm>

namespace sim {

Console::Console(Core& core, Streams& streams)
    : core_(core),
      output_(streams.OpenConsole(&outputText_)),
      errors_(streams.OpenConsole(&errorText_)) {}

Console::~Console() {
  (void)std::fclose(output_);
  (void)std::fclose(errors_);
}

std::string Console::Output() const {
  const MachineLock lock = core_.Lock();
  return outputText_;
}

std::string Console::Errors() const {
  const MachineLock lock = core_.Lock();
  return errorText_;
}

std::vector<std::uint32_t> Console::CodePages() const {
  const MachineLock lock = core_.Lock();
  return codePages_;
}

bool Console::Send(std::uint32_t event) {
  MachineLock lock = core_.Lock();
  const std::vector<Handler> handlers = handlers_;
  lock.unlock();  // a handler uses the platform
  return std::any_of(handlers.rbegin(), handlers.rend(),
                     [event](Handler handler) { return handler(event) != 0; });
}

std::string Console::TakeInput(size_t count) {
  const MachineLock lock = core_.Lock();
  const std::string bytes = input.substr(0, count);
  input.erase(0, bytes.size());
  return bytes;
}

void Console::Append(const void* handle, const std::string& bytes) {
  const MachineLock lock = core_.Lock();
  (handle == OutputHandle() ? outputText_ : errorText_) += bytes;
}

void Console::SetCodePage(std::uint32_t codePage) {
  const MachineLock lock = core_.Lock();
  codePages_.push_back(codePage);
}

void Console::AddHandler(Handler handler) {
  const MachineLock lock = core_.Lock();
  handlers_.push_back(handler);
}

bool Console::RemoveHandler(Handler handler) {
  const MachineLock lock = core_.Lock();
  return std::erase(handlers_, handler) != 0;
}

}  // namespace sim
