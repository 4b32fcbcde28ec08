#include "tests/unit/client/doctor/doctor_test.h"

namespace vpn {
namespace {

class LastConnectTest : public unit::DoctorTest {};

TEST_F(LastConnectTest, NoneSoFar) {
  ExpectGood(CheckLastConnect(patient), L"none so far");
}

TEST_F(LastConnectTest, ACompleteOne) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + unit::RecordedConnect());
  ExpectGood(CheckLastConnect(patient), L"complete in 0.61 s");
}

TEST_F(LastConnectTest, OneThatFailedSaysWhere) {
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + unit::RecordedLines(5));
  ExpectRemark(CheckLastConnect(patient), L"ended before: Xray listening",
               L"run tavrinctl connect, which shows why");
}

TEST_F(LastConnectTest, OneThatWasSlowSaysWhere) {
  std::string slow =
      unit::RecordedLines(12) + "ipv6 leak blocked            + 2500ms  total  2805ms\r\n";
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + slow);
  ExpectRemark(CheckLastConnect(patient), L"IPv6 blocked took 2 500 ms instead of 307 ms",
               L"run tavrinctl trace to see all steps; a virus scanner is the usual reason");
}

TEST_F(LastConnectTest, ASmallStepThatTripledIsNotSlow) {
  std::string slow = unit::RecordedLines(1) +
                     "kill stale (clean)           +  300ms  total   300ms\r\n" +
                     "ipv6 leak blocked            +  307ms  total   607ms\r\n";
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + slow);
  ExpectGood(CheckLastConnect(patient), L"complete in 0.61 s");
}

TEST_F(LastConnectTest, WithABusyServiceItMayBeUnderWay) {
  MakeServiceBusy();
  machine.files.Put(unit::kTrace, unit::RecordedConnect() + unit::RecordedLines(5));
  ExpectRemark(CheckLastConnect(patient), L"under way, or ended before: Xray listening",
               L"wait until the service answers, then run this again");
  machine.files.Put(unit::kTrace, unit::RecordedConnect());
  ExpectGood(CheckLastConnect(patient), L"complete in 0.61 s");
}

TEST_F(LastConnectTest, LinesThatCantBeReadAreNoGreenMark) {
  const std::wstring trace = unit::kTrace;
  machine.files.Put(trace, unit::RecordedConnect() + "stop() idle      +    0\xFF\n");
  ExpectRemark(CheckLastConnect(patient),
               L"complete in 0.61 s; 1 line of " + trace + L" can't be read",
               L"delete the file when no connect is under way; the next one makes it anew");
  machine.files.Put(trace, "rubbish\nrubbish\n" + unit::RecordedLines(5));
  ExpectRemark(CheckLastConnect(patient),
               L"ended before: Xray listening; 2 lines of " + trace + L" can't be read",
               L"run tavrinctl connect, which shows why");
}

TEST_F(LastConnectTest, ADamagedFileIsNoGreenMark) {
  machine.files.Put(unit::kTrace, "rubbish\n");
  ExpectRemark(CheckLastConnect(patient), std::wstring(unit::kTrace) + L" holds no connect",
               L"delete the file; the next connect makes it anew");
  machine.files.SetLocked(unit::kTrace, true);
  ExpectRemark(CheckLastConnect(patient), std::wstring(unit::kTrace) + L" can't be read",
               L"try again when no connect is under way");
}

}  // namespace
}  // namespace vpn
