#include "client/doctor/file_look.h"

#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

constexpr wchar_t kFile[] = L"C:\\there\\file";

class FileLookTest : public unit::DoctorTest {
 protected:
  FileLookTest() { machine.files.Put(kFile, "text"); }
};

// A share that is away, a drive without a disk, a name in use: none of them says that there is no
// file.
TEST_F(FileLookTest, OnlyTwoCodesSayThatAFileIsMissing) {
  for (const DWORD code : {2u, 3u}) {
    machine.faults.Fail("GetFileAttributesExW", {.nth = 1, .code = code});
    EXPECT_EQ(LookAtName(kFile), FileState::kMissing) << code;
  }
  for (const DWORD code : {5u, 21u, 32u, 53u, 123u, 1920u}) {
    machine.faults.Fail("GetFileAttributesExW", {.nth = 1, .code = code});
    EXPECT_EQ(LookAtName(kFile), FileState::kUnreadable) << code;
  }
}

TEST_F(FileLookTest, ANameIsLookedAtWithoutOpeningTheFile) {
  machine.files.SetLocked(kFile, true);
  EXPECT_EQ(LookAtName(kFile), FileState::kReadable);
  EXPECT_EQ(LookAtName(L"C:\\there"), FileState::kDirectory);
  EXPECT_EQ(machine.calls.Count("_wfsopen"), 0u);
  EXPECT_EQ(LookAtFile(kFile, 100), FileState::kUnreadable);
}

TEST_F(FileLookTest, TheLimitIsTheGreatestSizeThatIsGood) {
  EXPECT_EQ(LookAtFile(kFile, 4), FileState::kReadable);
  EXPECT_EQ(LookAtFile(kFile, 3), FileState::kHuge);
}

TEST_F(FileLookTest, AProgramGivesItsFirstTwoBytes) {
  std::string start;
  EXPECT_EQ(LookAtProgram(kFile, start), FileState::kReadable);
  EXPECT_EQ(start, "te");
  machine.files.Put(kFile, "M");
  EXPECT_EQ(LookAtProgram(kFile, start), FileState::kReadable);
  EXPECT_EQ(start, "M");
}

}  // namespace
}  // namespace vpn
