// Servers that misbehave.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"
#include "tests/support/counter.h"
#include "tests/support/process_resources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;

/// A server that answers each request with some bytes and closes.
std::function<void(Connection&)> Answer(std::string bytes) {
  return [bytes = std::move(bytes)](Connection& connection) {
    connection.ReadRequest();
    connection.Write(bytes);
  };
}

struct Misbehaviour {
  const char* name;
  std::function<void(Connection&)> behaviour;
  std::vector<std::uint32_t> errors;  ///< what versions of libcurl say
};

}  // namespace

TEST(Failure, EndsWithLibcurlsCodeAndKeepsTheObjectUsable) {
  const Misbehaviour kTable[] = {
      {"closes at once", [](Connection&) {}, {kGotNothing, kReceiveError}},
      {"closes after the request", Answer(""), {kGotNothing}},
      {"resets",
       [](Connection& connection) {
         connection.ReadRequest();
         connection.Reset();
       },
       {kReceiveError}},
      {"stops in mid-body", Answer("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n0123456789"), {kPartialFile}},
      {"no HTTP", Answer("SSH-2.0-server\r\n"), {1}},
      {"endless header", Answer("HTTP/1.1 200 OK\r\nX: " + std::string(1 << 20, 'x')), {27, kReceiveError, 100}},
  };
  CurlWrapper wrapper = NewWrapper();
  EXPECT_EQ(Get(wrapper, LiveServers::Get().Http(L"/status/503")), Answered(503));
  for (const Misbehaviour& row : kTable) {
    const LoopbackServer server(row.behaviour);
    const Outcome outcome = Get(wrapper, server.Url(L"/"));
    EXPECT_NE(std::find(row.errors.begin(), row.errors.end(), outcome.error), row.errors.end())
        << row.name << ": " << outcome;
    EXPECT_EQ(wrapper.GetHttpStatusCode(), 503U) << row.name;
  }
  EXPECT_EQ(Get(wrapper, LiveServers::Get().Http(L"/status/200")), Answered(200));
}

TEST(Failure, RefusedConnectionsAndBothTimeouts) {
  const auto start = std::chrono::steady_clock::now();
  const unsigned int refused = LoopbackServer([](Connection&) {}).Port();
  const LoopbackServer silent([](Connection& connection) { connection.WaitForEnd(); });
  const LoopbackServer stalled([](Connection& connection) {
    connection.ReadRequest();
    connection.Write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n0123456789");
    connection.WaitForEnd();
  });
  CurlWrapper connecting = NewWrapper({.connect_timeout_s = 1});
  CurlWrapper waiting = NewWrapper({.timeout_s = 1});
  EXPECT_EQ(Get(connecting, L"http://127.0.0.1:" + std::to_wstring(refused)), Failed(kCouldNotConnect));
  EXPECT_EQ(Get(connecting, L"https" + silent.Url(L"/").substr(4)), Failed(kTimedOut));  // no TLS handshake
  const Outcome timed_out = Get(waiting, silent.Url(L"/"));
  EXPECT_EQ(timed_out, Failed(kTimedOut));
  EXPECT_NE(timed_out.text.find("Timeout was reached"), std::string::npos) << timed_out.text;
  EXPECT_EQ(Get(waiting, stalled.Url(L"/")), Failed(kTimedOut));
  EXPECT_LT(std::chrono::steady_clock::now() - start, kLimit);  // not the other time-out
}

TEST(Failure, CallbacksMayEndTheTransfer) {
  const LoopbackServer server(Answer("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nhello"));
  CurlWrapper wrapper = NewWrapper();
  int calls = 0;
  wrapper.SetReceiveDataCallback(
      [](const char*, std::size_t size, std::size_t count, void* target) {
        ++*static_cast<int*>(target);
        return size * count - 1;
      },
      &calls);
  EXPECT_EQ(Get(wrapper, server.Url(L"/")), Failed(kWriteError));
  EXPECT_EQ(calls, 1);
  wrapper.SetReceiveDataCallback(nullptr, nullptr);
  EXPECT_EQ(Get(wrapper, server.Url(L"/")), Answered(200));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"hello");
}

TEST(Failure, LeavesNoDescriptorBehind) {
  const auto fail = [] {
    const LoopbackServer server([](Connection& connection) { connection.ReadRequest(); });
    CurlWrapper wrapper = NewWrapper();
    EXPECT_EQ(Get(wrapper, server.Url(L"/")), Failed(kGotNothing));
    EXPECT_ANY_THROW(NewWrapper({.libraries = L"/nowhere"}));
  };
  fail();
  const std::size_t handles = CountProcessResources().handles;
  for (int i = 0; i < 20; ++i) {
    fail();
  }
  EXPECT_EQ(CountProcessResources().handles, handles);
}

}  // namespace Zelto::Testing
