#include "client/pipe/exchange.h"

#include "tests/unit/client/client_test.h"

namespace vpn {
namespace {

using unit::ScriptedService;

class ExchangeTest : public unit::ClientTest {
 protected:
  ExchangeEnd Ask() { return Exchange(R"({"op":"status"})", hooks, reply); }

  ExchangeHooks hooks;
  std::string reply;
};

TEST_F(ExchangeTest, SendsTheRequestAndGivesTheReply) {
  ScriptedService service(machine);
  service.RepliesAfter(25, unit::kUpReply);
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
  EXPECT_EQ(reply, R"({"ok":true,"running":true,"error":""})");
  EXPECT_EQ(service.Request(), R"({"op":"status"})");
}

TEST_F(ExchangeTest, TellsHowLongItWaits) {
  ScriptedService service(machine);
  service.RepliesAfter(25, unit::kUpReply);
  std::vector<std::uint64_t> waits;
  hooks.whileWaiting = [&](std::uint64_t time) { waits.push_back(time); };
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
  EXPECT_EQ(waits, (std::vector<std::uint64_t>{0, 10, 20}));
}

TEST_F(ExchangeTest, NoPipeAndNoProcessMeansAbsentAtOnce) {
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Ask(), ExchangeEnd::kAbsent);
  EXPECT_EQ(machine.clock.Now(), start);
}

TEST_F(ExchangeTest, NoPipeButARunningProcessIsNotCalledBusy) {
  machine.processes.Seed(L"C:\\Program Files\\Tavrin\\TavrinService.exe");
  hooks.patience = 150;
  std::vector<std::uint64_t> waits;
  hooks.whileNoPipe = [&](std::uint64_t time) { waits.push_back(time); };
  hooks.whileBusy = [&](std::uint64_t) { ADD_FAILURE() << "not busy"; };
  EXPECT_EQ(Ask(), ExchangeEnd::kNoPipe);
  EXPECT_EQ(waits, (std::vector<std::uint64_t>{0, 50, 100}));
}

TEST_F(ExchangeTest, NoPipeButAStartingServiceIsWaitedFor) {
  machine.services.Install({.name = "TavrinService", .state = SERVICE_START_PENDING});
  std::unique_ptr<ScriptedService> service;
  machine.clock.After(120, [&] {
    service = std::make_unique<ScriptedService>(machine);
    service->RepliesAfter(40, unit::kDownReply);
  });
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
}

TEST_F(ExchangeTest, ABusyServiceIsWaitedFor) {
  ScriptedService service(machine);
  service.IsBusyFor(170);
  service.RepliesAfter(300, unit::kUpReply);
  std::vector<std::uint64_t> waits;
  hooks.whileBusy = [&](std::uint64_t time) { waits.push_back(time); };
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
  EXPECT_EQ(waits, (std::vector<std::uint64_t>{0, 50, 100, 150}));
}

TEST_F(ExchangeTest, PatienceEnds) {
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Ask(), ExchangeEnd::kBusy);
  EXPECT_EQ(machine.clock.Now() - start, 60'000u);
}

TEST_F(ExchangeTest, AccessDeniedIsNoAbsence) {
  machine.faults.Fail("CreateFileW", {.nth = 1, .code = ERROR_ACCESS_DENIED});
  EXPECT_EQ(Ask(), ExchangeEnd::kRefused);
}

TEST_F(ExchangeTest, AReplyThatBreaksOffIsBroken) {
  ScriptedService service(machine);
  service.SendsBytesAfter(20, std::string("\x10\0\0\0{\"ok\"", 9));
  service.HangsUpAfter(20);
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, HalfAFrameIsNotWaitedForWithoutEnd) {
  for (const std::string& half : {std::string("\x10", 1), std::string("\x10\0\0\0{\"ok\"", 9)}) {
    ScriptedService service(machine);
    service.SendsBytesAfter(20, half);
    const std::uint64_t start = machine.clock.Now();
    EXPECT_EQ(Ask(), ExchangeEnd::kHalfReply);
    EXPECT_EQ(machine.clock.Now() - start, 5010u);
  }
}

TEST_F(ExchangeTest, HalfAFrameEndsWithTheReplysLimitToo) {
  ScriptedService service(machine);
  service.SendsBytesAfter(20, std::string("\x10\0\0\0{", 5));
  hooks.replyLimit = 3000;
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Ask(), ExchangeEnd::kHalfReply);
  EXPECT_EQ(machine.clock.Now() - start, 3000u);
}

TEST_F(ExchangeTest, AReplyMayComeInPieces) {
  ScriptedService service(machine);
  service.SendsBytesAfter(20, std::string("\x02\0", 2));
  service.SendsBytesAfter(400, std::string("\0\0o", 3));
  service.SendsBytesAfter(4900, "k");
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
  EXPECT_EQ(reply, "ok");
}

TEST_F(ExchangeTest, TheLongestReplyIsTakenAndALongerOneIsNone) {
  ScriptedService service(machine);
  service.RepliesAfter(20, std::string(65'536, 'x'));
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
  EXPECT_EQ(reply.size(), 65'536u);
  ScriptedService other(machine);
  other.RepliesAfter(20, std::string(65'537, 'x'));
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, AReplyOfNoBytesIsBroken) {
  ScriptedService service(machine);
  service.RepliesAfter(20, "");
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, AReplyThatCantBeReadIsBroken) {
  ScriptedService service(machine);
  service.RepliesAfter(20, unit::kUpReply);
  machine.faults.Fail("ReadFile", {.nth = 1});
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, WhoeverMadeThePipeMayNotActInTheUsersName) {
  ScriptedService service(machine);
  service.RepliesAfter(20, unit::kUpReply);
  EXPECT_EQ(Ask(), ExchangeEnd::kReplied);
  // SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION | FILE_ATTRIBUTE_NORMAL
  EXPECT_EQ(machine.calls.TextsOf("CreateFileW"),
            std::vector<std::string>{R"("\\.\pipe\TavrinService", 0xC0000000, 0, 3, 0x110080)"});
}

TEST_F(ExchangeTest, AServiceThatHangsUpIsBroken) {
  ScriptedService service(machine);
  service.HangsUpAfter(30);
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, ALengthThatIsNoneIsBroken) {
  ScriptedService service(machine);
  service.SendsBytesAfter(20, "HTTP/1.1 200 OK");
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, ARequestThatCantBeSentIsBroken) {
  ScriptedService service(machine);
  machine.faults.Fail("WriteFile", {.nth = 1, .code = ERROR_NO_DATA});
  EXPECT_EQ(Ask(), ExchangeEnd::kBroken);
}

TEST_F(ExchangeTest, TheReplyHasItsLimit) {
  ScriptedService service(machine);
  hooks.replyLimit = 5000;
  const std::uint64_t start = machine.clock.Now();
  EXPECT_EQ(Ask(), ExchangeEnd::kTimedOut);
  EXPECT_EQ(machine.clock.Now() - start, 5000u);
}

TEST_F(ExchangeTest, AnInterruptEndsEitherWait) {
  hooks.isInterrupted = [] { return true; };
  {
    ScriptedService service(machine);
    EXPECT_EQ(Ask(), ExchangeEnd::kInterrupted);
  }
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  EXPECT_EQ(Ask(), ExchangeEnd::kInterrupted);
}

}  // namespace
}  // namespace vpn
