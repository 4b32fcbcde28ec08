#!/usr/bin/env bash
# Installs what is missing, builds both worlds and runs what everybody should wait for; ends at the
# first stage that fails. Each stage shows its time and its counts.
#   --all       also the packages, clang-tidy, ThreadSanitizer, all fault scenes, 10,000 sequences,
#               fuzzing, the short soaks, the quick benchmarks and --real
#   --real      also the real Xray and tun2socks, built from their Go modules, and Node.js as a client;
#               what a machine can't do for want of Go or npm is shown as skipped
#   --soak      300 connects under Wine, 100,000 simulated ones, and both commands of the README on a
#               bare machine (two hours)
#   --coverage  the coverage of src/ by the native tests
set -euo pipefail
cd "$(dirname "$0")"

case "${1:-}" in
  '' | --all | --real | --soak) mode=${1:-} ;;
  --coverage) exec scripts/coverage.sh ;;
  *) echo "usage: ./test.sh [--all | --real | --soak | --coverage]" >&2; exit 2 ;;
esac

mkdir -p build
table=()
ahead=
passed=0
failed=0
skipped=0

finish() {
  printf '\n%-58s %6s  %s\n' Stage Time Result
  printf '%s\n' "${table[@]}" ""
  if [ "$skipped" = 0 ]; then
    echo "$passed passed, $failed failed"
  else
    echo "$passed passed, $failed failed, $skipped skipped"
  fi
  [ "$failed" = 0 ] || exit 1
}

# stage NAME COMMAND...: runs a stage. Its output is shown when it fails. What a stage of tests has
# counted is its last line. A stage that this machine can't do ends with the line "skipped: REASON".
stage() {
  local name=$1 start=$SECONDS log=build/stage.log result=ok row
  shift
  if "$@" >"$log" 2>&1; then
    local good=1
  else
    local good=0
    cat "$log"
    result=FAILED
  fi
  if [[ $(tail -n 1 "$log") =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed$ ]]; then
    result=${BASH_REMATCH[0]}
    passed=$((passed + BASH_REMATCH[1]))
    failed=$((failed + BASH_REMATCH[2]))
  elif [ "$good" = 0 ]; then
    failed=$((failed + 1))
  elif [[ $(tail -n 1 "$log") == "skipped: "* ]]; then
    result=$(tail -n 1 "$log")
    skipped=$((skipped + 1))
  fi
  row=$(printf '%-58s %3d:%02d  %s' "$name" $(((SECONDS - start) / 60)) $(((SECONDS - start) % 60)) "$result")
  echo "$row"
  table+=("$row")
  [ "$good" = 1 ] || finish
}

# A build beside another stage: a group of processes of its own, which ends with this script at the latest.
begin_native_build() {
  setsid nice -n 19 scripts/build.sh native >build/ahead.log 2>&1 &
  ahead=$!
  trap '[ -z "$ahead" ] || kill -- "-$ahead" 2>/dev/null || true' EXIT
}
end_native_build() {
  local status=0
  wait "$ahead" || status=$?
  ahead=
  cat build/ahead.log
  return "$status"
}

soak_in_wine() {
  TAVRIN_SOAK_ROUNDS=300 tests/e2e/in_lane.sh build/windows/lanes tests/e2e/run_in_wine.sh \
    build/windows/e2e/e2e_tests.exe '--gtest_filter=Soak.*'
}
simulated_soak() { TAVRIN_SIMULATED_SOAK_ROUNDS=100000 build/native/tests/soak/simulated_soak; }

# The configurations that the tests generate are kept for the real Xray.
if [ "$mode" = --all ] || [ "$mode" = --real ]; then
  export TAVRIN_KEPT_FILES=$PWD/build/configurations
  rm -rf "$TAVRIN_KEPT_FILES"
  mkdir -p "$TAVRIN_KEPT_FILES"
fi

stage "Packages" scripts/install_packages.sh cmake ninja-build git g++ g++-mingw-w64-x86-64-posix \
  wine wine64 clang clang-format clang-tidy libclang-rt-14-dev lld libgtest-dev libgmock-dev \
  googletest nlohmann-json3-dev libcli11-dev libcpp-httplib-dev libssl-dev iproute2
stage "Format" scripts/check_format.sh
stage "Documents" scripts/check_docs.sh
stage "The order of the rooms" scripts/check_layers.sh
stage "Build for Windows" scripts/build.sh windows
# The tests under Wine wait for a good part of their time; the next build uses it.
begin_native_build
stage "Contract and end-to-end tests under Wine" scripts/run_ctest.sh build/windows windows
stage "The rest of the build of the simulated machine, ASan and UBSan" end_native_build
stage "Unit, contract and fault tests on the simulated machine" scripts/run_ctest.sh build/native native

# in_lane SCRIPT: a check that runs the built programs.
in_lane() { tests/e2e/in_lane.sh build/windows/lanes "$@" build/windows; }

real_stages() {
  stage "The examples of the control protocol" scripts/check_examples.sh
  stage "Stages that a machine can't do are skipped" tests/real/check_skips.sh
  stage "Build of the real Xray and tun2socks" tests/real/build.sh
  stage "The real Xray's verdict, 25.12.8" tests/real/run.sh verdict xray
  stage "The real Xray's verdict, 26.3.27" tests/real/run.sh verdict xray-newest
  stage "Traffic through a REALITY server, 25.12.8" tests/real/run.sh traffic xray
  stage "Traffic through a REALITY server, 26.3.27" tests/real/run.sh traffic xray-newest
  stage "The real Xray as the service's child under Wine" tests/real/run.sh service Core
  stage "The real tun2socks' command line" tests/real/run.sh service Tun2socks
  stage "Node.js for Windows" tests/real/fetch_node.sh
  stage "Node.js as a client" tests/real/run.sh service Node
}

if [ "$mode" = --all ] || [ "$mode" = --real ]; then
  real_stages
fi
if [ "$mode" = --all ]; then
  stage "More packages" scripts/install_packages.sh tmux chromium fonts-noto-cjk wixl msitools zip unzip \
    osslsigncode openssl
  stage "The installer, the zip and the signatures" tests/package/all.sh build/windows
  stage "The client's documented outputs" in_lane tests/e2e/run_with_panel.sh \
    build/windows/test_panel/test_panel scripts/check_client_docs.sh
  stage "The client's screen in a terminal" in_lane scripts/check_client_screen.sh
  stage "The client's page in a browser" in_lane scripts/check_client_page.sh
  stage "All fault scenes, the simulated soak" scripts/run_ctest.sh build/native native-long
  stage "10,000 sequences of events" scripts/sequences.sh --plain --count 10000 --jobs 2
  stage "Soak under Wine" scripts/run_ctest.sh build/windows windows-long
  stage "clang-tidy" scripts/build.sh native --target tidy
  stage "Build of the simulated machine, ThreadSanitizer" scripts/build.sh native-tsan
  stage "The same tests under ThreadSanitizer" scripts/run_ctest.sh build/native-tsan native-tsan
  stage "Build of the fuzz targets" scripts/build.sh fuzz
  stage "Fuzzing, 30 seconds a target" scripts/fuzz.sh
  stage "Benchmarks, quick" scripts/bench.sh --quick
elif [ "$mode" = --soak ]; then
  stage "Soak under Wine, 300 connects" soak_in_wine
  stage "Simulated soak, 100,000 connects" simulated_soak
  stage "Both commands of the README on a bare machine" scripts/check_bare_machine.sh
fi
finish
