// Ten thousand frames that no well-meaning client would send. None of them ends the listener, keeps
// the next client out, or makes the process take memory beyond a frame.
#include <algorithm>
#include <iostream>

#include "tests/e2e/harness/expect.h"
#include "tests/e2e/harness/process_figures.h"
#include "tests/e2e/harness/service_test.h"

namespace e2e {
namespace {

constexpr char kStatus[] = R"({"op":"status"})";
constexpr int kFrames = 10000;
constexpr int kFramesBetweenChecks = 1000;
constexpr std::size_t kFrameSize = 65536;
// A payload, and what the platform rounds its count by.
constexpr std::size_t kMemoryBound = 4 * kFrameSize;

enum class Then {
  kDrop,        // the client leaves at once
  kAwaitDrop,   // the server is to leave first, without a word
  kAwaitReply,  // the one reply comes, and nothing behind it
};

struct Hostile {
  std::string bytes;
  Then then;
  std::string reply = "";
};

// A payload that holds every byte.
std::string Garbage(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 7 % 256);
  return text;
}

void AddLengths(std::vector<Hostile>& frames) {
  for (const std::uint32_t length : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 65535U, 65536U}) {
    frames.push_back({LengthPrefix(length), Then::kDrop});
    frames.push_back({LengthPrefix(length) + Garbage(length - 1), Then::kDrop});
    frames.push_back({Frame(Garbage(length)), Then::kAwaitReply, Refusal("op not allowed", false)});
  }
  for (const std::uint32_t length :
       {0U, 65537U, 0x7FFFFFFFU, 0x80000000U, 0x80000001U, 0xFFFFFFFFU}) {
    frames.push_back({LengthPrefix(length), Then::kAwaitDrop});
    frames.push_back({LengthPrefix(length) + Frame(kStatus), Then::kAwaitDrop});
    frames.push_back({LengthPrefix(length), Then::kDrop});
  }
}

void AddCuts(std::vector<Hostile>& frames) {
  const std::string frame = Frame(kStatus);
  for (std::size_t cut = 0; cut <= frame.size(); ++cut) {
    frames.push_back({frame.substr(0, cut), Then::kDrop});
  }
}

void AddPairs(std::vector<Hostile>& frames) {
  frames.push_back({Frame(kStatus) + Frame(kStatus), Then::kAwaitReply, kDown});
  frames.push_back({Frame(kStatus) + LengthPrefix(0xFFFFFFFF), Then::kAwaitReply, kDown});
  frames.push_back({Frame(kStatus) + Frame(kStatus), Then::kDrop});
  frames.push_back({LengthPrefix(0) + Frame(kStatus), Then::kAwaitDrop});
}

std::vector<Hostile> AllKinds() {
  std::vector<Hostile> frames;
  AddLengths(frames);
  AddCuts(frames);
  AddPairs(frames);
  return frames;
}

class HostileFrames : public ServiceTest {
 protected:
  static void Send(const Hostile& frame) {
    PipeClient client;
    try {
      client.Write(frame.bytes);
    } catch (const std::runtime_error&) {
      // The server may drop the connection in the middle of what it does not want.
      ASSERT_NE(frame.then, Then::kAwaitReply);
    }
    if (frame.then == Then::kAwaitDrop) {
      EXPECT_EQ(client.ReadUntilClosed(), "");
    }
    if (frame.then == Then::kAwaitReply) {
      EXPECT_EQ(client.ReadReply(), frame.reply);
      EXPECT_EQ(client.ReadUntilClosed(), "");
    }
  }
  ProcessFigures Figures() { return SettledFiguresOf(service().pid()); }
  std::size_t LogLinesWith(std::string_view beginning) const {
    const Lines log = ServiceLog();
    return static_cast<std::size_t>(std::count_if(
        log.begin(), log.end(),
        [beginning](const std::string& line) { return line.starts_with(beginning); }));
  }
};

TEST_F(HostileFrames, TenThousandLeaveTheServiceAsItWas) {
  StartService();
  ASSERT_EQ(Ask(kStatus), kDown);
  const ProcessFigures before = Figures();
  const std::vector<Hostile> kinds = AllKinds();
  std::size_t dropped = 0;
  for (int i = 0; i < kFrames && !HasFailure(); ++i) {
    const Hostile& frame = kinds[static_cast<std::size_t>(i) % kinds.size()];
    Send(frame);
    if (frame.then == Then::kAwaitDrop) ++dropped;
    if ((i + 1) % kFramesBetweenChecks == 0) {
      EXPECT_EQ(Ask(kStatus), kDown) << i;
    }
  }
  const ProcessFigures after = Figures();
  std::cout << kinds.size() << " kinds\nbefore: " << FigureText(before)
            << "\nafter: " << FigureText(after) << "\n";
  EXPECT_EQ(after.handles, before.handles);
  EXPECT_LE(after.peakWorkingSet, before.peakWorkingSet + kMemoryBound);
  EXPECT_GE(LogLinesWith("ipc read failed err="), dropped);
  EXPECT_LE(ServiceLog().size(), 3U + 2U * (kFrames + 20U)) << "a frame leaves two lines at most";
  ShutDown();
}

}  // namespace
}  // namespace e2e
