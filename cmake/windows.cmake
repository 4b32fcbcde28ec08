# What ships, and the tests that run under Wine (or on Windows).
enable_language(RC)

# The service uses Windows 10 calls (SetInterfaceDnsSettings came with 2004).
target_compile_definitions(tavrin_options INTERFACE
  UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000008)

# The same sources give the same bytes in every directory and at any time.
add_compile_options(
  "$<$<COMPILE_LANGUAGE:CXX>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build;-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>")

add_library(tavrin_core OBJECT ${TAVRIN_SOURCES})
target_link_libraries(tavrin_core PUBLIC tavrin_options)
# Nothing throws but an allocation that fails, and nobody catches that: it ends the process either
# way, with or without clean-up paths.
set(TAVRIN_SERVICE_OPTIONS
  -fstack-protector-strong -ffunction-sections -fdata-sections -fno-exceptions)
target_compile_options(tavrin_core PRIVATE ${TAVRIN_SERVICE_OPTIONS})
# Read once. The preset `demo` goes without any of these, so that a missing include shows there.
target_precompile_headers(tavrin_core PRIVATE
  <windows.h> <algorithm> <optional> <string> <string_view> <vector>)

set(TAVRIN_LINK_HARDENING
  -static -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va -Wl,--no-insert-timestamp)

# tavrin_add_resources(TARGET DESCRIPTION): the manifest, and the resource that tells the version.
set(manifest "${TAVRIN_GENERATED}/TavrinService.manifest")
configure_file(packaging/TavrinService.manifest.in "${manifest}" @ONLY)
function(tavrin_add_resources name description)
  string(REPLACE "." ", " version_words "${TAVRIN_PRODUCT_VERSION}")
  set(resources "${TAVRIN_GENERATED}/${name}.rc")
  configure_file("${PROJECT_SOURCE_DIR}/packaging/executable.rc.in" "${resources}" @ONLY)
  set_source_files_properties("${resources}" PROPERTIES OBJECT_DEPENDS "${manifest}")
  target_sources(${name} PRIVATE "${resources}")
endfunction()

# The service itself, and the programs that its size is held against. A start waits for every library
# that is loaded with it; the two that are loaded later bring many others along, and are used by
# nothing but what asks a panel.
function(tavrin_link_as_the_service name)
  target_link_libraries(${name} PRIVATE iphlpapi ws2_32 advapi32 delayed_winhttp delayed_crypt32)
  target_link_options(${name} PRIVATE
    -municode -mconsole -s -fstack-protector-strong -Wl,--gc-sections ${TAVRIN_LINK_HARDENING})
endfunction()

add_executable(TavrinService "${TAVRIN_NO_EXCEPTIONS}")
tavrin_add_resources(TavrinService "Tavrin connection service")
target_link_libraries(TavrinService PRIVATE tavrin_core)
target_compile_options(TavrinService PRIVATE ${TAVRIN_SERVICE_OPTIONS})
tavrin_link_as_the_service(TavrinService)
set_target_properties(TavrinService PROPERTIES
  RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}")

add_subdirectory(client)
add_subdirectory(tests/bench/windows)

# The JSON library is headers only; the cross-compiler must not see the rest of /usr/include.
file(COPY /usr/include/nlohmann DESTINATION "${PROJECT_BINARY_DIR}/host-include")
add_library(tavrin_json INTERFACE)
target_include_directories(tavrin_json SYSTEM INTERFACE "${PROJECT_BINARY_DIR}/host-include")

add_subdirectory(tests/netmodel)
add_subdirectory(tests/standins)

option(TAVRIN_TESTS "The test programs; without them no GoogleTest is needed" ON)
if(NOT TAVRIN_TESTS)
  return()
endif()

# GoogleTest from Debian's source package, cross-compiled.
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)  # or it overrides the two settings below
set(gtest_force_shared_crt ON)
set(INSTALL_GTEST OFF)
add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL)
target_compile_options(gtest PRIVATE -O0)

# What the tests do takes long beside what they compute, so they are compiled fast.
add_library(tavrin_windows_test INTERFACE)
target_compile_options(tavrin_windows_test INTERFACE -O0)

# Test programs run side by side in lanes (see the script); on Windows itself just so.
set(TAVRIN_LANES "${PROJECT_BINARY_DIR}/lanes")
set(TAVRIN_LAUNCHER "")
if(NOT CMAKE_HOST_WIN32)
  set(TAVRIN_LAUNCHER "${PROJECT_SOURCE_DIR}/tests/e2e/in_lane.sh" "${TAVRIN_LANES}"
    "${PROJECT_SOURCE_DIR}/tests/e2e/run_in_wine.sh")
endif()

add_subdirectory(tests/contract)
add_subdirectory(tests/e2e)

add_test(NAME executable.IsSmallHardenedAndSelfContained
  COMMAND "${PROJECT_SOURCE_DIR}/scripts/check_executable.sh" "$<TARGET_FILE:TavrinService>")
