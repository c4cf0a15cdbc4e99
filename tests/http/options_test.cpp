// The options of a request, with their values, in their order.
#include "tests/http/library_folder.h"

#include <algorithm>

using namespace Zelto::Testing;
using testing::HasSubstr;
using testing::Not;
using Zelto::Utilities::Curl_ContentType;

namespace {

using HttpOptions = StandInSession;

// What is taken back after every request.
const std::string kTakenBack =
    "POSTFIELDS null; HTTPHEADER null; WRITEDATA null; SSL_CTX_DATA null; SSL_CTX_FUNCTION null; PROXYUSERPWD null; ";

TEST_F(HttpOptions, OfAPlainGetAreTheSameBeforeAndAfterAPost) {
  const std::string plain_get =
      "URL 'http://h:8080/p?q'; PORT 8080; NOSIGNAL 1; NOPROGRESS 1; FOLLOWLOCATION 0; VERIFYPEER 0; "
      "SSL_CTX_DATA null; SSL_CTX_FUNCTION null; VERIFYHOST 2; CONNECTTIMEOUT 0; TIMEOUT 0; NOPROXY ''; PROXY ''; "
      "curl_slist_append Content-Length:0; HTTPHEADER set; HTTPGET 1; WRITEFUNCTION set; WRITEDATA set; "
      "curl_easy_perform [Content-Length:0]; curl_easy_getinfo 2097154; " +
      kTakenBack;
  Session session(Directory());
  EXPECT_EQ(CallsOfGet(session, L"http://h:8080/p?q#f"), plain_get);

  session.ClearHeaders();
  session.SetContentType(L"a/b");
  TakeNotes();
  session.ExecutePostRequest(L"https://u:p@h:8443/x");
  EXPECT_THAT(TakeCalls(), HasSubstr("POSTFIELDS ''; POSTFIELDSIZE 0; WRITEFUNCTION set; WRITEDATA set; "
                                     "curl_easy_perform [Content-Length:0] [Content-Type:a/b] {}; "));
  session.SetCommandBody(L"secret");
  session.ExecutePostRequest(L"https://u:p@h:8443/x");
  session.ClearHeaders();
  session.SetContentType(L"");
  EXPECT_EQ(CallsOfGet(session, L"http://h:8080/p?q"), plain_get) << "a body is for POSTs";
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
  EXPECT_EQ(TakeCalls(),
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
  const std::string calls = CallsOfGet(session, L"https://h/");
  EXPECT_THAT(calls, HasSubstr("VERIFYPEER 0; SSL_CTX_DATA null; SSL_CTX_FUNCTION null; CAPATH null; SSL_OPTIONS 0; "
                               "CAINFO '/ca\xC3\xA9.pem'; VERIFYPEER 1; VERIFYHOST 2; "));
  EXPECT_THAT(calls, Not(HasSubstr("BIO")));
}

TEST_F(HttpOptions, PinNothingInTheContextsOfAnotherLibraryThanOpenSsl) {
  Put("curl_version", names.curl[0]);
  for (const auto& [version, code] :
       {std::pair("OpenSSL/1.0.2k", 0U), std::pair("quictls/3.1.4", 0U), std::pair("LibreSSL/3.9.2", 50U),
        std::pair("(OpenSSL/3.0) Schannel", 50U), std::pair("(Schannel) OpenSSL/3.0", 0U)}) {
    GetAnswers().ssl_version = version;
    Session session(Directory());
    EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"https://h/"); }), Thrown()) << version;
    session.AddCertificate("PEM");
    EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"https://h/"); }).code, code) << version;
  }
}

TEST_F(HttpOptions, ThatLibcurlRefusesEndTheRequestUnlessTheyOnlySwitchOffWhatItDoesNotHave) {
  const int proxy = 10004;
  const std::vector<int> may_be_unknown = {10097, 216, 321, 10177};
  const std::vector<int> needed = {10002, 3, 64, 10065, 10109, 20108, 81, 13, 10023, 80, 20011};
  for (const bool by_proxy : {false, true}) {
    Session session(Directory(), by_proxy ? L"p" : L"", 1, L"", L"", L"", L"", false, 0, 0);
    session.AddCertificate("PEM");
    const auto expect = [&](int option, int refusal, bool passes) {
      GetAnswers().refused_option = option;
      GetAnswers().refusal = refusal;
      const Thrown refused{"libcurl's text for " + std::to_string(refusal), static_cast<std::uint32_t>(refusal)};
      EXPECT_EQ(Catch([&] { session.ExecuteGetRequest(L"https://h/"); }), passes ? Thrown() : refused) << option;
    };
    for (const int refusal : {48, 27}) {
      std::for_each(may_be_unknown.begin(), may_be_unknown.end(), [&](int o) { expect(o, refusal, refusal == 48); });
      std::for_each(needed.begin(), needed.end(), [&](int option) { expect(option, refusal, false); });
      expect(proxy, refusal, refusal == 48 && !by_proxy);
    }
  }
}

}  // namespace
