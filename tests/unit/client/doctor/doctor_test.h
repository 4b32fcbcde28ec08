// A healthy machine for the doctor, that each test makes ill in one place.
#ifndef TAVRIN_TESTS_UNIT_CLIENT_DOCTOR_DOCTOR_TEST_H_
#define TAVRIN_TESTS_UNIT_CLIENT_DOCTOR_DOCTOR_TEST_H_

#include "client/doctor/checks.h"
#include "tests/unit/client/client_test.h"

namespace unit {

class DoctorTest : public ClientTest {
 protected:
  DoctorTest() {
    PutAccount();
    const std::wstring runtime = kRuntime;
    machine.files.Put(runtime + L"\\xray\\geoip.dat", "data");
    machine.files.Put(runtime + L"\\xray\\geosite.dat", "data");
    machine.programs.On(L"xray.exe", CheckingXray());
    machine.programs.On(L"tun2socks*.exe",
                        sim::Script().Prints("tun2socks-2.6.0\nwindows/amd64\n").Exits(0, 40));
    machine.registry.AddKey(L"HKEY_USERS\\S-1-5-18");
    patient.place = vpn::FindServicePlace(L"");
    patient.isSurelyAbsent = true;
  }

  // Tells its version. Of a configuration on its standard input it opens the log, as the real one
  // does, and refuses what does not begin with a brace.
  sim::Script CheckingXray() {
    return sim::Script()
        .Prints("Xray 26.3.27 (Xray, Penetrates Everything.) x\n")
        .Does(40, [this](sim::Process& process) {
          const std::string config = process.input ? process.input->bytes : "{}";
          const size_t log = config.find("xray-error.log");
          if (log != std::string::npos) {
            machine.files.Put(InRuntime(L"xray-error.log"), "opened");
          }
          const bool isGood = config.starts_with("{");
          process.output->bytes += isGood ? "Configuration OK.\n" : "Failed to start: no JSON\r\n";
          machine.processes.End(process.shared_from_this(), isGood ? 0 : 23);
        });
  }

  static std::wstring InRuntime(const wchar_t* name) {
    return std::wstring(kRuntime) + L"\\" + name;
  }
  // With `text` and `whatToDo` as they are.
  static void ExpectFinding(const vpn::Finding& finding, vpn::Verdict verdict,
                            const std::wstring& text, const std::wstring& whatToDo) {
    EXPECT_EQ(static_cast<int>(finding.verdict), static_cast<int>(verdict));
    EXPECT_EQ(finding.text, text);
    EXPECT_EQ(finding.whatToDo, whatToDo);
  }
  static void ExpectGood(const vpn::Finding& finding, const std::wstring& text) {
    ExpectFinding(finding, vpn::Verdict::kGood, text, L"");
  }
  static void ExpectRemark(const vpn::Finding& finding, const std::wstring& text,
                           const std::wstring& whatToDo) {
    ExpectFinding(finding, vpn::Verdict::kRemark, text, whatToDo);
  }
  static void ExpectProblem(const vpn::Finding& finding, const std::wstring& text,
                            const std::wstring& whatToDo) {
    ExpectFinding(finding, vpn::Verdict::kProblem, text, whatToDo);
  }
  // Nobody knows whether a tunnel is up or a connect is under way.
  void MakeServiceBusy() {
    patient.end = vpn::ExchangeEnd::kBusy;
    patient.isSurelyAbsent = false;
  }
  void SetUpTunnel() {
    patient.isSurelyAbsent = false;
    patient.end = vpn::ExchangeEnd::kReplied;
    patient.reply.running = true;
  }

  vpn::Patient patient;
};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CLIENT_DOCTOR_DOCTOR_TEST_H_
