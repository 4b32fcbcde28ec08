// One connected pipe for the tests of frames.
#ifndef TAVRIN_TESTS_UNIT_CONTROL_FRAME_FIXTURE_H_
#define TAVRIN_TESTS_UNIT_CONTROL_FRAME_FIXTURE_H_

#include <windows.h>

#include <string>
#include <vector>

#include "tests/sim/pipe_client.h"
#include "tests/unit/product_state.h"

namespace unit {

// A connected pipe whose buffers are so large that neither end ever waits for the other.
class FramePipe : public ProductTest {
 protected:
  FramePipe() {
    server = CreateNamedPipeW(L"\\\\.\\pipe\\TavrinService", PIPE_ACCESS_DUPLEX, 0, 8, 1 << 20,
                              1 << 20, 0, nullptr);
    EXPECT_TRUE(client.Connect());
    machine.calls.Clear();
  }
  void TearDown() override {
    (void)CloseHandle(server);
    client.Close();
    ProductTest::TearDown();
  }

  // Hands out one piece in front of each ReadFile, so that every read finds only that.
  void FeedInPieces(std::vector<std::string> pieces) {
    for (size_t i = 0; i < pieces.size(); ++i) {
      machine.faults.Before("ReadFile", i + 1, [this, piece = pieces[i]] { client.Write(piece); });
    }
  }

  // The flush lasts until the client has read what was written.
  void ReadWhenFlushed(size_t count) {
    machine.faults.Before("FlushFileBuffers", 1, [this, count] { received = client.Read(count); });
  }

  HANDLE server;
  sim::PipeClient client{machine};
  std::string text = "before";
  std::string received;
};

class Frame : public FramePipe {};

}  // namespace unit

#endif  // TAVRIN_TESTS_UNIT_CONTROL_FRAME_FIXTURE_H_
