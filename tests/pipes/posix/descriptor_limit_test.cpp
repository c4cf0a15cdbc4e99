#include "tests/support/posix/descriptor_limit.h"

#include "tests/pipes/pipe_fixture.h"

namespace Zelto::Utilities {
namespace {

using Testing::DescriptorLimit;

TEST(PipeServer, KeepsTheClientsThatWaitWhileDescriptorsAreShort) {
  const DiagnosticsRecorder diagnostics;
  const EchoServer echo;
  echo.Start();
  AsyncNamedPipeClient client(echo.name, kLimitMs);
  {
    const DescriptorLimit only_the_clients(1);
    client.Open();
    EXPECT_TRUE(diagnostics.Heard(L"can't connect to client:"));
  }
  EXPECT_EQ(Ask(client, L"x"), L"0:x");
}

}  // namespace
}  // namespace Zelto::Utilities
