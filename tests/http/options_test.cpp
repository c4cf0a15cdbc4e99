// The options of a request, with their values, in their order.
#include "tests/http/library_folder.h"

#include <algorithm>

using namespace Zelto::Testing;
using Zelto::Utilities::Curl_ContentType;

namespace {

using Notes = std::vector<std::string>;
using HttpOptions = StandInSession;

// What is taken back after every request.
const std::string kTakenBack =
    "POSTFIELDS null; HTTPHEADER null; WRITEDATA null; SSL_CTX_DATA null; SSL_CTX_FUNCTION null; PROXYUSERPWD null; ";

// In the order of the calls.
std::string Text(const Notes& notes) {
  std::string text;
  for (const std::string& note : notes) {
    text += note + "; ";
  }
  return text;
}

std::string LastOf(const Notes& notes, const std::string& option) {
  const auto found = std::find_if(notes.rbegin(), notes.rend(),
                                  [&](const std::string& note) { return note.starts_with(option + " "); });
  return found == notes.rend() ? "" : found->substr(option.size() + 1);
}

// The value that an option has when the transfer begins.
std::string ValueOf(const Notes& notes, const std::string& option) {
  const auto perform =
      std::find_if(notes.begin(), notes.end(), [](const std::string& n) { return n.starts_with("curl_easy_perform"); });
  return LastOf(Notes(notes.begin(), perform), option);
}

TEST_F(HttpOptions, OfAPlainGet) {
  Session session(Directory(), false, L"", L"", false, 0, 0);
  EXPECT_EQ(Text(NotesOfGet(session, L"http://h:8080/p?q#f")),
            "URL 'http://h:8080/p?q'; PORT 8080; NOSIGNAL 1; NOPROGRESS 1; FOLLOWLOCATION 0; VERIFYPEER 0; "
            "SSL_CTX_DATA null; SSL_CTX_FUNCTION null; VERIFYHOST 2; CONNECTTIMEOUT 0; TIMEOUT 0; "
            "NOPROXY ''; PROXY ''; "
            "curl_slist_append Content-Length:0; HTTPHEADER set; HTTPGET 1; WRITEFUNCTION set; WRITEDATA set; "
            "curl_easy_perform [Content-Length:0]; curl_easy_getinfo 2097154; " +
                kTakenBack);
}

TEST_F(HttpOptions, OfAPostWithEverythingBehindAProxy) {
  Session session(Directory(), L"::1", 3128, L"us:er%", L"p\u00E4:%s", L"agent\u00E9", L"", true, 7, ~0ULL);
  session.AddCertificate("PEM 1");
  session.AddCertificate("no certificate");
  session.AddCertificate("PEM 2");
  session.DisableHostVerification();
  session.AddHeader(L"X-\u00E9", L" v");
  session.AddHeader(L"N", -2147483647 - 1);
  session.SetContentType(Curl_ContentType::ApplicationJson);
  session.SetCommandBody(L"{\u20AC}" + std::wstring(1, L'\0') + L"x");
  TakeNotes();
  session.ExecutePostRequest(L"https://u:p@h");
  const std::string body = std::string("{\xE2\x82\xAC}") + '\0' + "x";
  EXPECT_EQ(Text(TakeNotes()),
            "URL 'https://u:p@h/'; PORT 443; NOSIGNAL 1; NOPROGRESS 1; FOLLOWLOCATION 0; FAILONERROR 1; "
            "USERAGENT 'agent\xC3\xA9'; VERIFYPEER 0; SSLCERTTYPE 'PEM'; CAPATH null; SSL_OPTIONS 0; CAINFO null; "
            "CA_CACHE_TIMEOUT 0; SSL_CTX_DATA set; SSL_CTX_FUNCTION set; VERIFYPEER 1; VERIFYHOST 0; "
            "CONNECTTIMEOUT 7; TIMEOUT 2147483; "
            "NOPROXY ''; PROXY '[::1]'; PROXYPORT 3128; PROXYAUTH -17; PROXYUSERPWD 'us%3Aer%25:p\xC3\xA4:%25s'; "
            "curl_slist_append Content-Length:7; curl_slist_append Content-Type:application/json; HTTPHEADER set; "
            "POST 1; POSTFIELDS '{\xE2\x82\xAC}'; POSTFIELDSIZE 7; WRITEFUNCTION set; WRITEDATA set; "
            "curl_easy_perform [X-\xC3\xA9: v] [N:-2147483648] [Content-Length:7] [Content-Type:application/json] {" +
                body +
                "}; BIO_new_mem_buf -1; X509_STORE_add_cert PEM 1; X509_free; BIO_free; BIO_new_mem_buf -1; BIO_free; "
                "BIO_new_mem_buf -1; X509_STORE_add_cert PEM 2; X509_free; BIO_free; curl_easy_getinfo 2097154; " +
                kTakenBack);
}

TEST_F(HttpOptions, TrustACaFileAndNothingElse) {
  Session session(Directory(), false, L"", L"/ca\u00E9.pem", false, 0, 0);
  session.AddCertificate("PEM");
  const Notes notes = NotesOfGet(session, L"https://h/");
  EXPECT_EQ(ValueOf(notes, "CAINFO"), "'/ca\xC3\xA9.pem'");
  EXPECT_EQ(ValueOf(notes, "CAPATH"), "null");
  EXPECT_EQ(ValueOf(notes, "VERIFYPEER"), "1");
  EXPECT_EQ(ValueOf(notes, "SSL_CTX_FUNCTION"), "null");
  EXPECT_EQ(std::count(notes.begin(), notes.end(), "BIO_free"), 0);
}

TEST_F(HttpOptions, OfOneRequestAreNotLeftToTheNext) {
  Session session(Directory(), false, L"", L"", false, 0, 0);
  session.AddCertificate("PEM");
  session.SetContentType(L"a/b");
  session.SetCommandBody(L"secret");
  session.ExecutePostRequest(L"https://u:p@h:8443/x");
  session.ResetSession();
  session.ClearCertificates();
  const Notes notes = NotesOfGet(session, L"http://h/");
  const std::pair<const char*, const char*> values[] = {
      {"URL", "'http://h/'"},   {"PORT", "80"},      {"VERIFYPEER", "0"}, {"SSL_CTX_FUNCTION", "null"},
      {"SSL_CTX_DATA", "null"}, {"VERIFYHOST", "2"}, {"HTTPGET", "1"},    {"POSTFIELDS", ""}};
  for (const auto& [option, value] : values) {
    EXPECT_EQ(ValueOf(notes, option), value) << option;
  }
  EXPECT_EQ(LastOf(notes, "curl_easy_perform"), "[Content-Length:0]");
}

TEST_F(HttpOptions, PinNothingInTheContextsOfAnotherLibraryThanOpenSsl) {
  Put("curl_version", names.curl[0]);
  for (const auto& [version, code] :
       {std::pair("OpenSSL/1.0.2k", 0U), std::pair("quictls/3.1.4", 0U), std::pair("LibreSSL/3.9.2", 50U),
        std::pair("(OpenSSL/3.0) Schannel", 50U), std::pair("(Schannel) OpenSSL/3.0", 0U)}) {
    GetAnswers().ssl_version = version;
    Session session(Directory(), false, L"", L"", false, 0, 0);
    EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"https://h/"); }), Thrown()) << version;
    session.AddCertificate("PEM");
    EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"https://h/"); }).code, code) << version;
  }
}

TEST_F(HttpOptions, OfAnEmptyPostAreAnEmptyBody) {
  Session session(Directory(), false, L"", L"", false, 0, 0);
  TakeNotes();
  session.ExecutePostRequest(L"http://h/");
  const Notes notes = TakeNotes();
  EXPECT_EQ(LastOf(notes, "curl_easy_perform"), "[Content-Length:0] {}");
  EXPECT_EQ(ValueOf(notes, "POSTFIELDSIZE"), "0");
  // A body that is set is for POSTs: a GET announces none.
  session.ResetSession();
  session.SetCommandBody(L"body");
  EXPECT_EQ(LastOf(NotesOfGet(session), "curl_easy_perform"), "[Content-Length:0]");
}

TEST_F(HttpOptions, OpenANewSessionWhenThePinnedCertificatesChange) {
  Session session(Directory(), false, L"", L"", false, 0, 0);
  const auto opened = [&] {
    const Notes notes = NotesOfGet(session);
    EXPECT_EQ(std::count(notes.begin(), notes.end(), "curl_easy_cleanup"), notes[0] == "curl_easy_init" ? 1 : 0);
    return notes[0] == "curl_easy_init";
  };
  session.AddCertificate("PEM 1");
  EXPECT_FALSE(opened()) << "the first request";
  session.ClearCertificates();
  session.AddCertificate("PEM 1");
  EXPECT_FALSE(opened()) << "the same certificates";
  session.AddCertificate("PEM 2");
  EXPECT_TRUE(opened());
  session.ClearCertificates();
  EXPECT_TRUE(opened());
  EXPECT_FALSE(opened());
}

TEST_F(HttpOptions, ThatLibcurlRefusesEndTheRequestUnlessTheyOnlySwitchOffWhatItDoesNotHave) {
  const int no_proxy = 10177;
  const int proxy = 10004;
  const std::vector<int> may_be_unknown = {10097, 216, 321, no_proxy};
  for (const bool by_proxy : {false, true}) {
    Session session(Directory(), by_proxy ? L"p" : L"", 1, L"", L"", L"", L"", false, 0, 0);
    session.AddCertificate("PEM");
    for (const int option :
         {10002, 3, 64, 10065, 10109, 20108, 81, 13, proxy, no_proxy, 10023, 80, 20011, 10097, 216, 321}) {
      for (const int refusal : {48, 27}) {
        GetAnswers().refused_option = option;
        GetAnswers().refusal = refusal;
        const bool passes = refusal == 48 && ((option == proxy && !by_proxy) ||
                                              std::count(may_be_unknown.begin(), may_be_unknown.end(), option) != 0);
        const auto code = static_cast<std::uint32_t>(refusal);
        const Thrown expected = passes ? Thrown() : Thrown{"libcurl's text for " + std::to_string(code), code};
        EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"https://h/"); }), expected) << option << by_proxy;
      }
    }
  }
}

}  // namespace
