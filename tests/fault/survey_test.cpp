#include "tests/fault/survey.h"

#include <gmock/gmock.h>

#include <cstdio>

namespace fault {
namespace {

TEST(Dump, Dump) {
  for (const Scene& scene : AllScenes()) {
    const auto points = TakeSurvey(scene);
    std::printf("=== %s %zu\n", scene.name, points.size());
    int k = 0;
    for (const Point& point : points) {
      std::printf("%d [%s] %s #%d %s\n", ++k, point.step.c_str(), point.name.c_str(), point.ordinal,
                  point.text.c_str());
    }
  }
}

}  // namespace
}  // namespace fault
