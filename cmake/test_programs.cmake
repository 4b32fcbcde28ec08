# tavrin_add_tests(TARGET NAME [SHARDS n] [FILTER gtest-filter] [LABELS ...] [LAUNCHER command...])
# Registers a GoogleTest program with ctest: one process for all its tests, or `n` processes that
# share them out. A passing test prints nothing. What each process counted goes to
# test-results/NAME.json, where scripts/count_tests.sh looks for it.
function(tavrin_add_tests target name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "SHARDS;FILTER" "LABELS;LAUNCHER")
  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  set(seconds 600)
  if(arg_LAUNCHER)
    set(seconds 3600)  # the launcher has a limit of its own, and may wait for its turn
  endif()
  set(arguments "")
  if(arg_FILTER)
    set(arguments "--gtest_filter=${arg_FILTER}")
  endif()
  set(results "${CMAKE_BINARY_DIR}/test-results")
  if(WIN32 AND NOT CMAKE_HOST_WIN32)
    set(results "Z:${results}")
  endif()
  math(EXPR last "${arg_SHARDS} - 1")
  foreach(index RANGE ${last})
    set(entry "${name}")
    if(arg_SHARDS GREATER 1)
      string(APPEND entry ".${index}")
    endif()
    add_test(NAME "${entry}" COMMAND ${arg_LAUNCHER} "$<TARGET_FILE:${target}>" ${arguments})
    set_tests_properties("${entry}" PROPERTIES
      TIMEOUT ${seconds} LABELS "${arg_LABELS}" ENVIRONMENT
      "GTEST_BRIEF=1;GTEST_OUTPUT=json:${results}/${entry}.json;GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index}")
  endforeach()
endfunction()
