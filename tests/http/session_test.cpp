// What a session does with results, callbacks, headers and refused text.
#include "tests/http/library_folder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>

using namespace Zelto::Testing;
using Zelto::Utilities::Curl_ContentType;

namespace {

class HttpSession : public StandInSession {
 protected:
  Session session{Directory(), false, L"", L"", false, 0, 0};
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
  EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"http://h/"); }), (Thrown{"libcurl's text for 22", 22}));
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
  Censor censor(Directory(), false, L"", L"", false, 0, 0);
  censor.SetContentType(L"t");
  EXPECT_EQ(LinesOfGet(censor), " [S-N-Content-Length:0] [S-Content-Type:t]");
}

TEST_F(HttpSession, GivesTheBodyToACallbackAndItsExceptionToTheCaller) {
  GetAnswers().body = {"a\xFF", "", "b"};
  std::string received;
  session.SetReceiveDataCallback(
      [](char* data, std::size_t size, std::size_t count, void* user) {
        static_cast<std::string*>(user)->append(data, size * count).append("|");
        return count;
      },
      &received);
  session.ExecuteGetRequest(L"http://h/");
  EXPECT_EQ(received, "a\xFF|b|");
  EXPECT_EQ(session.GetHttpResponse(), L"");

  const auto stop = [&](std::size_t taken) {
    session.SetReceiveDataCallback([=](char*, std::size_t, std::size_t, void*) { return taken; }, &received);
    return Catch([&] { session.ExecuteGetRequest(L"http://h/"); });
  };
  EXPECT_EQ(stop(1), (Thrown{"libcurl's text for 23", 23}));
  EXPECT_EQ(stop(0x10000001).code, 23U) << "libcurl's number for a pause without end";

  session.SetReceiveDataCallback([](char*, std::size_t, std::size_t, void*) -> std::size_t { throw 7; }, &received);
  EXPECT_THROW(session.ExecuteGetRequest(L"http://h/"), int);

  // What libcurl is working with cannot be taken from under it.
  const std::function<void()> misuses[] = {[&] { session.ExecuteGetRequest(L"http://h/"); },
                                           [&] { session.ClearHeaders(); },
                                           [&] { session.SetReceiveDataCallback(nullptr, nullptr); }};
  for (const auto& misuse : misuses) {
    session.SetReceiveDataCallback(
        [&misuse](char*, std::size_t, std::size_t, void*) -> std::size_t {
          misuse();
          return 0;
        },
        &received);
    EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"http://h/"); }).text, "A request is under way");
  }

  GetAnswers().body = {"text"};
  session.SetReceiveDataCallback([](char*, std::size_t, std::size_t, void*) -> std::size_t { throw 7; }, nullptr);
  session.ExecuteGetRequest(L"http://h/");
  EXPECT_EQ(session.GetHttpResponse(), L"text") << "without a pointer, the callback does not count";
}

TEST_F(HttpSession, RefusesOtherVerbsAndMalformedAddressesBeforeAnyTransfer) {
  TakeNotes();
  EXPECT_EQ(Catch([&] { session.ExecuteRequest(L"http://h/", L"PUT"); }), (Thrown{"Invalid HTTP verb specified.", 87}));
  EXPECT_EQ(Catch([&] { session.ExecutePostRequest(L"http://h/\r\nX: y"); }).code, 12005U);
  for (const std::string& note : TakeNotes()) {
    EXPECT_FALSE(note.starts_with("curl_easy_perform"));
  }
}

TEST_F(HttpSession, RefusesLineBreaksInWhateverGoesToLibcurl) {
  for (const std::wstring& bad : {std::wstring(L"a\rb"), std::wstring(L"a\n"), std::wstring(L"a\0b", 3)}) {
    const auto of = [&](auto&&... arguments) {
      return Catch([&] {
        Session spoilt(Directory(), arguments..., false, 0, 0);
        spoilt.ExecuteGetRequest(L"http://h/");
      });
    };
    const auto expected = [](const std::string& what) { return Thrown{what + " must not hold CR, LF or U+0000", 87}; };
    const std::wstring none;
    EXPECT_EQ(Catch([&] { session.AddHeader(bad, L"v"); }), expected("A header"));
    EXPECT_EQ(Catch([&] { session.AddHeader(L"n", bad); }), expected("A header"));
    EXPECT_EQ(Catch([&] { session.SetContentType(bad); }), expected("A content type"));
    EXPECT_EQ(of(false, bad, none), expected("A user agent"));
    EXPECT_EQ(of(false, none, bad), expected("A CA file's path"));
    EXPECT_EQ(of(bad, 1U, none, none, none, none), expected("A proxy's host"));
    EXPECT_EQ(of(L"p", 1U, bad, none, none, none), expected("A proxy's user or password"));
    EXPECT_EQ(of(L"p", 1U, L"u", bad, none, none), expected("A proxy's user or password"));
  }
  EXPECT_EQ(LinesOfGet(session), " [Content-Length:0]") << "nothing of it stayed behind";
  EXPECT_THROW(session.AddHeader(L"n", L"\xD800"), std::range_error);
}

TEST_F(HttpSession, NeverAsksTheTerminalForThePasswordOfAPinnedCertificate) {
  session.AddCertificate("ENCRYPTED");
  TakeNotes();
  session.ExecuteGetRequest(L"https://h/");
  const std::vector<std::string> notes = TakeNotes();
  EXPECT_EQ(std::count(notes.begin(), notes.end(), "password of -1 bytes"), 1);
}

TEST_F(StandInSession, MakesRequestsWhileStaticObjectsAreDestroyed) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(
      {
        static Session* const last = new Session(Directory(), false, L"", L"", false, 0, 0);
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
  {
    Session session(Directory(), false, L"", L"", false, 0, 0);
    EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"http://h/"); }).code, 28U);
  }
  const std::vector<std::string> notes = TakeNotes();
  EXPECT_EQ(notes.back(), "curl_global_cleanup");
}

}  // namespace
