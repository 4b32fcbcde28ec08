// Without options of its own: the tests. With them:
//   --count N [--seed S] [--jobs J] [--table FILE]   so many sequences, from one seed on
//   --seed S --print                                 the events of a seed
//   --events LIST                                    exactly these events
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <string>

#include "tests/sequence/batch.h"

namespace {

using sequence::Report;

std::uint64_t Number(const std::map<std::string, std::string>& options, const char* name,
                     std::uint64_t otherwise) {
  const auto found = options.find(name);
  return found == options.end() ? otherwise : std::stoull(found->second);
}

int RunMany(const std::map<std::string, std::string>& options) {
  const std::uint64_t count = Number(options, "--count", 1);
  const Report report =
      sequence::RunAll({Number(options, "--seed", 0), count}, Number(options, "--jobs", 1));
  if (!report.failure.empty()) {
    std::printf("%s%llu sequences held before it\n", report.failure.c_str(),
                static_cast<unsigned long long>(report.done));
    return 1;
  }
  if (options.count("--table") != 0) {
    std::ofstream(options.at("--table")) << report.table.Text();
  }
  std::printf("%llu sequences hold\n", static_cast<unsigned long long>(report.done));
  if (count < sequence::Table::PairCount()) {
    return 0;  // too few to meet everything
  }
  for (const std::string& mistake : report.table.Mistakes()) {
    std::printf("the table of states and events: %s\n", mistake.c_str());
  }
  return report.table.Mistakes().empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string> options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    const bool isFlag = name == "--worker" || name == "--quiet" || name == "--print";
    if (name.starts_with("--") && !name.starts_with("--gtest")) {
      options[name] = isFlag || i + 1 == argc ? "" : argv[++i];
    }
  }
  const std::uint64_t seed = options.count("--seed") != 0 ? Number(options, "--seed", 0) : 0;
  if (options.count("--events") != 0) {
    return sequence::Replay(sequence::ParseEvents(options["--events"]));
  }
  if (options.count("--print") != 0) {
    std::printf("%s\n", sequence::TextOf(sequence::MakeSequence(seed)).c_str());
    return 0;
  }
  if (options.count("--worker") != 0) {
    return sequence::RunAsWorker({seed, Number(options, "--count", 1)});
  }
  if (options.count("--count") != 0) {
    return RunMany(options);
  }
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
