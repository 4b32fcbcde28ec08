// Named pipes, and the security descriptors that they get.
#include "tests/sim/call.h"
#include "tests/sim/file_handle.h"
#include "tests/sim/text.h"

#include <windows.h>

#include <algorithm>
#include <functional>

using sim::Arg;
using sim::Call;
using sim::kPending;

namespace {

constexpr DWORD kUnknownRevision = 1305;
constexpr DWORD kInvalidDescriptor = 1338;

// Repeats `step` until it does not give kPending any more, really blocking in between.
std::uint32_t Repeat(Call& call, const std::function<std::uint32_t()>& step) {
  std::uint32_t error = step();
  if (error == kPending) {
    call.Block([&] {
      error = step();
      return error != kPending;
    });
  }
  call->core().changed.notify_all();
  return error;
}

BOOL Finish(const Call& call, std::uint32_t error) {
  return error == 0 ? TRUE : call.Fail(FALSE, error);
}

// Reads or writes through whichever end of a pipe the handle is.
template <class Operation>
std::uint32_t OnEnd(Call& call, HANDLE file, const Operation& operation) {
  const auto object = call.Kernel<sim::Object>(file);
  if (const auto server = std::dynamic_pointer_cast<sim::PipeServerEnd>(object)) {
    return operation(*server);
  }
  if (const auto client = std::dynamic_pointer_cast<sim::PipeClientEnd>(object)) {
    return operation(*client);
  }
  return ERROR_INVALID_HANDLE;
}

template <class End>
std::uint32_t WriteAll(Call& call, End& end, const char* bytes, DWORD count, DWORD* written) {
  return Repeat(call, [&] {
    DWORD taken = 0;
    const std::uint32_t error = end.Write(bytes + *written, count - *written, &taken);
    *written += taken;
    if (taken > 0) {
      call->core().changed.notify_all();
    }
    return error;
  });
}

// Nobody reads meanwhile, so what does not fit would block for ever.
BOOL WriteAnonymous(Call& call, sim::AnonymousPipe& pipe, std::string_view bytes, DWORD* written) {
  if (pipe.bytes.size() + bytes.size() > pipe.size) {
    call->AddViolation("a write of " + std::to_string(bytes.size()) + " bytes would block");
    return call.Fail(FALSE, ERROR_NO_DATA);
  }
  pipe.bytes += bytes;
  *written = static_cast<DWORD>(bytes.size());
  return TRUE;
}

sim::PipeSettings SettingsOf(const Call& call, LPCWSTR name,
                             const SECURITY_ATTRIBUTES* attributes) {
  sim::PipeSettings settings;
  settings.name = sim::Narrow(name);
  if (attributes != nullptr) {
    settings.attributesLength = attributes->nLength;
    settings.inherit = attributes->bInheritHandle != FALSE;
    const auto text = call->resources.Find(attributes->lpSecurityDescriptor, sim::kDescriptor);
    if (text) {
      settings.securityDescriptor = sim::Narrow(*std::static_pointer_cast<std::wstring>(text));
    }
  }
  return settings;
}

}  // namespace

BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR text, DWORD revision,
                                                          PSECURITY_DESCRIPTOR* descriptor,
                                                          ULONG* size) {
  Call call("ConvertStringSecurityDescriptorToSecurityDescriptorW", {text, revision});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (revision != SDDL_REVISION_1) {
    return call.Fail(FALSE, kUnknownRevision);
  }
  if (std::wstring(text).find(L':') == std::wstring::npos) {
    return call.Fail(FALSE, kInvalidDescriptor);
  }
  const auto owner = std::make_shared<std::wstring>(text);
  *descriptor = owner.get();
  if (size != nullptr) {
    *size = static_cast<ULONG>(owner->size());
  }
  call.Track(owner.get(), sim::kDescriptor, owner);
  return TRUE;
}

DWORD GetNamedSecurityInfoW(LPCWSTR name, SE_OBJECT_TYPE type, DWORD information, LPVOID* /*owner*/,
                            LPVOID* /*group*/, LPVOID* /*dacl*/, LPVOID* /*sacl*/,
                            PSECURITY_DESCRIPTOR* descriptor) {
  Call call("GetNamedSecurityInfoW", {name});
  if (call.failed()) {
    return call.code();
  }
  const auto node = call->files.Find(name);
  if (!node || type != SE_FILE_OBJECT || (information & DACL_SECURITY_INFORMATION) == 0) {
    return node ? ERROR_INVALID_PARAMETER : ERROR_FILE_NOT_FOUND;
  }
  constexpr char kProgramFiles[] =
      "O:BAD:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)";
  const auto owner = std::make_shared<std::wstring>(
      sim::Widen(node->accessList.empty() ? kProgramFiles : node->accessList));
  *descriptor = owner.get();
  call.Track(owner.get(), sim::kDescriptor, owner);
  return 0;
}

BOOL ConvertSecurityDescriptorToStringSecurityDescriptorW(PSECURITY_DESCRIPTOR descriptor,
                                                          DWORD /*revision*/, DWORD /*information*/,
                                                          LPWSTR* text, ULONG* /*size*/) {
  Call call("ConvertSecurityDescriptorToStringSecurityDescriptorW");
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto known = call->resources.Find(descriptor, sim::kDescriptor);
  if (!known) {
    return call.Fail(FALSE, ERROR_INVALID_PARAMETER);
  }
  const auto copy = std::make_shared<std::wstring>(*std::static_pointer_cast<std::wstring>(known));
  *text = copy->data();
  call.Track(copy->data(), sim::kDescriptor, copy);
  return TRUE;
}

HLOCAL LocalFree(HLOCAL memory) {
  Call call("LocalFree");
  if (call.failed()) {
    return call.Fail(memory);
  }
  if (memory != nullptr && !call->resources.Release(memory, sim::kDescriptor, call.name())) {
    return call.Fail(memory, ERROR_INVALID_HANDLE);
  }
  return nullptr;
}

BOOL CreatePipe(HANDLE* reading, HANDLE* writing, SECURITY_ATTRIBUTES* attributes, DWORD size) {
  Call call("CreatePipe", {attributes->bInheritHandle, size});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto reader = std::make_shared<sim::AnonymousReader>();
  const auto writer = std::make_shared<sim::AnonymousWriter>();
  reader->pipe = writer->pipe = std::make_shared<sim::AnonymousPipe>();
  reader->pipe->size = size == 0 ? 4096 : size;
  *reading = call.OpenHandle(reader);
  *writing = call.OpenHandle(writer);
  return TRUE;
}

BOOL SetHandleInformation(HANDLE object, DWORD mask, DWORD flags) {
  Call call("SetHandleInformation", {object, mask, flags});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  return call.Kernel<sim::Object>(object) ? TRUE : call.Fail(FALSE, ERROR_INVALID_HANDLE);
}

HANDLE CreateNamedPipeW(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                        DWORD outBufferSize, DWORD inBufferSize, DWORD defaultTimeOut,
                        SECURITY_ATTRIBUTES* attributes) {
  Call call("CreateNamedPipeW", {name, Arg::OfHex(openMode), Arg::OfHex(pipeMode), maxInstances,
                                 outBufferSize, inBufferSize, defaultTimeOut});
  if (call.failed()) {
    return call.Fail(INVALID_HANDLE_VALUE);
  }
  sim::PipeSettings settings = SettingsOf(call, name, attributes);
  settings.openMode = openMode;
  settings.pipeMode = pipeMode;
  settings.maxInstances = maxInstances;
  settings.outBuffer = outBufferSize;
  settings.inBuffer = inBufferSize;
  settings.defaultTimeOut = defaultTimeOut;
  std::shared_ptr<sim::PipeServerEnd> server;
  const std::uint32_t error = call->pipes.Create(name, std::move(settings), &server);
  return error == 0 ? call.OpenHandle(server) : call.Fail(INVALID_HANDLE_VALUE, error);
}

BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* /*overlapped*/) {
  Call call("ConnectNamedPipe", {pipe});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto server = call.Kernel<sim::PipeServerEnd>(pipe);
  if (!server) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  const std::uint32_t error = server->StartConnect();
  if (error != kPending) {
    return call.Fail(FALSE, error);
  }
  call->core().changed.notify_all();  // a client may be waiting for this
  call.Block([&] { return server->IsConnected(); });
  return TRUE;
}

BOOL DisconnectNamedPipe(HANDLE pipe) {
  Call call("DisconnectNamedPipe", {pipe});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto server = call.Kernel<sim::PipeServerEnd>(pipe);
  if (!server) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  const std::uint32_t error = server->Disconnect();
  call->core().changed.notify_all();
  return Finish(call, error);
}

BOOL PeekNamedPipe(HANDLE pipe, LPVOID /*buffer*/, DWORD /*size*/, DWORD* /*read*/,
                   DWORD* available, DWORD* /*left*/) {
  Call call("PeekNamedPipe", {pipe});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto object = call.Kernel<sim::Object>(pipe);
  if (const auto reader = std::dynamic_pointer_cast<sim::AnonymousReader>(object)) {
    *available = static_cast<DWORD>(reader->pipe->bytes.size());
    return TRUE;
  }
  const auto client = std::dynamic_pointer_cast<sim::PipeClientEnd>(object);
  return Finish(call, client ? client->Peek(available) : ERROR_INVALID_HANDLE);
}

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* /*attributes*/,
                   DWORD disposition, DWORD flags, HANDLE /*templateFile*/) {
  Call call("CreateFileW", {name, Arg::OfHex(access), share, disposition, Arg::OfHex(flags)});
  if (call.failed()) {
    return call.Fail(INVALID_HANDLE_VALUE);
  }
  if (sim::Fold(name).rfind(L"\\\\.\\PIPE\\", 0) != 0) {
    return sim::OpenToAppend(call, name, access, share, disposition);
  }
  std::shared_ptr<sim::PipeClientEnd> client;
  const std::uint32_t error = call->pipes.Connect(name, &client);
  return error == 0 ? call.OpenHandle(client) : call.Fail(INVALID_HANDLE_VALUE, error);
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD count, DWORD* read, OVERLAPPED* /*overlapped*/) {
  Call call("ReadFile", {file, count});
  *read = 0;
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (file == sim::Console::InputHandle()) {
    const std::string bytes = call->console.TakeInput(count);
    *read = static_cast<DWORD>(bytes.size());
    bytes.copy(static_cast<char*>(buffer), bytes.size());
    return bytes.empty() ? call.Fail(FALSE, ERROR_BROKEN_PIPE) : TRUE;
  }
  if (const auto reader =
          std::dynamic_pointer_cast<sim::AnonymousReader>(call.Kernel<sim::Object>(file))) {
    std::string& bytes = reader->pipe->bytes;
    *read = static_cast<DWORD>(std::min<size_t>(count, bytes.size()));
    std::copy_n(bytes.begin(), *read, static_cast<char*>(buffer));
    bytes.erase(0, *read);
    return TRUE;
  }
  count = call->pipes.TakeLimit(count);
  if (count == 0) {
    return TRUE;
  }
  const std::uint32_t error = OnEnd(call, file, [&](auto& end) {
    return Repeat(call, [&] { return end.Read(static_cast<char*>(buffer), count, read); });
  });
  return Finish(call, error);
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD count, DWORD* written, OVERLAPPED* overlapped) {
  Call call("WriteFile", {file, count});
  *written = 0;
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  if (sim::Console::IsStandard(file)) {
    call->console.Append(file, std::string(static_cast<const char*>(buffer), count));
    *written = count;
    return TRUE;
  }
  if (const auto writer =
          std::dynamic_pointer_cast<sim::AnonymousWriter>(call.Kernel<sim::Object>(file))) {
    return WriteAnonymous(call, *writer->pipe, {static_cast<const char*>(buffer), count}, written);
  }
  if (const auto opened =
          std::dynamic_pointer_cast<sim::FileHandle>(call.Kernel<sim::Object>(file))) {
    return sim::WriteAtFileEnd(call, *opened, {static_cast<const char*>(buffer), count}, overlapped,
                               written);
  }
  count = call->pipes.TakeLimit(count);
  if (count == 0) {
    return TRUE;
  }
  const std::uint32_t error = OnEnd(call, file, [&](auto& end) {
    return WriteAll(call, end, static_cast<const char*>(buffer), count, written);
  });
  return Finish(call, error);
}

BOOL FlushFileBuffers(HANDLE file) {
  Call call("FlushFileBuffers", {file});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const std::uint32_t error =
      OnEnd(call, file, [&](auto& end) { return Repeat(call, [&] { return end.Flush(); }); });
  return Finish(call, error);
}
