// Who is let in over HTTPS.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/scoped_variable.h"
#include "tests/http/live/wrappers.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;

const Outcome kAccepted = Answered(200);
const Outcome kRefused = Failed(kPeerNotVerified);

void Pin(CurlWrapper& wrapper, const std::string& name) {
  wrapper.ClearCertificates();
  wrapper.AddCertificate(LiveServers::Get().Pem(name));
}

/// What libcurl itself says to a server, from a folder of libraries, with verification as it comes.
int PlainLibcurl(const std::filesystem::path& library, const std::string& url) {
  void* const libcurl = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto function = [&]<typename F>(F*, const char* name) { return reinterpret_cast<F*>(::dlsym(libcurl, name)); };
  void* const handle = function(static_cast<void* (*)()>(nullptr), "curl_easy_init")();
  constexpr int kNoBody = 44;
  constexpr int kUrl = 10002;
  const auto set = function(static_cast<int (*)(void*, int, ...)>(nullptr), "curl_easy_setopt");
  set(handle, kNoBody, 1L);
  set(handle, kUrl, url.c_str());
  const auto perform = function(static_cast<int (*)(void*)>(nullptr), "curl_easy_perform");
  const int result = perform(handle);
  function(static_cast<void (*)(void*)>(nullptr), "curl_easy_cleanup")(handle);
  ::dlclose(libcurl);
  return result;
}

}  // namespace

TEST(Tls, PinnedCertificatesAreTheOnlyOnesTrusted) {
  LiveServers& servers = LiveServers::Get();
  const std::string root = servers.Pem("root");
  const std::string stranger = servers.Pem("stranger");
  const std::string broken = root.substr(0, root.size() / 2);
  struct {
    std::vector<std::string> pinned;
    Outcome outcome;
  } const kTable[] = {
      {{root}, kAccepted},       {{servers.Pem("middle")}, kAccepted},   {{servers.Pem("server")}, kAccepted},
      {{stranger}, kRefused},    {{servers.Pem("elsewhere")}, kRefused}, {{""}, kRefused},
      {{broken}, kRefused},      {{broken, stranger}, kRefused},         {{broken, stranger, root}, kAccepted},
      {{root, root}, kAccepted},
  };
  for (const auto& row : kTable) {
    CurlWrapper wrapper = NewWrapper();
    for (const std::string& pem : row.pinned) {
      wrapper.AddCertificate(pem);
    }
    EXPECT_EQ(Get(wrapper, servers.Https(L"/status/200")), row.outcome) << &row - kTable;
  }
}

TEST(Tls, PinnedCertificatesOutweighWhatTheSystemTrusts) {
  LiveServers& servers = LiveServers::Get();
  const TempFolder libraries;
  const std::filesystem::path system = SystemLibraries();
  std::filesystem::create_symlink(ZELTO_DEFAULT_TRUST_LIBCURL, libraries.Path() / "libcurl.so.4");
  for (const auto& entry : std::filesystem::directory_iterator(system)) {
    const std::string name = entry.path().filename();
    if (name.starts_with("libcrypto.so.") || name.starts_with("libssl.so.")) {
      std::filesystem::create_symlink(entry.path(), libraries.Path() / name);
    }
  }
  const std::wstring root = servers.PemPath("root");
  const ScopedVariable bundle("ZELTO_TEST_BUNDLE", std::string(root.begin(), root.end()));
  const ScopedVariable fallback("SSL_CERT_FILE", std::string(root.begin(), root.end()));
  const std::wstring url = servers.Https(L"/status/200");
  ASSERT_EQ(PlainLibcurl(libraries.Path() / "libcurl.so.4", std::string(url.begin(), url.end())), 0);

  for (const std::wstring& folder : {libraries / L"", SystemLibraries()}) {
    CurlWrapper wrapper = NewWrapper({.libraries = folder});
    Pin(wrapper, "stranger");
    EXPECT_EQ(Get(wrapper, url), kRefused);
    Pin(wrapper, "root");
    EXPECT_EQ(Get(wrapper, url), kAccepted);
  }
}

TEST(Tls, OneRequestNeverWeakensTheNext) {
  LiveServers& servers = LiveServers::Get();
  for (const std::wstring& url : {servers.Https(L"/status/200"), servers.Elsewhere(L"/small")}) {
    servers.Serve(L"small", "small");
    CurlWrapper wrapper = NewWrapper();
    if (url != servers.Https(L"/status/200")) {
      wrapper.DisableHostVerification();
    }
    EXPECT_EQ(Get(wrapper, url), kAccepted);  // not verified: its connection and session must not serve what follows
    Pin(wrapper, "stranger");
    EXPECT_EQ(Get(wrapper, url), kRefused);
    Pin(wrapper, "root");
    EXPECT_EQ(Get(wrapper, url), kAccepted);
    Pin(wrapper, "stranger");
    EXPECT_EQ(Get(wrapper, url), kRefused);
    wrapper.ClearCertificates();
    EXPECT_EQ(Get(wrapper, url), kAccepted);
    Pin(wrapper, "stranger");
    EXPECT_EQ(Get(wrapper, url), kRefused);
  }
}

TEST(Tls, CaFilesReplacePinnedCertificates) {
  LiveServers& servers = LiveServers::Get();
  struct {
    std::wstring ca_file;
    std::string pinned;
    Outcome outcome;
  } const kTable[] = {{servers.PemPath("root"), "stranger", kAccepted},
                      {servers.PemPath("stranger"), "root", kRefused},
                      {servers.PemPath("missing"), "root", Failed(kBadCaFile)},
                      {servers.PemPath("root") + L".key", "root", Failed(kBadCaFile)}};
  for (const auto& row : kTable) {
    CurlWrapper wrapper = NewWrapper({.ca_file = row.ca_file});
    Pin(wrapper, row.pinned);
    EXPECT_EQ(Get(wrapper, servers.Https(L"/status/200")), row.outcome) << &row - kTable;
  }
}

TEST(Tls, ChecksTheHostUnlessToldNotTo) {
  LiveServers& servers = LiveServers::Get();
  servers.Serve(L"small", "small");
  CurlWrapper verified = NewWrapper({.ca_file = servers.PemPath("root")});
  EXPECT_EQ(Get(verified, servers.Https(L"/status/200", L"127.0.0.1")), kAccepted);
  EXPECT_EQ(Get(verified, servers.Https(L"/status/200", L"127.0.0.2")), Failed(kCouldNotConnect));
  EXPECT_EQ(Get(verified, servers.Elsewhere(L"/small")), kRefused);
  verified.DisableHostVerification();
  EXPECT_EQ(Get(verified, servers.Elsewhere(L"/small")), kAccepted);

  CurlWrapper pinned = NewWrapper();
  EXPECT_EQ(Get(pinned, servers.Elsewhere(L"/small")), kRefused);  // also when the chain is not verified
  pinned.DisableHostVerification();
  Pin(pinned, "stranger");
  EXPECT_EQ(Get(pinned, servers.Elsewhere(L"/small")), kRefused);                   // the chain is still verified
  EXPECT_EQ(Get(pinned, L"https" + servers.Http(L"/small").substr(4)).status, 0U);  // no TLS there
}

}  // namespace Zelto::Testing
