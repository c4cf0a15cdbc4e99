// What a session does with results, callbacks, headers and refused text.
#include "tests/http/library_folder.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>

using namespace Zelto::Testing;
using testing::HasSubstr;
using Zelto::Utilities::Curl_ContentType;

namespace {

class HttpSession : public StandInSession {
 protected:
  Thrown GetFails() {
    return Catch([&] { session.ExecuteGetRequest(L"http://h/"); });
  }

  Session session{Directory()};
};

TEST_F(HttpSession, KeepsStatusAndResponseOfTheLastTransferThatSucceeded) {
  EXPECT_EQ(session.GetHttpStatusCode(), 0U);
  GetAnswers().status = 404;
  GetAnswers().body = {"\xE2\x82", "\xAC", "a"};
  session.ExecuteGetRequest(L"http://h/");
  EXPECT_EQ(session.GetHttpStatusCode(), 404U);
  EXPECT_EQ(session.GetHttpResponse(), L"\u20ACa");

  GetAnswers().status = 500;
  GetAnswers().perform = 22;
  EXPECT_EQ(GetFails(), (Thrown{"libcurl's text for 22", 22}));
  EXPECT_EQ(session.GetHttpStatusCode(), 404U);
  EXPECT_EQ(session.GetHttpResponse(), L"\u20ACa");

  GetAnswers().perform = 0;
  GetAnswers().body = {"ok \xC3("};
  EXPECT_THROW(session.ExecuteGetRequest(L"http://h/"), std::range_error);
  EXPECT_EQ(session.GetHttpStatusCode(), 500U);
  EXPECT_EQ(session.GetHttpResponse(), L"");
}

TEST_F(HttpSession, AccumulatesHeadersUntilTheyAreCleared) {
  session.AddHeader(L"A", 1);
  session.SetContentType(Curl_ContentType::ApplicationXml);
  EXPECT_EQ(LinesOfGet(session), " [A:1] [Content-Length:0] [Content-Type:application/xml]");
  session.SetContentType(Curl_ContentType::None);
  EXPECT_EQ(LinesOfGet(session), " [A:1] [Content-Length:0] [Content-Type:application/xml] [Content-Length:0]");
  session.ClearHeaders();
  EXPECT_EQ(LinesOfGet(session), " [Content-Length:0]");
  session.SetContentType(Curl_ContentType::TextPlain);
  EXPECT_EQ(LinesOfGet(session), " [Content-Length:0] [Content-Length:0] [Content-Type:text/plain]");
  session.SetContentType(Curl_ContentType::TextHtml);
  EXPECT_TRUE(LinesOfGet(session).ends_with("[Content-Type:text/html]"));
  session.ResetSession();
  EXPECT_EQ(LinesOfGet(session), " [Content-Length:0]");
  EXPECT_EQ(Catch([&] { session.SetContentType(static_cast<Curl_ContentType>(5)); }).text, "unrecognized content type");

  session.ClearHeaders();
  session.AddHeader(L"A", L"1");
  GetAnswers().slist_append = false;
  EXPECT_EQ(Catch([&] { session.AddHeader(L"B", L"2"); }).text, "AddHeader (curl_slist_append) failed!");
  GetAnswers().slist_append = true;
  EXPECT_EQ(LinesOfGet(session), " [A:1] [Content-Length:0]") << "what was there is still there";
}

TEST_F(HttpSession, AddsItsOwnHeadersThroughTheVirtualTable) {
  class Censor : public Session {
   public:
    using Session::Session;
    void AddHeader(const std::wstring& name, long value) override { CurlWrapper::AddHeader(L"N-" + name, value); }
    void AddHeader(const std::wstring& name, const std::wstring& value) override {
      CurlWrapper::AddHeader(L"S-" + name, value);
    }
  };
  Censor censor(Directory());
  censor.SetContentType(L"t");
  EXPECT_EQ(LinesOfGet(censor), " [S-N-Content-Length:0] [S-Content-Type:t]");
}

TEST_F(HttpSession, GivesTheBodyToACallbackAndItsExceptionToTheCaller) {
  GetAnswers().body = {"a\xFF", "", "b"};
  std::string received;
  const auto collect = [](char* data, std::size_t size, std::size_t count, void* user) {
    static_cast<std::string*>(user)->append(data, size * count).append("|");
    return count;
  };
  session.SetReceiveDataCallback(collect, &received);
  session.ExecuteGetRequest(L"http://h/");
  session.SetReceiveDataCallback(+collect, &received);  // a plain function is called by a way of its own
  session.ExecuteGetRequest(L"http://h/");
  EXPECT_EQ(received, "a\xFF|b|a\xFF|b|");
  EXPECT_EQ(session.GetHttpResponse(), L"");

  const auto answer = [&](const std::function<std::size_t()>& taken, void* user) {
    session.SetReceiveDataCallback([=](char*, std::size_t, std::size_t, void*) { return taken(); }, user);
    return GetFails();
  };
  EXPECT_EQ(answer([] { return 1; }, &received), (Thrown{"libcurl's text for 23", 23}));
  EXPECT_EQ(answer([] { return 0x10000001; }, &received).code, 23U) << "libcurl's number for a pause without end";
  const std::function<std::size_t()> fail = []() -> std::size_t { throw 7; };
  EXPECT_THROW(answer(fail, &received), int);

  // What libcurl is working with cannot be taken from under it.
  const std::function<void()> misuses[] = {[&] { session.ExecuteGetRequest(L"http://h/"); },
                                           [&] { session.ClearHeaders(); },
                                           [&] { session.SetReceiveDataCallback(nullptr, nullptr); }};
  for (const auto& misuse : misuses) {
    const auto call = [&]() -> std::size_t {
      misuse();
      return 0;
    };
    EXPECT_EQ(answer(call, &received).text, "A request is under way");
  }

  GetAnswers().body = {"text"};
  EXPECT_EQ(answer(fail, nullptr), Thrown()) << "without a pointer, the callback does not count";
  EXPECT_EQ(session.GetHttpResponse(), L"text");
}

TEST_F(HttpSession, RefusesVerbsAddressesAndLineBreaksBeforeAnyTransfer) {
  TakeNotes();
  EXPECT_EQ(Catch([&] { session.ExecutePostRequest(L"http://h/\r\nX: y"); }).code, 12005U);
  EXPECT_EQ(Catch([&] { session.ExecuteRequest(L"http://h/", L"PUT"); }), (Thrown{"Invalid HTTP verb specified.", 87}));
  EXPECT_THAT(TakeCalls(), testing::Not(HasSubstr("curl_easy_perform")));

  const auto breaks = [](const std::string& what) { return Thrown{what + " must not hold CR, LF or U+0000", 87}; };
  session.ClearHeaders();
  for (const std::wstring& bad : {std::wstring(L"a\rb"), std::wstring(L"a\n"), std::wstring(L"a\0b", 3)}) {
    const auto of = [&](auto&&... arguments) {
      return Catch([&] { Session(Directory(), arguments..., false, 0, 0).ExecuteGetRequest(L"http://h/"); });
    };
    const std::wstring none;
    EXPECT_EQ(Catch([&] { session.AddHeader(bad, L"v"); }), breaks("A header"));
    EXPECT_EQ(Catch([&] { session.AddHeader(L"n", bad); }), breaks("A header"));
    EXPECT_EQ(Catch([&] { session.SetContentType(bad); }), breaks("A content type"));
    EXPECT_EQ(of(false, bad, none), breaks("A user agent"));
    EXPECT_EQ(of(false, none, bad), breaks("A CA file's path"));
    EXPECT_EQ(of(bad, 1U, none, none, none, none), breaks("A proxy's host"));
    EXPECT_EQ(of(L"p", 1U, bad, none, none, none), breaks("A proxy's user or password"));
    EXPECT_EQ(of(L"p", 1U, L"u", bad, none, none), breaks("A proxy's user or password"));
  }
  EXPECT_EQ(LinesOfGet(session), " [Content-Length:0]") << "nothing of it stayed behind";
  EXPECT_THROW(session.AddHeader(L"n", L"\xD800"), std::range_error);
}

TEST_F(HttpSession, NeverAsksTheTerminalForThePasswordOfAPinnedCertificate) {
  session.AddCertificate("ENCRYPTED");
  EXPECT_THAT(CallsOfGet(session, L"https://h/"), HasSubstr("; password of -1 bytes; "));
}

TEST_F(StandInSession, MakesRequestsWhileStaticObjectsAreDestroyed) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        static Session* const last = new Session(Directory());
        static const std::filesystem::path* const libraries = new std::filesystem::path(folder.Path());
        std::atexit([] {
          last->ClearHeaders();
          std::fprintf(stderr, "sent%s;", LinesOfGet(*last).c_str());
          delete last;
          std::error_code ignored;
          std::filesystem::remove_all(*libraries, ignored);
        });
        LinesOfGet(*last);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "sent \\[Content-Length:0\\];");
}

TEST_F(StandInSession, LeavesLibcurlLoadedAfterATimeOutThatMayHaveLeftAThreadInIt) {
  GetAnswers().perform = 28;
  EXPECT_EQ(Catch([&] { Session{Directory()}.ExecuteGetRequest(L"http://h/"); }).code, 28U);
  EXPECT_EQ(TakeNotes().back(), "curl_global_cleanup");
}

}  // namespace
