// Many wrappers on many threads, made and destroyed while others transfer.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;

void TalkToServers(LiveServers& servers, int seed) {
  for (int round = seed; round < seed + 6; ++round) {
    CurlWrapper wrapper = NewWrapper();
    const bool is_right = round % 3 != 0;
    wrapper.AddCertificate(servers.Pem(is_right ? "root" : "stranger"));
    EXPECT_EQ(Get(wrapper, servers.Https(L"/status/200")), is_right ? Answered(200) : Failed(kPeerNotVerified));
    const std::wstring body = std::to_wstring(round) + L" \u00E9";
    wrapper.SetCommandBody(body);
    EXPECT_EQ(Post(wrapper, servers.Http(L"/echo")), Answered(200));
    EXPECT_EQ(wrapper.GetHttpResponse(), body);
    EXPECT_ANY_THROW(NewWrapper({.libraries = L"/nowhere"}));
  }
}

}  // namespace

TEST(Threads, UseWrappersOfTheirOwn) {
  LiveServers& servers = LiveServers::Get();
  for (int generation = 0; generation < 2; ++generation) {  // between the two, no wrapper is left
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&servers, i] { TalkToServers(servers, i); });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
}

}  // namespace Zelto::Testing
