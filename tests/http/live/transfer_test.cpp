// Requests to a real server, and what comes back.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"
#include "zelto/text/string_utilities.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;
using Utilities::StringUtilities;

std::string Pattern(std::size_t size) {
  std::string bytes(size, ' ');
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(1 + (i ^ i / 1000) % 127);  // any of ASCII; a zero byte would end the text
  }
  return bytes;
}

/// A receive callback that keeps the bytes.
std::size_t Collect(char* bytes, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(bytes, size * count);
  return size * count;
}

}  // namespace

TEST(Transfer, TellsTheStatusAndTheTextOfEachAnswer) {
  LiveServers& servers = LiveServers::Get();
  for (const bool fail_on_error : {false, true}) {
    CurlWrapper wrapper = NewWrapper({.fail_on_error = fail_on_error});
    for (const std::wstring status : {L"200", L"404", L"503"}) {
      const bool fails = fail_on_error && status != L"200";
      const std::string narrow(status.begin(), status.end());
      EXPECT_EQ(Get(wrapper, servers.Http(L"/status/" + status)), fails ? kHttpError : narrow);
      EXPECT_EQ(wrapper.GetHttpResponse(), fails ? L"200" : status);
    }
    EXPECT_EQ(Get(wrapper, servers.Http(L"/status/204")), "204");
    EXPECT_EQ(wrapper.GetHttpResponse(), L"");
    EXPECT_EQ(Get(wrapper, servers.Http(L"/status/302")), "302");
    EXPECT_NE(wrapper.GetHttpResponse().find(L"302"), std::wstring::npos);  // not what it leads to
  }
}

TEST(Transfer, SendsTheAddressEncodedAndWithoutItsFragment) {
  LiveServers& servers = LiveServers::Get();
  CurlWrapper wrapper = NewWrapper();
  EXPECT_EQ(Get(wrapper, servers.Http(L"/uri?q=\u00FC&r=%2F+b&p=/../\u2603#\u00E9")), kAccepted);
  EXPECT_EQ(wrapper.GetHttpResponse(), L"/uri?q=%C3%BC&r=%2F+b&p=/../%E2%98%83");

  std::wstring with_user = servers.Http(L"/private");
  with_user.insert(7, L"us\u00E9r:p%40w@");
  EXPECT_EQ(Get(wrapper, with_user), kAccepted);
  EXPECT_EQ(wrapper.GetHttpResponse(), L"small");
  EXPECT_EQ(Get(wrapper, servers.Http(L"/private")), "401");  // the user does not stay
}

TEST(Transfer, BodiesComeAndGoByteByByte) {
  LiveServers& servers = LiveServers::Get();
  const std::string large = Pattern(50U << 20);
  servers.Serve(L"large", large);
  std::string received;
  CurlWrapper wrapper = NewWrapper();
  EXPECT_EQ(Get(wrapper, servers.Http(L"/large")), kAccepted);
  const std::wstring response = wrapper.GetHttpResponse();
  EXPECT_TRUE(std::equal(response.begin(), response.end(), large.begin(), large.end()));
  wrapper.SetReceiveDataCallback(Collect, &received);
  EXPECT_EQ(Get(wrapper, servers.Https(L"/large")), kAccepted);
  EXPECT_TRUE(received == large);

  for (const std::wstring& body : {std::wstring(L"a=1&b=@file"), std::wstring(L"zero\0and \u00E9 \xD83D\xDE00", 13),
                                   std::wstring(), response.substr(0, 3U << 20)}) {
    wrapper.SetCommandBody(body);
    for (const std::wstring& url : {servers.Http(L"/echo"), servers.Https(L"/echo")}) {
      received.clear();
      EXPECT_EQ(Post(wrapper, url), kAccepted);
      EXPECT_TRUE(received == StringUtilities::Utf16ToUtf8(body)) << body.size();
    }
  }
  wrapper.SetReceiveDataCallback(nullptr, nullptr);
  EXPECT_EQ(Get(wrapper, servers.Http(L"/uri")), kAccepted);  // after a POST, a plain GET again
  EXPECT_EQ(wrapper.GetHttpResponse(), L"/uri");
}

TEST(Transfer, GoesOnWhileOtherThreadsMakeAndDestroyWrappers) {
  LiveServers& servers = LiveServers::Get();
  const auto talk = [&](int seed) {
    for (int round = seed; round < seed + 6; ++round) {
      CurlWrapper wrapper = NewWrapper();
      const bool is_right = round % 3 != 0;
      wrapper.AddCertificate(servers.Pem(is_right ? "root" : "stranger"));
      EXPECT_EQ(Get(wrapper, servers.Https(L"/status/200")), is_right ? kAccepted : kPeerNotVerified);
      wrapper.SetCommandBody(std::to_wstring(round) + L" \u00E9");
      EXPECT_EQ(Post(wrapper, servers.Http(L"/echo")), kAccepted);
      EXPECT_EQ(wrapper.GetHttpResponse(), std::to_wstring(round) + L" \u00E9");
      EXPECT_ANY_THROW(NewWrapper({.libraries = L"/nowhere"}));
    }
  };
  for (int generation = 0; generation < 2; ++generation) {  // between the two, no wrapper is left
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back(talk, i);
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
}

}  // namespace Zelto::Testing
