// Who is let in over HTTPS.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/wrappers.h"
#include "tests/support/words.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace Zelto::Testing {

namespace {

using Utilities::CurlWrapper;

/// Pins these and no others.
void Pin(CurlWrapper& wrapper, const char* names) {
  wrapper.ClearCertificates();
  for (const std::string& name : Words(names)) {
    wrapper.AddCertificate(LiveServers::Get().Pem(name));
  }
}

}  // namespace

TEST(Tls, PinnedCertificatesAreTheOnlyOnesTrusted) {
  const std::wstring url = LiveServers::Get().Https(L"/status/200");
  const auto expect = [&](const char* pinned, const std::string& outcome) {
    CurlWrapper wrapper = NewWrapper();
    Pin(wrapper, pinned);
    EXPECT_EQ(Get(wrapper, url), outcome) << pinned;
  };
  for (const char* pinned : {"root", "middle", "server", "broken stranger root", "root root"}) {
    expect(pinned, kAccepted);
  }
  for (const char* pinned : {"stranger", "elsewhere", "nothing", "broken", "broken stranger"}) {
    expect(pinned, kPeerNotVerified);
  }
}

TEST(Tls, PinnedCertificatesOutweighWhatTheSystemTrusts) {
  LiveServers& servers = LiveServers::Get();
  const TempFolder libraries;
  const std::filesystem::path libcurl = libraries.Path() / "libcurl.so.4";
  std::filesystem::create_symlink(ZELTO_DEFAULT_TRUST_LIBCURL, libcurl);
  for (const auto& entry : std::filesystem::directory_iterator(kSystemLibraries)) {
    const std::string name = entry.path().filename();
    if (name.starts_with("libcrypto.so.") || name.starts_with("libssl.so.")) {
      std::filesystem::create_symlink(entry.path(), libraries.Path() / name);
    }
  }
  const std::string root = std::filesystem::path(servers.PemPath("root"));
  ::setenv("ZELTO_TEST_BUNDLE", root.c_str(), 1);
  ::setenv("SSL_CERT_FILE", root.c_str(), 1);
  const std::wstring url = servers.Https(L"/status/200");
  void* const plain = ::dlopen(libcurl.c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto plain_request = reinterpret_cast<int (*)(const char*)>(::dlsym(plain, "plain_request"));
  EXPECT_EQ(plain_request(std::string(url.begin(), url.end()).c_str()), 0) << "what the pinned ones must outweigh";
  ::dlclose(plain);

  for (const std::wstring& folder : {libraries / L"", std::wstring(kSystemLibraries)}) {
    CurlWrapper wrapper = NewWrapper({.libraries = folder});
    Pin(wrapper, "stranger");
    EXPECT_EQ(Get(wrapper, url), kPeerNotVerified);
    Pin(wrapper, "root");
    EXPECT_EQ(Get(wrapper, url), kAccepted);
  }
  ::unsetenv("SSL_CERT_FILE");
}

TEST(Tls, OneRequestNeverWeakensTheNext) {
  LiveServers& servers = LiveServers::Get();
  for (const bool other_host : {false, true}) {
    CurlWrapper wrapper = NewWrapper();
    if (other_host) {
      wrapper.DisableHostVerification();
    }
    // Without a pinned one nobody is verified: that connection and session must not serve what follows.
    for (const std::string pinned : {"", "stranger", "root", "stranger", "", "stranger"}) {
      Pin(wrapper, pinned.c_str());
      EXPECT_EQ(Get(wrapper, other_host ? servers.Elsewhere() : servers.Https(L"/status/200")),
                pinned == "stranger" ? kPeerNotVerified : kAccepted);
    }
  }
}

TEST(Tls, CaFilesReplacePinnedCertificates) {
  LiveServers& servers = LiveServers::Get();
  const struct {
    std::wstring ca_file;
    const char* pinned;
    std::string outcome;
  } kTable[] = {{servers.PemPath("root"), "stranger", kAccepted},
                {servers.PemPath("stranger"), "root", kPeerNotVerified},
                {servers.PemPath("missing"), "root", kBadCaFile},
                {servers.PemPath("nothing"), "root", kBadCaFile}};
  for (const auto& row : kTable) {
    CurlWrapper wrapper = NewWrapper({.ca_file = row.ca_file});
    Pin(wrapper, row.pinned);
    EXPECT_EQ(Get(wrapper, servers.Https(L"/status/200")), row.outcome) << &row - kTable;
  }
}

TEST(Tls, ChecksTheHostUnlessToldNotTo) {
  LiveServers& servers = LiveServers::Get();
  CurlWrapper verified = NewWrapper({.ca_file = servers.PemPath("root")});
  EXPECT_EQ(Get(verified, servers.Https(L"/status/200", L"127.0.0.1")), kAccepted);
  EXPECT_EQ(Get(verified, servers.Elsewhere()), kPeerNotVerified);
  verified.DisableHostVerification();
  EXPECT_EQ(Get(verified, servers.Elsewhere()), kAccepted);

  CurlWrapper pinned = NewWrapper();
  EXPECT_EQ(Get(pinned, servers.Elsewhere()), kPeerNotVerified);  // also when the chain is not verified
  pinned.DisableHostVerification();
  Pin(pinned, "stranger");
  EXPECT_EQ(Get(pinned, servers.Elsewhere()), kPeerNotVerified);  // the chain is still verified
}

}  // namespace Zelto::Testing
