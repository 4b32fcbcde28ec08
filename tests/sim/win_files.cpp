// Files by name, paths, the environment.
#include "tests/sim/call.h"
#include "tests/sim/file_handle.h"
#include "tests/sim/file_time.h"
#include "tests/sim/path.h"
#include "tests/sim/text.h"

#include <windows.h>
#include <io.h>

#include <algorithm>

using sim::Arg;
using sim::Call;

namespace {

DWORD AttributesOf(const sim::FileNode& node) {
  const DWORD kind = node.directory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
  return kind | (node.readOnly ? FILE_ATTRIBUTE_READONLY : 0);
}

// Why a path can't be found.
DWORD MissingError(const sim::Files& files, const std::wstring& path) {
  const auto directory = files.Find(sim::DirectoryName(files.Absolute(path)));
  return directory && directory->directory ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

// The result of the calls that fill a text buffer: the length without the NUL, or the size that is
// wanted when the text does not fit.
DWORD FillText(const std::wstring& text, LPWSTR buffer, DWORD size) {
  if (text.size() >= size) {
    return static_cast<DWORD>(text.size() + 1);
  }
  std::copy_n(text.c_str(), text.size() + 1, buffer);
  return static_cast<DWORD>(text.size());
}

struct FindObject : sim::Object {
  sim::Family family() const override { return sim::Family::kFind; }
  std::string Describe() const override { return "find handle"; }
};

}  // namespace

// One range of a file at a time; whoever holds it, holds all of it.
BOOL LockFileEx(HANDLE file, DWORD flags, DWORD /*reserved*/, DWORD countLow, DWORD /*countHigh*/,
                OVERLAPPED* place) {
  Call call("LockFileEx", {flags, countLow, Arg::OfHex(place->OffsetHigh)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto opened = call.Kernel<sim::FileHandle>(file);
  if (!opened) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  return opened->LockRange() ? TRUE : call.Fail(FALSE, ERROR_LOCK_VIOLATION);
}

BOOL UnlockFileEx(HANDLE file, DWORD /*reserved*/, DWORD countLow, DWORD /*countHigh*/,
                  OVERLAPPED* place) {
  Call call("UnlockFileEx", {countLow, Arg::OfHex(place->OffsetHigh)});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto opened = call.Kernel<sim::FileHandle>(file);
  if (!opened) {
    return call.Fail(FALSE, ERROR_INVALID_HANDLE);
  }
  return opened->UnlockRange() ? TRUE : call.Fail(FALSE, ERROR_NOT_LOCKED);
}

BOOL DeleteFileW(LPCWSTR name) {
  Call call("DeleteFileW", {name});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const DWORD error = call->files.Delete(name);
  return error == 0 ? TRUE : call.Fail(FALSE, error);
}

BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  Call call("MoveFileExW", {from, to, flags});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const DWORD error = call->files.Move(from, to, (flags & MOVEFILE_REPLACE_EXISTING) != 0);
  return error == 0 ? TRUE : call.Fail(FALSE, error);
}

DWORD GetFileAttributesW(LPCWSTR name) {
  Call call("GetFileAttributesW", {name});
  if (call.failed()) {
    return call.Fail(INVALID_FILE_ATTRIBUTES);
  }
  const std::wstring path = name;
  if (path.empty() || path.size() >= MAX_PATH) {
    return call.Fail(INVALID_FILE_ATTRIBUTES, ERROR_PATH_NOT_FOUND);
  }
  const auto node = call->files.Find(path);
  if (!node) {
    return call.Fail(INVALID_FILE_ATTRIBUTES, MissingError(call->files, path));
  }
  if (node->denied) {
    return call.Fail(INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED);
  }
  return AttributesOf(*node);
}

BOOL GetFileAttributesExW(LPCWSTR name, GET_FILEEX_INFO_LEVELS /*level*/, LPVOID data) {
  Call call("GetFileAttributesExW", {name});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto node = call->files.Find(name);
  if (!node || node->denied) {
    return call.Fail(FALSE, node ? ERROR_ACCESS_DENIED : MissingError(call->files, name));
  }
  auto* const found = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data);
  *found = {};
  found->dwFileAttributes = AttributesOf(*node);
  found->nFileSizeLow = static_cast<DWORD>(node->content.size());
  found->ftLastWriteTime = sim::FileTimeOf(node->lastWrite);
  return TRUE;
}

HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* data) {
  Call call("FindFirstFileW", {pattern});
  if (call.failed()) {
    return call.Fail(INVALID_HANDLE_VALUE);
  }
  const auto matches = call->files.Match(pattern);
  if (matches.empty()) {
    return call.Fail(INVALID_HANDLE_VALUE, MissingError(call->files, pattern));
  }
  *data = {};
  data->dwFileAttributes = AttributesOf(*matches.front());
  data->nFileSizeLow = static_cast<DWORD>(matches.front()->content.size());
  const std::wstring name = sim::BaseName(matches.front()->path);
  std::copy_n(name.begin(), std::min<size_t>(name.size(), MAX_PATH - 1), data->cFileName);
  return call.OpenHandle(std::make_shared<FindObject>());
}

BOOL FindClose(HANDLE find) {
  Call call("FindClose", {find});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const bool closed =
      call->handles.Close(reinterpret_cast<std::uintptr_t>(find), sim::Family::kFind, call.name());
  return closed ? TRUE : call.Fail(FALSE, ERROR_INVALID_HANDLE);
}

DWORD GetFullPathNameW(LPCWSTR name, DWORD size, LPWSTR buffer, LPWSTR* filePart) {
  Call call("GetFullPathNameW", {name});
  if (call.failed()) {
    return call.Fail(0u);
  }
  if (name[0] == L'\0') {
    return call.Fail(0u, ERROR_INVALID_NAME);
  }
  const std::wstring full = call->files.Absolute(name);
  const DWORD result = FillText(full, buffer, size);
  if (filePart != nullptr && result < size) {
    const size_t length = sim::BaseName(full).size();
    *filePart = length == 0 ? nullptr : buffer + (full.size() - length);
  }
  return result;
}

BOOL SetCurrentDirectoryW(LPCWSTR directory) {
  Call call("SetCurrentDirectoryW", {directory});
  if (call.failed()) {
    return call.Fail(FALSE);
  }
  const auto node = call->files.Find(directory);
  if (!node) {
    return call.Fail(FALSE, MissingError(call->files, directory));
  }
  if (!node->directory) {
    return call.Fail(FALSE, ERROR_DIRECTORY);
  }
  call->files.currentDirectory = node->path;
  return TRUE;
}

DWORD GetModuleFileNameW(HMODULE /*module*/, LPWSTR name, DWORD size) {
  Call call("GetModuleFileNameW");
  if (call.failed()) {
    return call.Fail(0u);
  }
  const std::wstring path = sim::Units(call->modulePath);
  if (path.size() < size) {
    return FillText(path, name, size);
  }
  // Cut off, and ended with a NUL all the same.
  std::copy_n(path.begin(), size - 1, name);
  name[size - 1] = L'\0';
  return call.Fail(size, ERROR_INSUFFICIENT_BUFFER);
}

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD size) {
  Call call("GetEnvironmentVariableW", {name});
  if (call.failed()) {
    return call.Fail(0u);
  }
  const auto value = call->environment.Find(name);
  if (!value) {
    return call.Fail(0u, ERROR_ENVVAR_NOT_FOUND);
  }
  return FillText(*value, buffer, size);
}
