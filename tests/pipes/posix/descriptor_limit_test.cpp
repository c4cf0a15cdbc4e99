#include "tests/pipes/pipe_fixture.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Zelto::Utilities {
namespace {

/// While it lives, the process can open this many descriptors more.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t more) {
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
    const rlimit limit{static_cast<rlim_t>(next) + more, before_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
  }
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit before_{};
};

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
