// Tests of what happens only once in a process. The product keeps its WinHTTP session for good, so
// whatever concerns the first call runs in a child process that starts with this very test.
#ifndef TAVRIN_TESTS_UNIT_FRESH_PROCESS_H_
#define TAVRIN_TESTS_UNIT_FRESH_PROCESS_H_

#include <gtest/gtest.h>

#include <cstdlib>

// Runs `body`, a callable, in a process of its own; fails when an expectation fails there.
#define EXPECT_IN_FRESH_PROCESS(body)                       \
  do {                                                      \
    GTEST_FLAG_SET(death_test_style, "threadsafe");         \
    EXPECT_EXIT(                                            \
        {                                                   \
          body();                                           \
          std::exit(::testing::Test::HasFailure() ? 1 : 0); \
        },                                                  \
        ::testing::ExitedWithCode(0), "")                   \
        << "the child's own output tells more";             \
  } while (false)

#endif  // TAVRIN_TESTS_UNIT_FRESH_PROCESS_H_
