// Named pipes in byte mode.
#ifndef TAVRIN_TESTS_SIM_PIPES_H_
#define TAVRIN_TESTS_SIM_PIPES_H_

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/sim/core.h"
#include "tests/sim/handles.h"

namespace sim {

// How an instance was created: what a test asserts of it.
struct PipeSettings {
  std::string name;
  std::uint32_t openMode = 0;
  std::uint32_t pipeMode = 0;
  std::uint32_t maxInstances = 0;
  std::uint32_t outBuffer = 0;
  std::uint32_t inBuffer = 0;
  std::uint32_t defaultTimeOut = 0;
  std::string securityDescriptor;  // the text that it was converted from; empty: none
  bool inherit = false;
  std::uint32_t attributesLength = 0;  // the length that the security attributes say of themselves
};

struct PipeInstance {
  enum class State {
    kListening,
    kConnected,
    kClosing,       // the client has closed its end
    kDisconnected,  // by the server; no client gets in before the next ConnectNamedPipe
  };
  PipeSettings settings;
  State state = State::kListening;
  std::uint64_t connection = 0;  // counts the clients, so that an old client's end is told apart
  bool serverOpen = true;
  bool awaited = false;  // the server is in ConnectNamedPipe, or was
  std::string toServer;
  std::string toClient;
};

// Codes are Win32 errors; 0 is success. `kPending` says that the call would block.
constexpr std::uint32_t kPending = 0xFFFFFFFF;

struct PipeServerEnd : Object {
  std::string Describe() const override { return "pipe"; }
  void OnLastHandleClosed() override { instance->serverOpen = false; }
  std::shared_ptr<PipeInstance> instance;

  std::uint32_t StartConnect();
  bool IsConnected() const { return instance->state != PipeInstance::State::kListening; }
  std::uint32_t Disconnect();
  std::uint32_t Read(char* buffer, std::uint32_t size, std::uint32_t* count);
  // Takes as much as the buffer has room for.
  std::uint32_t Write(const char* bytes, std::uint32_t size, std::uint32_t* count);
  std::uint32_t Flush();
};

struct PipeClientEnd : Object {
  std::string Describe() const override { return "pipe client"; }
  void OnLastHandleClosed() override { Close(); }
  std::shared_ptr<PipeInstance> instance;
  std::uint64_t connection = 0;

  bool IsCurrent() const { return instance->connection == connection; }
  std::uint32_t Read(char* buffer, std::uint32_t size, std::uint32_t* count);
  std::uint32_t Write(const char* bytes, std::uint32_t size, std::uint32_t* count);
  std::uint32_t Flush();
  // How many bytes wait to be read.
  std::uint32_t Peek(std::uint32_t* available) const;
  void Close();
};

// What CreatePipe makes: the two ends of one stream of bytes.
struct AnonymousPipe {
  std::string bytes;
  size_t size = 0;        // that the product's writes have to fit in
  bool hasWriter = true;  // an end in this process or a child that inherited it
};
struct AnonymousReader : Object {
  std::string Describe() const override { return "pipe's reading end"; }
  std::shared_ptr<AnonymousPipe> pipe;
};
struct AnonymousWriter : Object {
  std::string Describe() const override { return "pipe's writing end"; }
  std::shared_ptr<AnonymousPipe> pipe;
};

class Pipes {
 public:
  explicit Pipes(Core& core) : core_(core) {}

  // Every instance that was ever created, in order.
  std::vector<PipeSettings> Created() const;
  // Another program's server of this name: an instance that stays busy for ever.
  void AddForeign(const std::wstring& name);
  // How many servers of this name wait for a client in ConnectNamedPipe. One that has created its
  // instance and has not come there yet would miss a client that leaves at once.
  size_t CountAwaited(const std::wstring& name) const;
  // The next ReadFile or WriteFile of the product moves at most so many bytes, and with 0 succeeds
  // with none. Several queue up.
  void LimitNextTransfer(std::uint32_t bytes);

  std::uint32_t Create(const std::wstring& name, PipeSettings settings,
                       std::shared_ptr<PipeServerEnd>* server);
  std::uint32_t Connect(const std::wstring& name, std::shared_ptr<PipeClientEnd>* client);
  // How many of `count` bytes the next transfer may move.
  std::uint32_t TakeLimit(std::uint32_t count);

 private:
  std::vector<std::shared_ptr<PipeInstance>> InstancesOf(const std::wstring& name) const;

  Core& core_;
  std::map<std::wstring, std::vector<std::shared_ptr<PipeInstance>>> instances_;
  std::vector<PipeSettings> created_;
  std::deque<std::uint32_t> limits_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_PIPES_H_
