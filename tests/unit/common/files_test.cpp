#include "src/common/files.h"

#include "tests/sim/fixture.h"

namespace vpn {
namespace {

using std::string_literals::operator""s;

class ReadFileBytesTest : public sim::MachineTest {};
class WriteFileBytesTest : public sim::MachineTest {
 protected:
  WriteFileBytesTest() { machine.files.PutDirectory(L"C:\\run"); }
};

TEST_F(ReadFileBytesTest, EveryByteArrivesUnchanged) {
  const std::string content = "\xEF\xBB\xBF{\r\n\x1A\0\xFF}\n"s;
  machine.files.Put(L"C:\\run\\a.json", content);
  std::string text = "before";
  EXPECT_TRUE(ReadFileBytes(L"C:\\run\\a.json", text));
  EXPECT_EQ(text, content);
}

TEST_F(ReadFileBytesTest, FileIsOpenedInBinaryModeAndSharedWithEverybody) {
  machine.files.Put(L"C:\\run\\a.json", "x");
  std::string text;
  EXPECT_TRUE(ReadFileBytes(L"C:\\run\\a.json", text));
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            std::vector<std::string>{R"("C:\run\a.json", "rb", 64)"});
}

TEST_F(ReadFileBytesTest, EmptyFileIsASuccessWithAnEmptyText) {
  machine.files.Put(L"C:\\run\\empty");
  std::string text = "before";
  EXPECT_TRUE(ReadFileBytes(L"C:\\run\\empty", text));
  EXPECT_EQ(text, "");
}

TEST_F(ReadFileBytesTest, LengthsAroundTheChunkAreReadWhole) {
  for (const size_t length : {1u, 4095u, 4096u, 4097u, 8192u, 100000u}) {
    SCOPED_TRACE(length);
    std::string content(length, 'x');
    content.back() = 'z';
    machine.files.Put(L"C:\\run\\big", content);
    std::string text;
    EXPECT_TRUE(ReadFileBytes(L"C:\\run\\big", text));
    EXPECT_EQ(text, content);
  }
}

TEST_F(ReadFileBytesTest, MissingFileLeavesTheTextUntouched) {
  std::string text = "before";
  EXPECT_FALSE(ReadFileBytes(L"C:\\run\\none", text));
  EXPECT_EQ(text, "before");
}

TEST_F(ReadFileBytesTest, DirectoryIsNoFile) {
  machine.files.PutDirectory(L"C:\\run");
  std::string text = "before";
  EXPECT_FALSE(ReadFileBytes(L"C:\\run", text));
  EXPECT_EQ(text, "before");
}

TEST_F(ReadFileBytesTest, LockedFileIsNotRead) {
  machine.files.Put(L"C:\\run\\a.json", "x");
  machine.files.SetLocked(L"C:\\run\\a.json", true);
  std::string text = "before";
  EXPECT_FALSE(ReadFileBytes(L"C:\\run\\a.json", text));
  EXPECT_EQ(text, "before");
}

TEST_F(WriteFileBytesTest, FileIsCreatedWithExactlyTheBytes) {
  EXPECT_TRUE(WriteFileBytes(L"C:\\run\\new", "a\n\0\xFF"s));
  EXPECT_EQ(machine.files.Read(L"C:\\run\\new"), "a\n\0\xFF"s);
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen"),
            std::vector<std::string>{R"("C:\run\new", "wb", 64)"});
}

TEST_F(WriteFileBytesTest, LongerContentIsReplacedWhole) {
  machine.files.Put(L"C:\\run\\old", "a much longer text");
  EXPECT_TRUE(WriteFileBytes(L"C:\\run\\old", "short"));
  EXPECT_EQ(machine.files.Read(L"C:\\run\\old"), "short");
}

TEST_F(WriteFileBytesTest, NoBytesEmptyTheFile) {
  machine.files.Put(L"C:\\run\\old", "text");
  EXPECT_TRUE(WriteFileBytes(L"C:\\run\\old", ""));
  EXPECT_EQ(machine.files.Read(L"C:\\run\\old"), "");
}

TEST_F(WriteFileBytesTest, MissingDirectoryIsAFailure) {
  EXPECT_FALSE(WriteFileBytes(L"C:\\none\\new", "x"));
  EXPECT_FALSE(machine.files.Exists(L"C:\\none\\new"));
}

TEST_F(WriteFileBytesTest, LockedFileKeepsItsContent) {
  machine.files.Put(L"C:\\run\\old", "text");
  machine.files.SetLocked(L"C:\\run\\old", true);
  EXPECT_FALSE(WriteFileBytes(L"C:\\run\\old", "x"));
  EXPECT_EQ(machine.files.Read(L"C:\\run\\old"), "text");
}

TEST_F(WriteFileBytesTest, FullDiskIsStillASuccess) {
  machine.files.Put(L"C:\\run\\old", "text");
  machine.files.SetWritesFail(L"C:\\run\\old", true);
  EXPECT_TRUE(WriteFileBytes(L"C:\\run\\old", "x"));
  EXPECT_EQ(machine.files.Read(L"C:\\run\\old"), "");
}

}  // namespace
}  // namespace vpn
