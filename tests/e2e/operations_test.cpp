// The operations beside connect, and what the service log says of all of them.
#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/service_test.h"
#include "tests/e2e/harness/waiting.h"
#include "tests/standins/text.h"

namespace e2e {
namespace {

class Operations : public ServiceTest {};

TEST_F(Operations, StatusOfAnIdleServiceIsDown) {
  StartService();
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
  EXPECT_EQ(machine.Calls(), Lines{});
}

TEST_F(Operations, StatusFollowsTheTunnel) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Ask(R"({"op":"status"})"), kUp);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
}

TEST_F(Operations, DisconnectOfAnIdleServiceSucceedsAndTouchesNothing) {
  StartService();
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  EXPECT_EQ(machine.Calls(), Lines{});
}

TEST_F(Operations, SecondDisconnectTouchesNothing) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ASSERT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  machine.ForgetCalls();
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  EXPECT_EQ(machine.Calls(), Lines{});
}

TEST_F(Operations, ShutdownEndsTheProcessAndTheTunnel) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE xray = machine.OpenLast("xray.exe");
  const HANDLE tun2socks = machine.OpenLast("tun2socks-windows-amd64.exe");
  EXPECT_EQ(Ask(R"({"op":"shutdown"})"), kDown);
  EXPECT_EQ(service().WaitForExitCode(), 0U);
  ExpectEnds(xray);
  ExpectEnds(tun2socks);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
  EXPECT_EQ(TryToConnect(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(Operations, UnknownAndEmptyOperationsAreRefused) {
  StartService();
  EXPECT_EQ(Ask(R"({"op":"restart"})"), Refusal("op not allowed"));
  EXPECT_EQ(Ask(R"({"op":""})"), Refusal("op not allowed"));
  EXPECT_EQ(Ask(R"({"op":"Status"})"), Refusal("op not allowed"));
  EXPECT_EQ(Ask(R"({"op":"status "})"), Refusal("op not allowed"));
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(Ask(R"({"op":"restart"})"), Refusal("op not allowed", true));
}

TEST_F(Operations, LogHoldsEveryRequestAndRefusal) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  ASSERT_EQ(Ask(R"({"op":"restart"})"), Refusal("op not allowed", true));
  ShutDown();
  const Lines expected = {
      "TavrinService console mode. Pipe \\\\.\\pipe\\TavrinService",
      "Runtime " + standins::ToUtf8(box.runtime()),
      "Ctrl+C to stop.",
      "ipc op=connect",
      "ipc op=restart",
      "ipc error=op not allowed",
      "ipc op=shutdown",
      "stopped.",
  };
  ExpectLines(ServiceLog(), expected);
  ExpectLines(SplitLines(Output()), expected);
  EXPECT_EQ(ReadText(box.serviceLog()).find('\r'), std::string::npos);
}

TEST_F(Operations, LaterRunAppendsToTheLog) {
  StartService();
  ShutDown();
  StartService();
  ShutDown();
  EXPECT_EQ(ServiceLog().size(), 10U);
}

// Nothing restarts a child; its end shows in the next reply, and a disconnect cleans up.
class ChildEnds : public ServiceTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ChildEnds, ShowsInTheNextReplyAndDisconnectCleansUp) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE child = machine.OpenLast(GetParam());
  TerminateProcess(child, 1);
  ExpectEnds(child);
  EXPECT_EQ(Ask(R"({"op":"status"})"), kDown);
  EXPECT_EQ(Ask(R"({"op":"disconnect"})"), kDown);
  ExpectSameNetwork(machine.Network(), netmodel::TypicalNetwork());
}

TEST_P(ChildEnds, NextConnectBuildsTheTunnelAnew) {
  StartService();
  ASSERT_EQ(Ask(R"({"op":"connect"})"), kUp);
  const HANDLE child = machine.OpenLast(GetParam());
  TerminateProcess(child, 1);
  ExpectEnds(child);
  EXPECT_EQ(Ask(R"({"op":"connect"})"), kUp);
  EXPECT_EQ(TraceLabels().at(13), "stop() own session");
  EXPECT_EQ(RouteTexts(machine.Network()).size(), 7U);
}

INSTANTIATE_TEST_SUITE_P(Either, ChildEnds,
                         ::testing::Values("xray.exe", "tun2socks-windows-amd64.exe"),
                         [](const auto& which) {
                           return std::string(which.param).substr(0, 4) == "xray" ? "Xray"
                                                                                  : "Tun2socks";
                         });

}  // namespace
}  // namespace e2e
