#include "tests/e2e/harness/sandbox.h"

#include <windows.h>

#include <stdexcept>

#include "tests/standins/files.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

// A virus scanner or an ending process may hold a file for a moment.
constexpr int kRemoveAttempts = 200;

[[noreturn]] void Refuse(const char* what, const std::wstring& path) {
  throw std::runtime_error(std::string(what) + " " + standins::ToUtf8(path) +
                           " err=" + std::to_string(GetLastError()));
}

// The build's root: this program stands one directory below it.
std::wstring BuildDirectory() {
  wchar_t buffer[MAX_PATH] = {};
  std::wstring path(buffer, GetModuleFileNameW(nullptr, buffer, MAX_PATH));
  path.erase(path.find_last_of(L"\\/"));
  return path.substr(0, path.find_last_of(L"\\/"));
}

// With a blank in it, so that missing quotes show.
std::wstring FreshRoot() {
  static int count = 0;
  wchar_t buffer[MAX_PATH] = {};
  const std::wstring temp(buffer, GetTempPathW(MAX_PATH, buffer));
  return temp + L"tavrin e2e " + std::to_wstring(GetCurrentProcessId()) + L"-" +
         std::to_wstring(++count);
}

bool TryRemoveTree(const std::wstring& path) {
  WIN32_FIND_DATAW entry{};
  const HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &entry);
  if (search != INVALID_HANDLE_VALUE) {
    do {
      const std::wstring name = entry.cFileName;
      const std::wstring child = path + L"\\" + name;
      if (name == L"." || name == L"..") continue;
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        TryRemoveTree(child);
      } else {
        DeleteFileW(child.c_str());
      }
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
  }
  return RemoveDirectoryW(path.c_str()) != 0 || !Exists(path);
}

}  // namespace

Sandbox::Sandbox(const std::wstring& runtimeName) : root_(FreshRoot()) {
  runtime_ = root_ + L"\\" + runtimeName;
  MakeDirectories(machine());
  InstallService(service());
  InstallHelpers(runtime_);
}

Sandbox::~Sandbox() {
  for (int attempt = 0; attempt < kRemoveAttempts && !TryRemoveTree(root_); ++attempt) Sleep(10);
}

void Sandbox::InstallService(const std::wstring& directory) const {
  MakeDirectories(directory);
  CopyProgram(L"TavrinService.exe", directory + L"\\TavrinService.exe");
  CopyProgram(L"standins\\iphlpapi.dll", directory + L"\\iphlpapi.dll");
  CopyProgram(L"standins\\netsh.exe", directory + L"\\netsh.exe");
}

void Sandbox::InstallHelpers(const std::wstring& directory) const {
  MakeDirectories(directory + L"\\xray");
  MakeDirectories(directory + L"\\tun2socks");
  CopyProgram(L"standins\\xray.exe", directory + L"\\xray\\xray.exe");
  CopyProgram(L"standins\\tun2socks-windows-amd64.exe",
              directory + L"\\tun2socks\\tun2socks-windows-amd64.exe");
  WriteText(directory + L"\\tun2socks\\wintun.dll", "MZ, and no library");
}

void MakeDirectories(const std::wstring& path) {
  if (Exists(path)) return;
  MakeDirectories(path.substr(0, path.find_last_of(L'\\')));
  if (CreateDirectoryW(path.c_str(), nullptr) == 0) Refuse("cannot make", path);
}

void RemoveFile(const std::wstring& path) {
  if (DeleteFileW(path.c_str()) == 0) Refuse("cannot delete", path);
}

void RemoveTree(const std::wstring& path) {
  if (!TryRemoveTree(path)) Refuse("cannot remove", path);
}

void WriteText(const std::wstring& path, std::string_view text) {
  if (!standins::ReplaceWholeFile(path, text)) Refuse("cannot write", path);
}

std::string ReadText(const std::wstring& path) {
  return standins::ReadWholeFile(path).value_or("");
}

bool Exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<std::string> ReadLines(const std::wstring& path) {
  std::vector<std::string> lines;
  const std::string text = ReadText(path);
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(text.substr(start, end - start));
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

void CopyProgram(const std::wstring& builtName, const std::wstring& target) {
  const std::wstring source = BuildDirectory() + L"\\" + builtName;
  if (CopyFileW(source.c_str(), target.c_str(), FALSE) == 0) Refuse("cannot copy", source);
}

}  // namespace e2e
