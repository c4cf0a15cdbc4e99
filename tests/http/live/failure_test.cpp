// Servers that misbehave.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"
#include "tests/support/counter.h"
#include "tests/support/process_resources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;
using Behaviour = std::function<void(int connection)>;

const std::string kHalfAnAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n0123456789";

/// A server that answers each request with some bytes and closes.
Behaviour Answer(std::string bytes) {
  return [bytes = std::move(bytes)](int connection) {
    ReadRequest(connection);
    Write(connection, bytes);
  };
}

}  // namespace

TEST(Failure, EndsWithLibcurlsCodeAndLeavesTheObjectUsableAndNoDescriptorBehind) {
  const struct {
    const char* name;
    Behaviour behaviour;
    std::vector<std::string> outcomes;  // with the versions of libcurl
  } kTable[] = {
      {"closes at once", [](int) {}, {"error 52", kReceiveError}},
      {"closes after the request", Answer(""), {"error 52"}},
      {"resets",
       [](int connection) {
         ReadRequest(connection);
         const linger at_once{1, 0};
         ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
       },
       {kReceiveError}},
      {"stops in mid-body", Answer(kHalfAnAnswer), {"error 18"}},
      {"no HTTP", Answer("SSH-2.0-server\r\n"), {"error 1"}},
      {"endless header",
       Answer("HTTP/1.1 200 OK\r\nX: " + std::string(1 << 20, 'x')),
       {"error 27", kReceiveError, "error 100"}},
  };
  LiveServers& servers = LiveServers::Get();
  const auto fail = [&] {
    CurlWrapper wrapper = NewWrapper();
    EXPECT_EQ(Get(wrapper, servers.Http(L"/status/503")), "503");
    for (const auto& row : kTable) {
      const LoopbackServer server(row.behaviour);
      EXPECT_THAT(Get(wrapper, server.Url()), testing::AnyOfArray(row.outcomes)) << row.name;
      EXPECT_EQ(wrapper.GetHttpStatusCode(), 503U) << row.name;
    }
    EXPECT_EQ(Get(wrapper, servers.Http(L"/status/200")), kAccepted);
    EXPECT_ANY_THROW(NewWrapper({.libraries = L"/nowhere"}));
  };
  fail();
  const std::size_t handles = CountProcessResources().handles;
  for (int i = 0; i < 5; ++i) {
    fail();
  }
  EXPECT_EQ(CountProcessResources().handles, handles);
}

TEST(Failure, RefusedConnectionsAndBothTimeouts) {
  const auto start = std::chrono::steady_clock::now();
  const LoopbackServer silent(StaySilent);
  const LoopbackServer stalled([](int connection) {
    Answer(kHalfAnAnswer)(connection);
    ReadRequest(connection);
  });
  CurlWrapper connecting = NewWrapper({.connect_timeout_s = 1});
  CurlWrapper waiting = NewWrapper({.timeout_s = 1});
  EXPECT_EQ(Get(connecting, L"http://127.0.0.1:" + std::to_wstring(FreePort())), kCouldNotConnect);
  EXPECT_EQ(Get(connecting, L"https" + silent.Url().substr(4)), kTimedOut);  // no TLS handshake
  EXPECT_EQ(Get(waiting, silent.Url()), kTimedOut);
  EXPECT_EQ(Get(waiting, stalled.Url()), kTimedOut);
  EXPECT_LT(std::chrono::steady_clock::now() - start, kLimit);  // not the other time-out
}

}  // namespace Zelto::Testing
