#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class MissingHelpersTest : public unit::DoctorTest {
 protected:
  void Remove(const wchar_t* name) { machine.files.Remove(std::wstring(unit::kRuntime) + name); }
};

TEST_F(MissingHelpersTest, WithoutAnyAllAreListed) {
  for (const wchar_t* name :
       {L"\\xray\\xray.exe", L"\\xray\\geoip.dat", L"\\xray\\geosite.dat",
        L"\\tun2socks\\wintun.dll", L"\\tun2socks\\tun2socks-windows-amd64.exe"}) {
    Remove(name);
  }
  ExpectProblem(CheckPrograms(patient),
                L"not in C:\\Program Files\\Tavrin\\runtime: xray\\xray.exe, xray\\geoip.dat, "
                L"xray\\geosite.dat, tun2socks\\wintun.dll, tun2socks\\tun2socks*.exe",
                L"put the files there");
}

TEST_F(MissingHelpersTest, OneAloneIsLeftToTheOtherChecks) {
  Remove(L"\\xray\\geoip.dat");
  EXPECT_EQ(CheckPrograms(patient).whatToDo, L"put the file there");
  Remove(L"\\tun2socks\\wintun.dll");
  ExpectProblem(
      CheckPrograms(patient),
      L"not in C:\\Program Files\\Tavrin\\runtime: xray\\geoip.dat, tun2socks\\wintun.dll",
      L"put the files there");
}

TEST_F(MissingHelpersTest, AFileThatCantBeLookedAtIsNotCalledMissing) {
  Remove(L"\\xray\\geoip.dat");
  machine.faults.Fail("GetFileAttributesW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  EXPECT_EQ(CheckPrograms(patient).text.find(L"not in"), std::wstring::npos);
}

}  // namespace
}  // namespace vpn
