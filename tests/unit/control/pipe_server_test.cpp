#include "src/control/pipe_server.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "tests/unit/control/pipe_server_fixture.h"

namespace vpn {
namespace {

using unit::kConnect;
using unit::kOkRunning;
using unit::PipeServer;

const std::set<std::string> kPipeCalls = {"ConvertStringSecurityDescriptorToSecurityDescriptorW",
                                          "CreateNamedPipeW",
                                          "LocalFree",
                                          "ConnectNamedPipe",
                                          "DisconnectNamedPipe",
                                          "Sleep"};

TEST_F(PipeServer, CurrentDirectoryThenTheWarmUpThenTheFirstInstance) {
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.Sequence({"SetCurrentDirectoryW", "CreateThread", "CreateNamedPipeW"}),
            (std::vector<std::string>{
                R"(SetCurrentDirectoryW "C:\run")", "CreateThread ",
                R"(CreateNamedPipeW "\\.\pipe\TavrinService", 0x3, 0x8, 8, 4096, 4096, 0)"}));
}

TEST_F(PipeServer, InstanceIsCreatedWithExactlyTheseValues) {
  ServeUntilFirstWait();
  ASSERT_EQ(machine.pipes.Created().size(), 1u);
  const sim::PipeSettings settings = machine.pipes.Created()[0];
  EXPECT_EQ(settings.name, R"(\\.\pipe\TavrinService)");
  EXPECT_EQ(settings.openMode, 3u);
  EXPECT_EQ(settings.pipeMode, 8u);
  EXPECT_EQ(settings.maxInstances, 8u);
  EXPECT_EQ(settings.outBuffer, 4096u);
  EXPECT_EQ(settings.inBuffer, 4096u);
  EXPECT_EQ(settings.defaultTimeOut, 0u);
  EXPECT_EQ(settings.attributesLength, 24u);
  EXPECT_FALSE(settings.inherit);
  EXPECT_EQ(settings.securityDescriptor, "D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;AU)S:(ML;;NW;;;LW)");
}

TEST_F(PipeServer, DescriptorIsMadeAtRevisionOneAndFreedBeforeTheWait) {
  ServeUntilFirstWait();
  const std::vector<std::string> sequence = machine.calls.Sequence(kPipeCalls);
  EXPECT_EQ(sequence,
            (std::vector<std::string>{
                "ConvertStringSecurityDescriptorToSecurityDescriptorW "
                R"sddl("D:P(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;AU)S:(ML;;NW;;;LW)", 1)sddl",
                R"(CreateNamedPipeW "\\.\pipe\TavrinService", 0x3, 0x8, 8, 4096, 4096, 0)",
                "LocalFree ", "ConnectNamedPipe pipe", "DisconnectNamedPipe pipe"}));
}

TEST_F(PipeServer, MissingRuntimeDirectoryIsNoHindrance) {
  SetRuntimeDir(L"C:\\none");
  ServeUntilFirstWait();
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(machine.files.currentDirectory, L"C:\\Windows\\System32");
}

TEST_F(PipeServer, WarmUpFillsTheCacheAheadOfTheFirstConnect) {
  ServeUntilFirstWait();
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  g_stopRequested = 0;
  unit::BackgroundServer server(machine, Serve);
  EXPECT_EQ(Exchange(kConnect), kOkRunning);
  EXPECT_EQ(Fetches(), 1);
  StopAndExpectEnd(server);
}

TEST_F(PipeServer, WarmUpHasItsOwnCopyOfTheDirectory) {
  std::atomic<bool> changed{false};
  machine.faults.Before("_wfsopen", 1,
                        [&] { EXPECT_TRUE(unit::Eventually([&] { return changed.load(); })); });
  machine.faults.Before("CreateNamedPipeW", 1, [&] {
    g_runtimeDir = L"C:\\changed";
    changed = true;
  });
  ServeUntilFirstWait();
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  EXPECT_EQ(machine.calls.TextsOf("_wfsopen").front(), R"("C:\run\panel.json", "rb", 64)");
}

TEST_F(PipeServer, WarmUpThatFailsLeavesNoTrace) {
  machine.files.Remove(L"C:\\run\\session.json");
  ServeUntilFirstWait();
  EXPECT_EQ(machine.WaitForThreads(), 0u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, WarmUpThreadsHandleIsClosedAtOnce) {
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.Sequence({"CloseHandle", "CreateNamedPipeW"}).front(),
            "CloseHandle thread");
}

using PipeServerDeath = PipeServer;

TEST_F(PipeServerDeath, WarmUpThatCannotBeStartedEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        std::set_terminate([] {
          std::cerr << "terminated";
          std::exit(3);
        });
        machine.faults.Fail("CreateThread");
        ServeControlPipe();
      },
      ::testing::ExitedWithCode(3), "terminated");
}

TEST_F(PipeServer, DescriptorThatCannotBeMadeIsTriedAgainEvery500Milliseconds) {
  machine.faults.Fail("ConvertStringSecurityDescriptorToSecurityDescriptorW");
  machine.faults.Fail("ConvertStringSecurityDescriptorToSecurityDescriptorW", {.nth = 2});
  const std::uint64_t start = machine.clock.Now();
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"500", "500"}));
  EXPECT_EQ(machine.clock.Now() - start, 1000u);
  EXPECT_EQ(machine.pipes.Created().size(), 1u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, InstanceThatCannotBeCreatedIsTriedAgainEvery500Milliseconds) {
  for (const std::uint64_t nth : {1u, 2u, 3u}) {
    machine.faults.Fail("CreateNamedPipeW", {.nth = nth, .code = 231});
  }
  ServeUntilFirstWait();
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"500", "500", "500"}));
  EXPECT_EQ(machine.calls.Count("LocalFree"), 4u);
  EXPECT_EQ(machine.calls.Count("DisconnectNamedPipe"), 1u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, FailedWaitJustClosesTheInstanceAndTakesTheNextAtOnce) {
  machine.faults.Fail("ConnectNamedPipe", {.code = 232});
  machine.faults.Fail("ConnectNamedPipe", {.nth = 2, .code = 1450});
  machine.faults.Before("ConnectNamedPipe", 3, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(machine.pipes.Created().size(), 3u);
  EXPECT_EQ(machine.calls.Count("Sleep"), 0u);
  EXPECT_EQ(machine.calls.Count("ReadFile"), 0u);
  EXPECT_EQ(machine.calls.Count("DisconnectNamedPipe"), 3u);
  EXPECT_EQ(Log(), "");
}

TEST_F(PipeServer, ForeignServerThatHoldsAllInstancesIsWaitedFor) {
  machine.pipes.AddForeign(L"\\\\.\\pipe\\TavrinService");
  machine.faults.Before("Sleep", 2, [] { WakeControlPipe(); });
  ServeControlPipe();
  EXPECT_EQ(machine.calls.TextsOf("Sleep"), (std::vector<std::string>{"500", "500"}));
}

}  // namespace
}  // namespace vpn
