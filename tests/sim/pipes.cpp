#include "tests/sim/pipes.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tests/sim/text.h"

#include <win/errors.h>
#include <win/files.h>

namespace sim {
namespace {

using State = PipeInstance::State;

std::uint32_t TakeFrom(std::string& buffered, char* buffer, std::uint32_t size) {
  const std::uint32_t count = static_cast<std::uint32_t>(std::min<size_t>(size, buffered.size()));
  std::memcpy(buffer, buffered.data(), count);
  buffered.erase(0, count);
  return count;
}

std::uint32_t PutInto(std::string& buffered, std::uint32_t quota, const char* bytes,
                      std::uint32_t size, std::uint32_t* count) {
  const size_t room = quota > buffered.size() ? quota - buffered.size() : 0;
  *count = static_cast<std::uint32_t>(std::min<size_t>(size, room));
  buffered.append(bytes, *count);
  return *count == size ? 0 : kPending;
}

}  // namespace

std::uint32_t PipeServerEnd::StartConnect() {
  switch (instance->state) {
    case State::kConnected:
      return ERROR_PIPE_CONNECTED;
    case State::kClosing:
      return ERROR_NO_DATA;
    default:
      instance->state = State::kListening;
      instance->awaited = true;
      return kPending;
  }
}

std::uint32_t PipeServerEnd::Disconnect() {
  switch (instance->state) {
    case State::kListening:
      return ERROR_PIPE_LISTENING;
    case State::kDisconnected:
      return ERROR_PIPE_NOT_CONNECTED;
    default:
      instance->state = State::kDisconnected;
      instance->toClient.clear();
      instance->toServer.clear();
      return 0;
  }
}

std::uint32_t PipeServerEnd::Read(char* buffer, std::uint32_t size, std::uint32_t* count) {
  *count = 0;
  if (instance->state == State::kListening) {
    return ERROR_PIPE_LISTENING;
  }
  if (instance->state == State::kDisconnected) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  if (instance->toServer.empty()) {
    return instance->state == State::kClosing ? ERROR_BROKEN_PIPE : kPending;
  }
  *count = TakeFrom(instance->toServer, buffer, size);
  return 0;
}

std::uint32_t PipeServerEnd::Write(const char* bytes, std::uint32_t size, std::uint32_t* count) {
  *count = 0;
  switch (instance->state) {
    case State::kListening:
      return ERROR_PIPE_LISTENING;
    case State::kDisconnected:
      return ERROR_PIPE_NOT_CONNECTED;
    case State::kClosing:
      return ERROR_NO_DATA;
    case State::kConnected:
      break;
  }
  return PutInto(instance->toClient, instance->settings.outBuffer, bytes, size, count);
}

std::uint32_t PipeServerEnd::Flush() {
  if (instance->state == State::kDisconnected) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  return instance->toClient.empty() ? 0 : kPending;  // a client that closes drops what is left
}

std::uint32_t PipeClientEnd::Read(char* buffer, std::uint32_t size, std::uint32_t* count) {
  *count = 0;
  if (!IsCurrent() || instance->state == State::kDisconnected) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  if (instance->toClient.empty()) {
    return instance->serverOpen ? kPending : ERROR_BROKEN_PIPE;
  }
  *count = TakeFrom(instance->toClient, buffer, size);
  return 0;
}

std::uint32_t PipeClientEnd::Write(const char* bytes, std::uint32_t size, std::uint32_t* count) {
  *count = 0;
  if (!IsCurrent() || instance->state == State::kDisconnected) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  if (!instance->serverOpen) {
    return ERROR_NO_DATA;
  }
  return PutInto(instance->toServer, instance->settings.inBuffer, bytes, size, count);
}

std::uint32_t PipeClientEnd::Flush() {
  if (!IsCurrent() || instance->state == State::kDisconnected) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  return !instance->serverOpen || instance->toServer.empty() ? 0 : kPending;
}

std::uint32_t PipeClientEnd::Peek(std::uint32_t* available) const {
  if (!IsCurrent() || instance->state == State::kDisconnected) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  *available = static_cast<std::uint32_t>(instance->toClient.size());
  return instance->serverOpen || *available > 0 ? 0 : ERROR_BROKEN_PIPE;
}

void PipeClientEnd::Close() {
  if (IsCurrent() && instance->state == State::kConnected) {
    instance->state = State::kClosing;
    instance->toClient.clear();
  }
}

std::vector<PipeSettings> Pipes::Created() const {
  const MachineLock lock = core_.Lock();
  return created_;
}

void Pipes::AddForeign(const std::wstring& name) {
  const MachineLock lock = core_.Lock();
  const auto foreign = std::make_shared<PipeInstance>();
  foreign->state = State::kDisconnected;
  foreign->settings.maxInstances = 1;
  instances_[Fold(name)].push_back(foreign);
}

size_t Pipes::CountAwaited(const std::wstring& name) const {
  const MachineLock lock = core_.Lock();
  const auto instances = InstancesOf(name);
  return static_cast<size_t>(
      std::count_if(instances.begin(), instances.end(), [](const auto& instance) {
        return instance->awaited && instance->state == State::kListening;
      }));
}

void Pipes::LimitNextTransfer(std::uint32_t bytes) {
  const MachineLock lock = core_.Lock();
  limits_.push_back(bytes);
}

std::uint32_t Pipes::TakeLimit(std::uint32_t count) {
  const MachineLock lock = core_.Lock();
  if (limits_.empty()) {
    return count;
  }
  const std::uint32_t limit = limits_.front();
  limits_.pop_front();
  return std::min(count, limit);
}

std::vector<std::shared_ptr<PipeInstance>> Pipes::InstancesOf(const std::wstring& name) const {
  std::vector<std::shared_ptr<PipeInstance>> open;
  if (const auto found = instances_.find(Fold(name)); found != instances_.end()) {
    for (const auto& instance : found->second) {
      if (instance->serverOpen) {
        open.push_back(instance);
      }
    }
  }
  return open;
}

std::uint32_t Pipes::Create(const std::wstring& name, PipeSettings settings,
                            std::shared_ptr<PipeServerEnd>* server) {
  const MachineLock lock = core_.Lock();
  if (Fold(name).rfind(L"\\\\.\\PIPE\\", 0) != 0) {
    return ERROR_INVALID_NAME;
  }
  const auto others = InstancesOf(name);
  if (!others.empty() && (settings.openMode & FILE_FLAG_FIRST_PIPE_INSTANCE) != 0) {
    return ERROR_ACCESS_DENIED;
  }
  // The first instance's limit is the one that counts.
  if (!others.empty() && others.size() >= others.front()->settings.maxInstances) {
    return ERROR_PIPE_BUSY;
  }
  const auto instance = std::make_shared<PipeInstance>();
  instance->settings = settings;
  created_.push_back(std::move(settings));
  instances_[Fold(name)].push_back(instance);
  *server = std::make_shared<PipeServerEnd>();
  (*server)->instance = instance;
  core_.changed.notify_all();
  return 0;
}

std::uint32_t Pipes::Connect(const std::wstring& name, std::shared_ptr<PipeClientEnd>* client) {
  const MachineLock lock = core_.Lock();
  const auto instances = InstancesOf(name);
  if (instances.empty()) {
    return ERROR_FILE_NOT_FOUND;
  }
  for (const auto& instance : instances) {
    if (instance->state == State::kListening) {
      instance->state = State::kConnected;
      *client = std::make_shared<PipeClientEnd>();
      (*client)->instance = instance;
      (*client)->connection = ++instance->connection;
      core_.changed.notify_all();
      return 0;
    }
  }
  return ERROR_PIPE_BUSY;
}

}  // namespace sim
