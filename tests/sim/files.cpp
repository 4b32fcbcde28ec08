#include "tests/sim/files.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "tests/sim/path.h"
#include "tests/sim/text.h"

#include <win/errors.h>

namespace sim {
namespace {

std::wstring WithoutTrailingSeparator(std::wstring path) {
  if (path.size() > 3 && path.back() == L'\\') {
    path.pop_back();
  }
  return path;
}

// Folding keeps the length.
bool SamePath(const std::wstring& a, const std::wstring& b) {
  return a.size() == b.size() && Fold(a) == Fold(b);
}

bool IsBelow(const std::wstring& path, const std::wstring& directory) {
  const std::wstring prefix = directory.back() == L'\\' ? directory : directory + L"\\";
  return path.size() >= prefix.size() && Fold(path).rfind(Fold(prefix), 0) == 0;
}

}  // namespace

Files::Files(Core& core) : core_(core) {
  PutDirectory(currentDirectory);
}

void Files::Put(const std::wstring& path, std::string content) {
  const MachineLock lock = core_.Lock();
  PutDirectory(DirectoryName(path));
  const std::shared_ptr<FileNode> found = Find(path);
  (found ? found : Add(path, false))->content = std::move(content);
}

void Files::PutDirectory(const std::wstring& path) {
  const MachineLock lock = core_.Lock();
  if (Find(path)) {
    return;
  }
  if (path.size() > 3) {
    PutDirectory(DirectoryName(path));
  }
  Add(path, true);
}

std::shared_ptr<FileNode> Files::Add(const std::wstring& path, bool directory) {
  const std::shared_ptr<FileNode> node = std::make_shared<FileNode>();
  node->path = WithoutTrailingSeparator(Absolute(Units(path)));
  node->directory = directory;
  nodes_.push_back(node);
  return node;
}

void Files::Remove(const std::wstring& path) {
  const MachineLock lock = core_.Lock();
  const std::wstring full = WithoutTrailingSeparator(Absolute(path));
  std::erase_if(nodes_, [&full](const auto& node) {
    return SamePath(node->path, full) || IsBelow(node->path, full);
  });
}

bool Files::Exists(const std::wstring& path) const {
  return Find(path) != nullptr;
}

std::optional<std::string> Files::Read(const std::wstring& path) const {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<FileNode> node = Find(path);
  return node && !node->directory ? std::optional(node->content) : std::nullopt;
}

std::uint64_t Files::BytesRead(const std::wstring& path) const {
  const MachineLock lock = core_.Lock();
  return Find(path)->bytesRead;
}

std::vector<FileNode> Files::All() const {
  const MachineLock lock = core_.Lock();
  std::vector<FileNode> all;
  for (const auto& node : nodes_) {
    all.push_back(*node);
  }
  return all;
}

std::vector<std::string> Files::List(const std::wstring& directory) const {
  const MachineLock lock = core_.Lock();
  std::vector<std::string> paths;
  for (const auto& node : nodes_) {
    if (!node->directory && IsBelow(node->path, directory)) {
      paths.push_back(Narrow(node->path));
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

void Files::SetLocked(const std::wstring& path, bool locked) {
  const MachineLock lock = core_.Lock();
  Find(path)->locked = locked;
}

void Files::SetDenied(const std::wstring& path, bool denied) {
  const MachineLock lock = core_.Lock();
  Find(path)->denied = denied;
}

void Files::SetRangeLocked(const std::wstring& path, bool locked) {
  const MachineLock lock = core_.Lock();
  Find(path)->rangeHolder = locked ? this : nullptr;
}

void Files::SetReadOnly(const std::wstring& path, bool readOnly) {
  const MachineLock lock = core_.Lock();
  Find(path)->readOnly = readOnly;
}

void Files::SetWritesFail(const std::wstring& path, bool fail) {
  const MachineLock lock = core_.Lock();
  Find(path)->writesFail = fail;
}

void Files::SetAccessList(const std::wstring& path, const std::string& sddl) {
  const MachineLock lock = core_.Lock();
  Find(path)->accessList = sddl;
}

void Files::SetLastWrite(const std::wstring& path, std::int64_t unixMilliseconds) {
  const MachineLock lock = core_.Lock();
  Find(path)->lastWrite = unixMilliseconds;
}

void Files::SetVersion(const std::wstring& path, const std::string& version) {
  const MachineLock lock = core_.Lock();
  Find(path)->version = version;
}

std::wstring Files::Absolute(const std::wstring& path) const {
  const MachineLock lock = core_.Lock();
  return FullPath(path, currentDirectory);
}

std::shared_ptr<FileNode> Files::Find(const std::wstring& path) const {
  const MachineLock lock = core_.Lock();
  const std::wstring full = WithoutTrailingSeparator(Absolute(Units(path)));
  const auto found = std::find_if(nodes_.begin(), nodes_.end(),
                                  [&full](const auto& node) { return SamePath(node->path, full); });
  return found == nodes_.end() ? nullptr : *found;
}

std::uint32_t Files::Delete(const std::wstring& path) {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<FileNode> directory = Find(DirectoryName(Absolute(path)));
  if (!directory) {
    return ERROR_PATH_NOT_FOUND;
  }
  const std::shared_ptr<FileNode> node = Find(path);
  if (!node) {
    return ERROR_FILE_NOT_FOUND;
  }
  if (node->directory || node->readOnly || directory->readOnly) {
    return ERROR_ACCESS_DENIED;
  }
  // None of the C runtime's share modes lets others delete.
  if (node->locked || node->readers + node->writers > 0) {
    return ERROR_SHARING_VIOLATION;
  }
  Remove(path);
  return 0;
}

std::uint32_t Files::Move(const std::wstring& from, const std::wstring& to, bool replace) {
  const MachineLock lock = core_.Lock();
  const std::shared_ptr<FileNode> node = Find(from);
  const std::shared_ptr<FileNode> old = Find(to);
  const std::shared_ptr<FileNode> directory = Find(DirectoryName(Absolute(Units(to))));
  if (!node || !directory) {
    return node ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND;
  }
  if (node->locked || node->readers + node->writers > 0) {
    return ERROR_SHARING_VIOLATION;
  }
  if (old && !replace) {
    return ERROR_ALREADY_EXISTS;
  }
  // Whoever has the old file open keeps it, and no text says that it is only for a while.
  if (directory->readOnly || (old && (old->directory || old->readOnly || old->locked ||
                                      old->readers + old->writers > 0))) {
    return ERROR_ACCESS_DENIED;
  }
  std::erase(nodes_, old);
  node->path = Absolute(Units(to));
  return 0;
}

std::vector<std::shared_ptr<FileNode>> Files::Match(const std::wstring& pattern) const {
  const MachineLock lock = core_.Lock();
  const std::wstring full = Absolute(pattern);
  const std::wstring directory = DirectoryName(full);
  std::vector<std::shared_ptr<FileNode>> matches;
  for (const auto& node : nodes_) {
    if (SamePath(DirectoryName(node->path), directory) && node->path.size() > 3 &&
        MatchesWildcards(BaseName(full), BaseName(node->path))) {
      matches.push_back(node);
    }
  }
  return matches;
}

int Files::Open(const std::wstring& path, bool create, std::shared_ptr<FileNode>* node) {
  const MachineLock lock = core_.Lock();
  const std::wstring full = Absolute(path);
  const std::shared_ptr<FileNode> directory = Find(DirectoryName(full));
  if (path.empty() || !directory || !directory->directory) {
    return ENOENT;
  }
  *node = Find(full);
  if (*node) {
    const bool refused =
        (*node)->directory || (*node)->locked || (*node)->denied || (create && (*node)->readOnly);
    return refused ? EACCES : 0;
  }
  if (!create) {
    return ENOENT;
  }
  if (directory->readOnly) {
    return EACCES;
  }
  *node = Add(full, false);
  return 0;
}

}  // namespace sim
