// The registry, read only.
#include "tests/sim/call.h"

#include <windows.h>

#include <algorithm>

using sim::Call;

namespace {

std::uintptr_t ValueOf(HKEY key) {
  return reinterpret_cast<std::uintptr_t>(key);
}

// What stands in front of the names of a key's own keys: nothing for the current user's.
std::wstring PathBelow(const Call& call, HKEY key) {
  if (key == HKEY_CURRENT_USER) {
    return L"";
  }
  if (key == HKEY_USERS) {
    return L"HKEY_USERS\\";
  }
  const auto object =
      call->handles.FindAs<sim::RegistryKey>(ValueOf(key), sim::Family::kRegistry, call.name());
  return object ? object->path + L"\\" : L"no such key\\";
}

LSTATUS AsStatus(DWORD code) {
  return static_cast<LSTATUS>(code);
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD /*options*/, REGSAM access, HKEY* result) {
  Call call("RegOpenKeyExW", {sim::Arg::OfHex(static_cast<std::uint32_t>(ValueOf(key))), subKey,
                              sim::Arg::OfHex(access)});
  if (call.failed()) {
    return AsStatus(call.code());
  }
  const std::wstring path = PathBelow(call, key) + subKey;
  if (!call->registry.HasKey(path)) {
    return ERROR_FILE_NOT_FOUND;
  }
  const auto object = std::make_shared<sim::RegistryKey>();
  object->path = path;
  *result = reinterpret_cast<HKEY>(call.Open(object, access));
  return ERROR_SUCCESS;
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* /*reserved*/, DWORD* type, BYTE* data,
                         DWORD* size) {
  Call call("RegQueryValueExW", {name});
  if (call.failed()) {
    return AsStatus(call.code());
  }
  const auto object =
      call->handles.FindAs<sim::RegistryKey>(ValueOf(key), sim::Family::kRegistry, call.name());
  if (!object) {
    return ERROR_INVALID_HANDLE;
  }
  const auto value = call->registry.Find(object->path, name);
  if (!value) {
    return ERROR_FILE_NOT_FOUND;
  }
  if (type != nullptr) {
    *type = value->type;
  }
  if (size == nullptr) {
    return ERROR_SUCCESS;
  }
  const DWORD capacity = data == nullptr ? 0 : *size;
  *size = static_cast<DWORD>(value->data.size());
  if (data == nullptr) {
    return ERROR_SUCCESS;
  }
  if (capacity < value->data.size()) {
    return ERROR_MORE_DATA;
  }
  std::copy(value->data.begin(), value->data.end(), data);
  return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY key) {
  Call call("RegCloseKey");
  if (call.failed()) {
    return AsStatus(call.code());
  }
  const bool closed = call->handles.Close(ValueOf(key), sim::Family::kRegistry, call.name());
  return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}
