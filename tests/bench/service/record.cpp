#include "tests/bench/service/record.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tests/standins/files.h"

namespace bench {

Arguments ParseArguments(int argc, const wchar_t* const* argv) {
  Arguments arguments;
  for (int at = 1; at < argc; ++at) {
    const std::wstring word = argv[at];
    const bool hasValue = at + 1 < argc;
    if (word == L"--quick") {
      arguments.quick = true;
    } else if (word == L"--out" && hasValue) {
      arguments.out = argv[++at];
    } else if (word == L"--rounds" && hasValue) {
      arguments.rounds = std::stoul(argv[++at]);
    } else {
      throw std::runtime_error("usage: PROGRAM --out FILE [--quick] [--rounds N]");
    }
  }
  if (arguments.out.empty()) throw std::runtime_error("--out FILE is missing");
  return arguments;
}

double Now() {
  LARGE_INTEGER frequency{};
  LARGE_INTEGER count{};
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&count);
  return static_cast<double>(count.QuadPart) * 1e9 / static_cast<double>(frequency.QuadPart);
}

void Append(const std::wstring& path, const Samples& samples) {
  const nlohmann::json line = {{"figure", samples.figure},
                               {"subject", samples.subject},
                               {"size", samples.size},
                               {"unit", samples.unit},
                               {"samples", samples.values}};
  if (!standins::AppendToFile(path, line.dump() + "\n")) {
    throw std::runtime_error("cannot write the figures");
  }
}

double Quantile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  const double last = static_cast<double>(values.size() - 1);
  return values[static_cast<std::size_t>(share * last + 0.5)];
}

int RunBench(int argc, const wchar_t* const* argv, void (*measure)(const Arguments&)) {
  try {
    measure(ParseArguments(argc, argv));
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}

}  // namespace bench
