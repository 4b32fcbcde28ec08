// The file system: drives, directories and files under Windows' rules for names. A directory lists
// its entries in the order in which they were put there.
#ifndef TAVRIN_TESTS_SIM_FILES_H_
#define TAVRIN_TESTS_SIM_FILES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/sim/core.h"

namespace sim {

struct FileNode {
  std::wstring path;  // full, in the spelling in which it was created
  bool directory = false;
  bool readOnly = false;    // a directory: nothing can be created or deleted in it
  bool locked = false;      // another program holds it open and shares nothing
  bool denied = false;      // this user may not even look at it
  bool readsFail = false;   // opens, but gives no byte (a damaged disk)
  bool writesFail = false;  // opens, but every write to it is lost (a full disk)
  std::string content;
  std::string accessList;       // in SDDL, with the owner or not; empty: what C:\\Program Files has
  int changes = 0;              // how often it was opened for writing: each would change its time
  std::string version;          // "0.1.0", of an executable with a version resource
  std::int64_t lastWrite = 0;   // milliseconds since 1970, UTC
  std::uint64_t bytesRead = 0;  // by streams
  // What this machine's own streams have open: each read, write and share right counts.
  int readers = 0;
  int writers = 0;
  int denyRead = 0;
  int denyWrite = 0;
  // Who holds the one byte range that the machine knows: a stream, or another program.
  const void* rangeHolder = nullptr;
};

class Files {
 public:
  explicit Files(Core& core);

  // For tests -----------------------------------------------------------------------------------
  // Both make the directories above them. Paths are absolute.
  void Put(const std::wstring& path, std::string content = "");
  void PutDirectory(const std::wstring& path);
  void Remove(const std::wstring& path);  // a directory with everything in it
  bool Exists(const std::wstring& path) const;
  std::optional<std::string> Read(const std::wstring& path) const;
  std::uint64_t BytesRead(const std::wstring& path) const;  // by the product, with streams
  // Every file and directory.
  std::vector<FileNode> All() const;
  // Names (full paths, UTF-8) of every file below a directory, sorted.
  std::vector<std::string> List(const std::wstring& directory) const;
  void SetLocked(const std::wstring& path, bool locked);
  void SetDenied(const std::wstring& path, bool denied);
  void SetRangeLocked(const std::wstring& path, bool locked);  // by another program
  void SetReadOnly(const std::wstring& path, bool readOnly);
  void SetAccessList(const std::wstring& path, const std::string& sddl);
  void SetLastWrite(const std::wstring& path, std::int64_t unixMilliseconds);
  void SetVersion(const std::wstring& path, const std::string& version);
  void SetWritesFail(const std::wstring& path, bool fail);
  bool isDiskFull = false;  // every write to any file is lost

  // For the platform's calls --------------------------------------------------------------------
  // Relative paths start from here.
  std::wstring currentDirectory = L"C:\\Windows\\System32";

  std::wstring Absolute(const std::wstring& path) const;
  std::shared_ptr<FileNode> Find(const std::wstring& path) const;
  // Win32 codes; 0 for success.
  std::uint32_t Delete(const std::wstring& path);
  std::uint32_t Move(const std::wstring& from, const std::wstring& to, bool replace);
  std::vector<std::shared_ptr<FileNode>> Match(const std::wstring& pattern) const;
  // errno codes; 0 for success. Makes the file when it is missing and `create` is set.
  int Open(const std::wstring& path, bool create, std::shared_ptr<FileNode>* node);

 private:
  std::shared_ptr<FileNode> Add(const std::wstring& path, bool directory);

  Core& core_;
  std::vector<std::shared_ptr<FileNode>> nodes_;
};

}  // namespace sim

#endif  // TAVRIN_TESTS_SIM_FILES_H_
