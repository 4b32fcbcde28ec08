#!/usr/bin/env bash
# Installs what is missing, builds both worlds and runs every test; ends at the first kind that
# fails. With --soak, two soaks follow: 300 connects under Wine, 100,000 simulated ones (an hour).
# With --coverage: the coverage of src/ by the native tests instead.
set -euo pipefail
cd "$(dirname "$0")"

case "${1:-}" in
  '' | --soak) ;;
  --coverage) exec scripts/coverage.sh ;;
  *) echo "usage: ./test.sh [--soak | --coverage]" >&2; exit 2 ;;
esac

stage() { printf '\n==== %s\n' "$*"; }

stage "Packages"
scripts/install_packages.sh cmake ninja-build git g++ g++-mingw-w64-x86-64-posix wine wine64 \
  clang clang-format clang-tidy libclang-rt-14-dev libgtest-dev libgmock-dev googletest \
  nlohmann-json3-dev libcpp-httplib-dev libssl-dev

stage "Format, documents and the order of the rooms"
scripts/check_format.sh
scripts/check_docs.sh
scripts/check_layers.sh

# A quiet build: the compiler speaks only when something is wrong.
build() {
  cmake --preset "$1" >"build/$1.log" || { cat "build/$1.log"; return 1; }
  cmake --build --preset "$1" "${@:2}" >"build/$1.log" 2>&1 || { tail -n 60 "build/$1.log"; return 1; }
}
mkdir -p build

stage "clang-tidy"
build native
build native --target tidy

stage "Simulated world: unit, contract and fault tests under AddressSanitizer and UBSan"
ctest --preset native
grep -h "fallible calls" build/native/Testing/Temporary/LastTest.log

stage "Simulated world under ThreadSanitizer"
build native-tsan
ctest --preset native-tsan

stage "Fuzzing, 30 seconds a target"
scripts/fuzz.sh

stage "Real world: contract and end-to-end tests of the shipping executable under Wine"
build windows
ctest --preset windows

if [ "${1:-}" = --soak ]; then
  stage "Soak"
  TAVRIN_SOAK_ROUNDS=300 tests/e2e/run_in_wine.sh build/windows/wine-e2e \
    build/windows/e2e/e2e_tests.exe '--gtest_filter=Soak.*'
  TAVRIN_SIMULATED_SOAK_ROUNDS=100000 build/native/tests/unit/unit_host \
    '--gtest_filter=SimulatedSoak.*'
fi

echo
echo "All tests passed."
