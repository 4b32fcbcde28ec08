#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

constexpr wchar_t kAdvice[] =
    L"the service runs what lies there with the system's rights: move it below "
    L"C:\\Program Files, or take the right away";

class DirectoryAccessTest : public unit::DoctorTest {};

TEST_F(DirectoryAccessTest, ADirectoryBelowProgramFilesIsGood) {
  ExpectGood(CheckDirectoryAccess(patient),
             L"only administrators may write to C:\\Program Files\\Tavrin\\runtime and to the "
             L"service's programs");
}

TEST_F(DirectoryAccessTest, ADirectoryForEveryoneIsARemark) {
  machine.files.SetAccessList(unit::kRuntime, "D:(A;OICI;FA;;;WD)(A;;0x1301bf;;;BU)");
  ExpectRemark(CheckDirectoryAccess(patient),
               L"everyone, the users may write to C:\\Program Files\\Tavrin\\runtime", kAdvice);
}

TEST_F(DirectoryAccessTest, TheDirectoriesOfTheProgramsAreLookedAtToo) {
  for (const wchar_t* directory :
       {L"C:\\Program Files\\Tavrin", L"C:\\Program Files\\Tavrin\\runtime\\xray",
        L"C:\\Program Files\\Tavrin\\runtime\\tun2socks"}) {
    machine.files.SetAccessList(directory, "O:BAD:(A;;0x4;;;BU)");
    ExpectRemark(CheckDirectoryAccess(patient),
                 std::wstring(L"the users may write to ") + directory, kAdvice);
    machine.files.SetAccessList(directory, "");
  }
}

TEST_F(DirectoryAccessTest, TheSameWritersAreNamedOnceForAWholeTree) {
  for (const wchar_t* directory : {L"C:\\Program Files\\Tavrin", unit::kRuntime,
                                   L"C:\\Program Files\\Tavrin\\runtime\\xray"}) {
    machine.files.SetAccessList(directory, "O:BAD:(A;;FA;;;BU)");
  }
  EXPECT_EQ(CheckDirectoryAccess(patient).text,
            L"the users may write to C:\\Program Files\\Tavrin");
  machine.files.SetAccessList(L"C:\\Program Files\\Tavrin\\runtime\\tun2socks",
                              "O:BAD:(A;;FA;;;WD)");
  EXPECT_EQ(CheckDirectoryAccess(patient).text,
            L"the users may write to C:\\Program Files\\Tavrin; everyone may write to "
            L"C:\\Program Files\\Tavrin\\runtime\\tun2socks");
  machine.files.SetAccessList(L"C:\\Program Files\\Tavrin", "");
  machine.files.SetAccessList(unit::kRuntime, "");
  machine.files.SetAccessList(L"C:\\Program Files\\Tavrin\\runtime\\tun2socks",
                              "O:BAD:(A;;FA;;;BU)");
  EXPECT_EQ(CheckDirectoryAccess(patient).text,
            L"the users may write to C:\\Program Files\\Tavrin\\runtime\\xray and to "
            L"C:\\Program Files\\Tavrin\\runtime\\tun2socks");
}

TEST_F(DirectoryAccessTest, AServiceThatLiesInItsRuntimeDirectoryIsNamedOnce) {
  patient.place.directory = unit::kRuntime;
  machine.files.SetAccessList(unit::kRuntime, "O:S-1-5-21-1-2-3-1001D:(A;;FA;;;BA)");
  EXPECT_EQ(CheckDirectoryAccess(patient).text,
            L"S-1-5-21-1-2-3-1001 may write to C:\\Program Files\\Tavrin\\runtime");
}

TEST_F(DirectoryAccessTest, ADirectoryOfProgramsThatIsMissingIsAnotherChecksMatter) {
  machine.files.Remove(L"C:\\Program Files\\Tavrin\\runtime\\xray");
  EXPECT_EQ(static_cast<int>(CheckDirectoryAccess(patient).verdict),
            static_cast<int>(Verdict::kGood));
}

TEST_F(DirectoryAccessTest, AListThatCantBeReadIsNoGreenMark) {
  const std::wstring text = L"the access list of C:\\Program Files\\Tavrin can't be read";
  machine.faults.Fail("GetNamedSecurityInfoW", {.nth = 1});
  ExpectRemark(CheckDirectoryAccess(patient), text, L"run this with administrator's rights");
  machine.faults.Fail("ConvertSecurityDescriptorToStringSecurityDescriptorW", {.nth = 1});
  ExpectRemark(CheckDirectoryAccess(patient), text, L"run this with administrator's rights");
}

TEST_F(DirectoryAccessTest, ADirectoryThatIsMissingIsAProblem) {
  patient.place.runtimeDir = L"D:\\gone";
  ExpectProblem(CheckDirectoryAccess(patient), L"D:\\gone is not there",
                L"install the service's files again");
}

}  // namespace
}  // namespace vpn
