// Requests to a real server, and what comes back.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"
#include "zelto/text/string_utilities.h"

#include <gtest/gtest.h>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;
using Utilities::StringUtilities;

std::string Pattern(std::size_t size) {
  std::string bytes(size, ' ');
  std::uint32_t state = 1;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(1 + (state >> 16) % 127);  // any of ASCII; a zero byte would end the text
  }
  return bytes;
}

/// A receive callback that keeps the bytes.
std::size_t Collect(const char* bytes, std::size_t size, std::size_t count, void* target) {
  static_cast<std::string*>(target)->append(bytes, size * count);
  return size * count;
}

}  // namespace

TEST(Transfer, TellsTheStatusAndTheTextOfEachAnswer) {
  CurlWrapper wrapper = NewWrapper();
  for (const unsigned status : {200U, 403U, 404U, 500U, 503U, 301U, 302U, 307U, 204U}) {
    const std::wstring number = std::to_wstring(status);
    EXPECT_EQ(Get(wrapper, LiveServers::Get().Http(L"/status/" + number)), Answered(status));
    if (status == 204) {
      EXPECT_EQ(wrapper.GetHttpResponse(), L"");
    } else if (status / 100 == 3) {  // what a redirect says, not what it leads to
      EXPECT_NE(wrapper.GetHttpResponse().find(number), std::wstring::npos);
    } else {
      EXPECT_EQ(wrapper.GetHttpResponse(), number);
    }
  }
}

TEST(Transfer, FailsOnErrorsWhenAskedToAndKeepsTheStatusBefore) {
  LiveServers& servers = LiveServers::Get();
  CurlWrapper wrapper = NewWrapper({.fail_on_error = true});
  EXPECT_EQ(Get(wrapper, servers.Http(L"/status/404")), Failed(kHttpError));
  EXPECT_EQ(wrapper.GetHttpStatusCode(), 0U);
  EXPECT_EQ(Get(wrapper, servers.Http(L"/status/302")), Answered(302));
  const Outcome failure = Get(wrapper, servers.Http(L"/status/500"));
  EXPECT_EQ(failure, Failed(kHttpError));
  EXPECT_NE(failure.text.find("HTTP response code said error"), std::string::npos) << failure.text;
  EXPECT_EQ(wrapper.GetHttpStatusCode(), 302U);
}

TEST(Transfer, TakesBodiesOfNothingAndOf50Megabytes) {
  LiveServers& servers = LiveServers::Get();
  const std::string large = Pattern(50U << 20);
  servers.Serve(L"empty", "");
  servers.Serve(L"large", large);
  CurlWrapper wrapper = NewWrapper();
  EXPECT_EQ(Get(wrapper, servers.Http(L"/large")), Answered(200));
  {
    const std::wstring response = wrapper.GetHttpResponse();
    EXPECT_TRUE(std::equal(response.begin(), response.end(), large.begin(), large.end()));
  }
  EXPECT_EQ(Get(wrapper, servers.Http(L"/empty")), Answered(200));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"");

  std::string received;
  wrapper.SetReceiveDataCallback(Collect, &received);
  EXPECT_EQ(Get(wrapper, servers.Https(L"/large")), Answered(200));
  EXPECT_TRUE(received == large);
  EXPECT_EQ(wrapper.GetHttpResponse(), L"");
}

TEST(Transfer, SendsTheAddressEncodedAndWithoutItsFragment) {
  LiveServers& servers = LiveServers::Get();
  servers.Serve(L"caf\u00E9 \u2603.txt", "found");
  CurlWrapper wrapper = NewWrapper();
  EXPECT_EQ(Get(wrapper, servers.Http(L"/caf\u00E9%20\u2603.txt?\u00FC=%41#part")), Answered(200));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"found");
  EXPECT_EQ(Get(wrapper, servers.Http(L"/uri?q=\u00FC&r=%2F+b&p=/../\u2603#\u00E9")), Answered(200));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"/uri?q=%C3%BC&r=%2F+b&p=/../%E2%98%83");

  std::wstring with_user = servers.Http(L"/private");
  servers.Serve(L"small", "secret");
  EXPECT_EQ(Get(wrapper, with_user), Answered(401));
  with_user.insert(7, L"us\u00E9r:p%40w@");
  EXPECT_EQ(Get(wrapper, with_user), Answered(200));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"secret");
  EXPECT_EQ(Get(wrapper, servers.Http(L"/private")), Answered(401));  // the user does not stay
}

TEST(Transfer, SendsHeadersOnceAndClearsThem) {
  LiveServers& servers = LiveServers::Get();
  CurlWrapper wrapper = NewWrapper();
  wrapper.AddHeader(L"X-Name", L"Zo\u00EB");
  wrapper.AddHeader(L"X-Number", std::int32_t{-7});
  wrapper.SetContentType(L"text/x-test");
  wrapper.ExecuteGetRequest(servers.Http(L"/head"));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"Zo\u00EB|-7|text/x-test|Zelto tests/1");

  wrapper.ExecuteGetRequest(servers.Http(L"/head"));  // a second Content-Length: real servers refuse that
  EXPECT_EQ(wrapper.GetHttpStatusCode(), 400U);
  wrapper.ClearHeaders();
  wrapper.ExecuteGetRequest(servers.Http(L"/head"));
  EXPECT_EQ(wrapper.GetHttpResponse(), L"||text/x-test|Zelto tests/1");
  wrapper.ResetSession();
  wrapper.ExecuteGetRequest(servers.Http(L"/head"));
  EXPECT_EQ(wrapper.GetHttpStatusCode(), 200U);
}

TEST(Transfer, PostsBodiesThatComeBackByteByByte) {
  LiveServers& servers = LiveServers::Get();
  const std::string large = Pattern(3U << 20);
  std::string received;
  CurlWrapper wrapper = NewWrapper();
  wrapper.SetReceiveDataCallback(Collect, &received);
  for (const std::wstring& body : {std::wstring(L"a=1&b=@file"), std::wstring(L"zero\0and \u00E9 \xD83D\xDE00", 13),
                                   std::wstring(), std::wstring(large.begin(), large.end())}) {
    wrapper.SetCommandBody(body);
    for (const std::wstring& url : {servers.Http(L"/echo"), servers.Https(L"/echo")}) {
      received.clear();
      EXPECT_EQ(Post(wrapper, url), Answered(200));
      EXPECT_TRUE(received == StringUtilities::Utf16ToUtf8(body)) << body.size();
    }
  }
  wrapper.SetReceiveDataCallback(nullptr, nullptr);
  EXPECT_EQ(Get(wrapper, servers.Http(L"/uri")), Answered(200));  // after a POST, a plain GET again
  EXPECT_EQ(wrapper.GetHttpResponse(), L"/uri");
}

}  // namespace Zelto::Testing
