# The same sources against the simulated machine in tests/sim.
add_compile_options(-fno-omit-frame-pointer)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(tavrin_options INTERFACE -Wthread-safety)
  add_compile_options(-gline-tables-only -Xclang -fno-pch-timestamp)  # for ccache
  add_link_options(-fuse-ld=lld)
else()
  add_compile_options(-g1)
  # g++ takes a designated initializer that names only some members for an oversight.
  target_compile_options(tavrin_options INTERFACE -Wno-missing-field-initializers)
endif()
if(TAVRIN_SANITIZE)
  add_compile_options("-fsanitize=${TAVRIN_SANITIZE}" -fno-sanitize-recover=all)
  add_link_options("-fsanitize=${TAVRIN_SANITIZE}")
endif()

find_package(GTest REQUIRED)
find_package(Threads REQUIRED)

add_subdirectory(tests/netmodel)
add_subdirectory(tests/sim)  # gives the target tavrin_sim

# The whole product, wmain included, as one library against the simulated platform.
add_library(tavrin_core STATIC ${TAVRIN_SOURCES})
target_link_libraries(tavrin_core PUBLIC tavrin_options tavrin_sim)
# As in the Windows build. The coverage build goes without.
target_precompile_headers(tavrin_core PRIVATE
  <windows.h> <algorithm> <optional> <string> <string_view> <vector>)
if(TAVRIN_COVERAGE)
  # Without the clean-up paths of exceptions, which the product neither throws nor catches.
  target_compile_options(tavrin_core PRIVATE --coverage -O0 -fno-exceptions)
  target_link_options(tavrin_core PUBLIC --coverage)
endif()

add_subdirectory(tests/strict)  # gives the target tavrin_strict

option(TAVRIN_FUZZ "The fuzz targets, and the product's code built to steer them" OFF)
if(TAVRIN_FUZZ)
  target_compile_options(tavrin_core PRIVATE -fsanitize=fuzzer-no-link)
  add_subdirectory(tests/fuzz)
endif()

option(TAVRIN_BENCH "The benchmarks; RapidJSON and simdjson are wanted for them alone" OFF)
if(TAVRIN_BENCH)
  add_subdirectory(tests/bench)
endif()

add_subdirectory(client)
add_subdirectory(tests/unit)
add_subdirectory(tests/contract)
add_subdirectory(tests/real)
add_subdirectory(tests/soak)
add_subdirectory(tests/fault)
add_subdirectory(tests/sequence)

include(cmake/tidy.cmake)
