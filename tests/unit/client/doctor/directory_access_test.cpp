#include "client/doctor/directory_access.h"

#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

using Writers = std::vector<std::wstring>;

constexpr wchar_t kAdvice[] =
    L"the service runs what lies there with the system's rights: move it below "
    L"C:\\Program Files, or take the right away";

class DirectoryAccessTest : public unit::DoctorTest {};

TEST_F(DirectoryAccessTest, ReadersAreNoWriters) {
  EXPECT_EQ(ForeignWriters(L"D:PAI(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"),
            Writers());
  EXPECT_EQ(ForeignWriters(L"D:(A;;FRFX;;;WD)(A;;GRGX;;;AU)"), Writers());
}

TEST_F(DirectoryAccessTest, WhoMayWriteIsNamedOnce) {
  EXPECT_EQ(ForeignWriters(L"D:(A;OICI;FA;;;WD)(A;;0x1301bf;;;BU)(A;;GW;;;AU)(A;;FA;;;WD)"),
            (Writers{L"everyone", L"the users", L"every user who is signed in"}));
}

TEST_F(DirectoryAccessTest, EachRightThatChangesSomethingCounts) {
  for (const wchar_t* right : {L"0x2", L"0x4", L"0x40", L"0x10000", L"0x40000", L"0x80000",
                               L"0x10000000", L"0x40000000", L"FW", L"GA", L"WD", L"WO", L"SD"}) {
    EXPECT_EQ(ForeignWriters(std::wstring(L"D:(A;;") + right + L";;;BU)"), Writers{L"the users"})
        << right;
  }
}

TEST_F(DirectoryAccessTest, ARefusalIsNoRight) {
  EXPECT_EQ(ForeignWriters(L"D:(D;;FA;;;BU)(OA;;FA;;;BU)"), Writers());
}

TEST_F(DirectoryAccessTest, AnUnknownTrusteeIsNamedByItsNumber) {
  EXPECT_EQ(ForeignWriters(L"D:(A;;FA;;;S-1-5-21-1-2-3-1001)"), Writers{L"S-1-5-21-1-2-3-1001"});
}

TEST_F(DirectoryAccessTest, NoListAtAllAllowsEveryone) {
  EXPECT_EQ(ForeignWriters(L"D:NO_ACCESS_CONTROL"), Writers{L"everyone"});
  EXPECT_EQ(ForeignWriters(L"O:BA"), Writers{L"everyone"});
  EXPECT_EQ(ForeignWriters(L"D:P"), Writers());
}

TEST_F(DirectoryAccessTest, ADirectoryBelowProgramFilesIsGood) {
  ExpectGood(CheckDirectoryAccess(patient),
             L"only administrators may write to C:\\Program Files\\Tavrin\\runtime");
}

TEST_F(DirectoryAccessTest, ADirectoryForEveryoneIsARemark) {
  machine.files.SetAccessList(unit::kRuntime, "D:(A;OICI;FA;;;WD)(A;;0x1301bf;;;BU)");
  ExpectRemark(CheckDirectoryAccess(patient),
               L"everyone, the users may write to C:\\Program Files\\Tavrin\\runtime", kAdvice);
}

TEST_F(DirectoryAccessTest, AListThatCantBeReadIsNoGreenMark) {
  const std::wstring text = L"the access list of C:\\Program Files\\Tavrin\\runtime can't be read";
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
