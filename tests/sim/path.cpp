#include "tests/sim/path.h"

#include <algorithm>
#include <cwctype>
#include <vector>

namespace sim {
namespace {

bool HasDrive(const std::wstring& path) {
  return path.size() >= 2 && std::iswalpha(static_cast<std::wint_t>(path[0])) && path[1] == L':';
}

struct Split {
  std::wstring root;  // "C:\" or "\\server\share\"
  std::wstring rest;
};

Split SplitUnc(const std::wstring& path) {
  const size_t server = path.find(L'\\', 2);
  const size_t share = server == std::wstring::npos ? server : path.find(L'\\', server + 1);
  if (share == std::wstring::npos) {
    return {path, L""};
  }
  return {path.substr(0, share + 1), path.substr(share + 1)};
}

Split SplitRoot(const std::wstring& path, const std::wstring& currentDirectory) {
  const bool rooted = !path.empty() && path[0] == L'\\';
  if (rooted && path.size() > 1 && path[1] == L'\\') {
    return SplitUnc(path);
  }
  const std::wstring drive = HasDrive(path) ? path.substr(0, 2) : currentDirectory.substr(0, 2);
  if (HasDrive(path) && path.size() > 2 && path[2] == L'\\') {
    return {drive + L"\\", path.substr(3)};
  }
  if (rooted) {
    return {drive + L"\\", path.substr(1)};
  }
  const std::wstring rest = HasDrive(path) ? path.substr(2) : path;
  // The current directory of another drive is taken to be its root.
  const bool sameDrive = std::towupper(static_cast<std::wint_t>(drive[0])) ==
                         std::towupper(static_cast<std::wint_t>(currentDirectory[0]));
  const std::wstring base = sameDrive ? currentDirectory.substr(3) : L"";
  return {drive + L"\\", base.empty() ? rest : base + L"\\" + rest};
}

std::vector<std::wstring> Components(const std::wstring& rest) {
  std::vector<std::wstring> kept;
  for (size_t at = 0; at <= rest.size();) {
    const size_t end = std::min(rest.find(L'\\', at), rest.size());
    const std::wstring part = rest.substr(at, end - at);
    at = end + 1;
    if (part == L"..") {
      if (!kept.empty()) {
        kept.pop_back();
      }
    } else if (!part.empty() && part != L".") {
      kept.push_back(part);
    }
  }
  return kept;
}

// A component may not end in a dot or, at the very end of the path, in a blank.
void Trim(std::vector<std::wstring>& components) {
  for (std::wstring& part : components) {
    const bool last = &part == &components.back();
    while (!part.empty() && (part.back() == L'.' || (last && part.back() == L' '))) {
      part.pop_back();
    }
  }
}

}  // namespace

std::wstring FullPath(const std::wstring& path, const std::wstring& currentDirectory) {
  std::wstring text = path;
  std::replace(text.begin(), text.end(), L'/', L'\\');
  const Split split = SplitRoot(text, currentDirectory);
  std::vector<std::wstring> components = Components(split.rest);
  Trim(components);
  std::wstring full = split.root;
  for (const std::wstring& part : components) {
    full += part + L"\\";
  }
  const bool keepSeparator = components.empty() || (!text.empty() && text.back() == L'\\');
  if (!keepSeparator) {
    full.pop_back();
  }
  return full;
}

std::wstring BaseName(const std::wstring& path) {
  const size_t separator = path.find_last_of(L"\\/");
  return separator == std::wstring::npos ? path : path.substr(separator + 1);
}

std::wstring DirectoryName(const std::wstring& path) {
  const size_t separator = path.find_last_of(L"\\/");
  if (separator == std::wstring::npos) {
    return L"";
  }
  const bool inRoot = separator == 2 && HasDrive(path);
  return path.substr(0, inRoot ? 3 : separator);
}

}  // namespace sim
