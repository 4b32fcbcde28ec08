#include "client/report/whole_file.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

constexpr wchar_t kFile[] = L"C:\\there\\file.md";
constexpr wchar_t kPart[] = L"C:\\there\\file.md.part";

class WholeFileTest : public unit::ClientTest {
 protected:
  WholeFileTest() { machine.files.PutDirectory(L"C:\\there"); }
};

TEST_F(WholeFileTest, IsThereUnderItsNameAlone) {
  EXPECT_TRUE(WriteWholeFile(kFile, "text\n"));
  EXPECT_EQ(machine.files.Read(kFile), "text\n");
  EXPECT_FALSE(machine.files.Exists(kPart));
}

TEST_F(WholeFileTest, TakesThePlaceOfAnOlderOne) {
  machine.files.Put(kFile, "older and longer");
  EXPECT_TRUE(WriteWholeFile(kFile, "new"));
  EXPECT_EQ(machine.files.Read(kFile), "new");
}

TEST_F(WholeFileTest, OnAFullDiskTheOlderOneStays) {
  machine.files.Put(kFile, "older");
  machine.files.isDiskFull = true;
  EXPECT_FALSE(WriteWholeFile(kFile, "new"));
  EXPECT_EQ(machine.files.Read(kFile), "older");
  EXPECT_FALSE(machine.files.Exists(kPart));
}

TEST_F(WholeFileTest, ANameThatCantBeTakenLeavesNothingHalfMade) {
  machine.files.PutDirectory(kFile);
  EXPECT_FALSE(WriteWholeFile(kFile, "new"));
  EXPECT_FALSE(machine.files.Exists(kPart));
  EXPECT_FALSE(WriteWholeFile(L"C:\\nowhere\\file.md", "new"));
}

TEST_F(WholeFileTest, AnothersFileOfThatNameStays) {
  machine.files.Put(kPart, "another's");
  machine.files.SetLocked(kPart, true);
  EXPECT_FALSE(WriteWholeFile(kFile, "new"));
  EXPECT_EQ(machine.files.Read(kPart), "another's");
}

}  // namespace
}  // namespace vpn
