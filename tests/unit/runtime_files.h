// A runtime directory in which a connect works: the helper programs, and a signed-in local account.
#ifndef TAVRIN_TESTS_UNIT_RUNTIME_FILES_H_
#define TAVRIN_TESTS_UNIT_RUNTIME_FILES_H_

#include <string>

#include "tests/sim/machine.h"

namespace unit {

inline constexpr wchar_t kRuntimeDir[] = L"C:\\run";

// The account of the local backend, with its one node.
inline std::string AccountJson(const std::string& nodeName = "Tokyo") {
  return R"({"email":"a@b.example","password":"p","expireAt":"2030-01-01","deviceLimit":3,)"
         R"("nodeName":")" +
         nodeName +
         R"(","address":"198.51.100.7","port":443,"uuid":"2f9f0a3c-0000-4000-8000-000000000001",)"
         R"("sni":"www.site.example","publicKey":"bm9kZS1vZi10aGUtdW5pdC10ZXN0cy0tLS0tLS0tLS0","shortId":"01ab"})";
}

inline void PutLocalAccount(sim::Machine& machine, const std::wstring& runtimeDir = kRuntimeDir) {
  machine.files.Put(runtimeDir + L"\\account.json", AccountJson());
  machine.files.Put(runtimeDir + L"\\session.json",
                    "{\"email\":\"a@b.example\",\"expireAt\":\"2030-01-01\"}\n");
}

inline void PutRuntime(sim::Machine& machine, const std::wstring& runtimeDir = kRuntimeDir) {
  machine.PutHelpers(runtimeDir);
  PutLocalAccount(machine, runtimeDir);
}

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_RUNTIME_FILES_H_
