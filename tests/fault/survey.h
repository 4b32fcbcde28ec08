// A run without faults, and what it shows of each of its fallible calls.
#ifndef TAVRIN_TESTS_FAULT_SURVEY_H_
#define TAVRIN_TESTS_FAULT_SURVEY_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/fault/scene.h"

namespace fault {

struct Point {
  // Which part of the run this call belongs to: "account" until the tunnel's start, then the label
  // of the trace line that the call leads up to, then "disconnect".
  std::string step;
  std::string name;  // `CreateProcessW`
  std::string text;  // its arguments, as the call log shows them
  int ordinal = 1;   // among the calls of that name in this step
  // In front of the call:
  netmodel::Network network;
  // Children and orphans that live and that no job would kill, and the adapters that they brought.
  std::vector<std::string> outsideJob;
  std::vector<std::uint64_t> theirAdapters;

  // A child that runs by itself to its end, whatever happens to the caller.
  bool waitsForNetsh() const;
};

// `name text`
std::string Describe(const Point& point);
// `[step] name text` of each.
Lines DescribeWithSteps(const std::vector<Point>& points);

// What is left of the network when every call from this one on has no effect, or is never made:
// netsh, once started, does its work, and adapters vanish with the programs that brought them.
Lines SettledLines(const Stage& stage, const std::vector<Point>& points, size_t index);

// The connect's text was empty and every fallible call of connect and disconnect is here, in order.
// Empty when that run went wrong.
std::vector<Point> TakeSurvey(const Scene& scene);

}  // namespace fault

#endif  // TAVRIN_TESTS_FAULT_SURVEY_H_
