// The smallest program of this toolchain with the service's flags: what the start-up code weighs.
extern "C" int wmain() {
  return 0;
}
