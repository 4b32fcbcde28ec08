// Every file that the doctor reads, in every state that is not as it should be.
#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

enum class Damage { kMissing, kEmpty, kRubbish, kLocked, kDenied, kDirectory, kHuge };

struct Expected {
  Damage damage;
  Verdict verdict;
  const wchar_t* text;  // {} stands for the path
};

constexpr size_t kHugeSize = 2 << 20;

class DamagedFilesTest : public unit::DoctorTest {
 protected:
  void Spoil(const std::wstring& path, Damage damage) {
    const std::string content = machine.files.Read(path).value_or("");
    machine.files.Remove(path);
    if (damage == Damage::kDirectory) {
      machine.files.PutDirectory(path);
    } else if (damage != Damage::kMissing) {
      machine.files.Put(path, damage == Damage::kEmpty     ? ""
                              : damage == Damage::kRubbish ? "\xFF\xFErubbish\n"
                              : damage == Damage::kHuge    ? content + std::string(kHugeSize, ' ')
                                                           : content);
      machine.files.SetLocked(path, damage == Damage::kLocked);
      machine.files.SetDenied(path, damage == Damage::kDenied);
    }
  }

  void ExpectEach(const std::wstring& path, Finding (*check)(const Patient&),
                  const std::vector<Expected>& table) {
    const std::string content = machine.files.Read(path).value_or("");
    for (const Expected& expected : table) {
      SCOPED_TRACE(static_cast<int>(expected.damage));
      machine.files.Remove(path);
      machine.files.Put(path, content);
      Spoil(path, expected.damage);
      const Finding finding = check(patient);
      std::wstring text = expected.text;
      if (const size_t at = text.find(L"{}"); at != std::wstring::npos) {
        text.replace(at, 2, path);
      }
      EXPECT_EQ(finding.text, text);
      EXPECT_EQ(static_cast<int>(finding.verdict), static_cast<int>(expected.verdict));
      EXPECT_EQ(finding.whatToDo.empty(), expected.verdict == Verdict::kGood);
    }
    machine.files.Remove(path);
    machine.files.Put(path, content);
  }
};

constexpr wchar_t kPrograms[] = L"Xray 26.3.27, tun2socks 2.6.0, wintun.dll";

TEST_F(DamagedFilesTest, ProgramsAndTheLibrary) {
  for (const wchar_t* name : {L"xray\\xray.exe", L"tun2socks\\wintun.dll"}) {
    ExpectEach(InRuntime(name), CheckPrograms,
               {{Damage::kMissing, Verdict::kProblem, L"{} is not there"},
                {Damage::kEmpty, Verdict::kProblem, L"{} is empty"},
                {Damage::kRubbish, Verdict::kProblem, L"{} is damaged: a program begins with MZ"},
                {Damage::kLocked, Verdict::kRemark, L"{} can't be read"},
                {Damage::kDenied, Verdict::kRemark, L"{} can't be read"},
                {Damage::kDirectory, Verdict::kProblem, L"{} is a directory"},
                {Damage::kHuge, Verdict::kGood, kPrograms}});
  }
  ExpectEach(InRuntime(L"tun2socks\\tun2socks-windows-amd64.exe"), CheckPrograms,
             {{Damage::kMissing, Verdict::kProblem,
               L"C:\\Program Files\\Tavrin\\runtime\\tun2socks holds no tun2socks*.exe"},
              {Damage::kEmpty, Verdict::kProblem, L"{} is empty"},
              {Damage::kRubbish, Verdict::kProblem, L"{} is damaged: a program begins with MZ"},
              {Damage::kLocked, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDenied, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDirectory, Verdict::kProblem, L"{} is a directory"},
              {Damage::kHuge, Verdict::kGood, kPrograms}});
}

// What stands in them is for Xray to judge, when it checks a configuration.
TEST_F(DamagedFilesTest, GeoFiles) {
  for (const wchar_t* name : {L"xray\\geoip.dat", L"xray\\geosite.dat"}) {
    ExpectEach(InRuntime(name), CheckPrograms,
               {{Damage::kMissing, Verdict::kProblem, L"{} is not there"},
                {Damage::kEmpty, Verdict::kProblem, L"{} is empty"},
                {Damage::kRubbish, Verdict::kGood, kPrograms},
                {Damage::kLocked, Verdict::kRemark, L"{} can't be read"},
                {Damage::kDenied, Verdict::kRemark, L"{} can't be read"},
                {Damage::kDirectory, Verdict::kProblem, L"{} is a directory"},
                {Damage::kHuge, Verdict::kGood, kPrograms}});
  }
}

TEST_F(DamagedFilesTest, TheGeneratedConfiguration) {
  machine.files.Put(InRuntime(L"session.json.xray.json"), "{}");
  ExpectEach(InRuntime(L"session.json.xray.json"), CheckConfiguration,
             {{Damage::kMissing, Verdict::kGood, L"none generated yet"},
              {Damage::kEmpty, Verdict::kProblem, L"{} is empty"},
              {Damage::kRubbish, Verdict::kProblem,
               L"Xray refuses the last one: Failed to start: no JSON"},
              {Damage::kLocked, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDenied, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDirectory, Verdict::kProblem, L"{} is a directory"},
              {Damage::kHuge, Verdict::kProblem, L"{} is far too large"}});
}

TEST_F(DamagedFilesTest, TheAccount) {
  ExpectEach(InRuntime(L"account.json"), CheckAccount,
             {{Damage::kMissing, Verdict::kProblem, L"cannot read {}"},
              {Damage::kEmpty, Verdict::kProblem, L"session does not match account"},
              {Damage::kRubbish, Verdict::kProblem, L"session does not match account"},
              {Damage::kLocked, Verdict::kProblem, L"cannot read {}"},
              {Damage::kDenied, Verdict::kProblem, L"cannot read {}"},
              {Damage::kDirectory, Verdict::kProblem, L"cannot read {}"},
              {Damage::kHuge, Verdict::kProblem, L"{} is far too large"}});
}

TEST_F(DamagedFilesTest, TheCredential) {
  ExpectEach(InRuntime(L"session.json"), CheckAccount,
             {{Damage::kMissing, Verdict::kProblem, L"not logged in"},
              {Damage::kEmpty, Verdict::kProblem, L"session does not match account"},
              {Damage::kRubbish, Verdict::kProblem, L"session does not match account"},
              {Damage::kLocked, Verdict::kProblem, L"not logged in"},
              {Damage::kDenied, Verdict::kProblem, L"not logged in"},
              {Damage::kDirectory, Verdict::kProblem, L"not logged in"},
              {Damage::kHuge, Verdict::kProblem, L"{} is far too large"}});
}

TEST_F(DamagedFilesTest, ThePanelsAddresses) {
  constexpr wchar_t kNone[] = L"{} names no apiBase, so the account is a file of this machine";
  ExpectEach(InRuntime(L"panel.json"), CheckPanel,
             {{Damage::kMissing, Verdict::kGood,
               L"none configured; the account is a file of this machine"},
              {Damage::kEmpty, Verdict::kRemark, kNone},
              {Damage::kRubbish, Verdict::kRemark, kNone},
              {Damage::kLocked, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDenied, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDirectory, Verdict::kRemark, L"{} is a directory"},
              {Damage::kHuge, Verdict::kRemark, L"{} is far too large"}});
}

// The service goes on with the account of this machine. So does a file that says nothing; one that
// this user can't read may say more to the service.
TEST_F(DamagedFilesTest, ThePanelsAddressesDecideWhichAccountCounts) {
  constexpr wchar_t kGood[] = L"so***@mail.example, plan until 2999-12-31, 1 node";
  constexpr wchar_t kUnread[] = L"which account counts can't be told: {} can't be read";
  ExpectEach(InRuntime(L"panel.json"), CheckAccount,
             {{Damage::kMissing, Verdict::kGood, kGood},
              {Damage::kEmpty, Verdict::kGood, kGood},
              {Damage::kRubbish, Verdict::kGood, kGood},
              {Damage::kLocked, Verdict::kRemark, kUnread},
              {Damage::kDenied, Verdict::kRemark, kUnread},
              {Damage::kDirectory, Verdict::kRemark,
               L"which account counts can't be told: {} is a directory"},
              {Damage::kHuge, Verdict::kRemark,
               L"which account counts can't be told: {} is far too large"}});
}

TEST_F(DamagedFilesTest, TheTrace) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  ExpectEach(unit::kTrace, CheckLastConnect,
             {{Damage::kMissing, Verdict::kGood, L"none so far"},
              {Damage::kEmpty, Verdict::kRemark, L"{} holds no connect"},
              {Damage::kRubbish, Verdict::kRemark, L"{} holds no connect"},
              {Damage::kLocked, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDenied, Verdict::kRemark, L"{} can't be read"},
              {Damage::kDirectory, Verdict::kRemark, L"{} is a directory"},
              {Damage::kHuge, Verdict::kRemark, L"{} holds no connect"}});
  std::string connects;
  while (connects.size() < kHugeSize) {
    connects += unit::RecordedConnect();
  }
  machine.files.Put(unit::kTrace, connects);
  ExpectGood(CheckLastConnect(patient), L"complete in 0.61 s");
}

TEST_F(DamagedFilesTest, AFileWhoseBytesDoNotComeIsNotEmptyButUnreadable) {
  machine.files.Find(InRuntime(L"xray\\geoip.dat"))->readsFail = true;
  ExpectRemark(CheckPrograms(patient), InRuntime(L"xray\\geoip.dat") + L" can't be read",
               L"run this with administrator's rights; if it stays so, another program holds the "
               L"file, or the disk is damaged");
}

}  // namespace
}  // namespace vpn
