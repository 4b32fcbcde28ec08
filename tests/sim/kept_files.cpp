#include "tests/sim/kept_files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace sim {

void KeepWrittenFile(const std::wstring& path, const std::string& content) {
  const char* const directory = std::getenv("TAVRIN_KEPT_FILES");
  if (directory == nullptr || !path.ends_with(L".json") || content.empty()) {
    return;
  }
  const std::string name = std::to_string(std::hash<std::string>()(content)) + ".json";
  const std::filesystem::path kept = std::filesystem::path(directory) / name;
  if (!std::filesystem::exists(kept)) {
    std::ofstream(kept, std::ios::binary) << content;
  }
}

}  // namespace sim
