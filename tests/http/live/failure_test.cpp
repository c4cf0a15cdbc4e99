// Servers that misbehave.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"
#include "tests/support/counter.h"
#include "tests/support/process_resources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <stdexcept>

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
      {"stops in mid-chunk",
       Answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n400\r\n0123"),
       {kPartialFile, kReceiveError}},
      {"no last chunk",
       Answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\n0123\r\n"),
       {kPartialFile, kReceiveError}},
      {"bad chunk", Answer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n0123\r\n"), {kReceiveError}},
      {"negative length", Answer("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nhello"), {8, kReceiveError, 63}},
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

TEST(Failure, TakesChunkedAnswersHoweverTheyAreCut) {
  const LoopbackServer server([](Connection& connection) {
    connection.ReadRequest();
    connection.Write("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (const char* chunk :
         {"3\r\nZo\xC3\r\n", "2;extension=1\r\n\xAB \r\n", "000001\r\n\xE2\r\n", "2\r\n\x98\x83\r\n"}) {
      connection.Write(chunk);
    }
    connection.Write("0\r\nTrailer: x\r\n\r\n");
  });
  CurlWrapper wrapper = NewWrapper();
  EXPECT_EQ(Get(wrapper, server.Url(L"/")), Answered(200));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"Zo\u00EB \u2603");
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
  const FullPort full;
  CurlWrapper connecting = NewWrapper({.connect_timeout_s = 1});
  CurlWrapper waiting = NewWrapper({.timeout_s = 1});
  EXPECT_EQ(Get(connecting, L"http://127.0.0.1:" + std::to_wstring(refused)), Failed(kCouldNotConnect));
  EXPECT_EQ(Get(connecting, L"http://127.0.0.1:" + std::to_wstring(full.Port())), Failed(kTimedOut));
  EXPECT_EQ(Get(connecting, L"https" + silent.Url(L"/").substr(4)), Failed(kTimedOut));  // no TLS handshake
  const Outcome timed_out = Get(waiting, silent.Url(L"/"));
  EXPECT_EQ(timed_out, Failed(kTimedOut));
  EXPECT_NE(timed_out.text.find("Timeout was reached"), std::string::npos) << timed_out.text;
  EXPECT_EQ(Get(waiting, stalled.Url(L"/")), Failed(kTimedOut));
  EXPECT_LT(std::chrono::steady_clock::now() - start, kLimit);  // not the other time-out
}

TEST(Failure, InvalidTextIsAnErrorAfterTheStatusAndReachesCallbacksUntouched) {
  const std::string bytes("\xC3(\xFF\0\xED\xA0\x80", 7);
  const LoopbackServer server(
      Answer("HTTP/1.1 418 T\r\nContent-Length: " + std::to_string(bytes.size()) + "\r\n\r\n" + bytes));
  CurlWrapper wrapper = NewWrapper();
  EXPECT_THROW(wrapper.ExecuteGetRequest(server.Url(L"/")), std::range_error);
  EXPECT_EQ(wrapper.GetHttpStatusCode(), 418U);

  std::string received;
  wrapper.SetReceiveDataCallback(
      [](const char* data, std::size_t size, std::size_t count, void* target) {
        static_cast<std::string*>(target)->append(data, size * count);
        return size * count;
      },
      &received);
  EXPECT_EQ(Get(wrapper, server.Url(L"/")), Answered(418));
  EXPECT_EQ(received, bytes);
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
  wrapper.SetReceiveDataCallback(
      [](const char*, std::size_t, std::size_t, void*) -> std::size_t { throw std::domain_error("enough"); }, &calls);
  EXPECT_THROW(wrapper.ExecuteGetRequest(server.Url(L"/")), std::domain_error);
  // What libcurl is working with cannot be taken from under it.
  const std::function<void()> kMisuses[] = {[&] { wrapper.ExecuteGetRequest(server.Url(L"/")); },
                                            [&] { wrapper.ClearHeaders(); },
                                            [&] { wrapper.SetReceiveDataCallback(nullptr, nullptr); }};
  for (const auto& misuse : kMisuses) {
    wrapper.SetReceiveDataCallback(
        [&misuse](const char*, std::size_t, std::size_t, void*) -> std::size_t {
          misuse();
          return 0;
        },
        &calls);
    EXPECT_THAT([&] { wrapper.ExecuteGetRequest(server.Url(L"/")); },
                testing::ThrowsMessage<std::runtime_error>("A request is under way"));
    wrapper.ClearHeaders();
  }
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
