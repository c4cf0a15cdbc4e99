// The example program that fetches and posts, as its user runs it.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/shell.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Zelto::Testing {

namespace {

std::string Narrow(const std::wstring& text) {
  return std::string(text.begin(), text.end());
}

/// Expects an exit status, and a part of what is printed.
void Expect(int status, const std::string& part, const std::vector<std::string>& arguments) {
  std::string line = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "zelto_fetch";
  for (const std::string& argument : arguments) {
    line += " '" + argument + "'";
  }
  const Result result = Run(line);
  EXPECT_EQ(result.status, status) << line;
  EXPECT_THAT(result.text, testing::HasSubstr(part)) << line;
}

}  // namespace

TEST(Fetch, HelpsAndRefusesBadOptions) {
  const std::string url = "http://127.0.0.1/";
  Expect(0, "usage:", {"--help"});
  Expect(2, "give one address", {});
  Expect(2, "unknown option --colour", {"--colour", "red", url});
  Expect(2, "--body lacks its value", {url, "--body"});
  Expect(2, "'soon' is no number", {"--timeout", "soon", url});
  Expect(2, "--proxy needs a host and a port", {"--proxy", "proxy", url});
  Expect(2, "--proxy-user needs --proxy", {"--proxy-user", "u:p", url});
  Expect(2, "--header needs a name and a value", {"--header", "X-Name", url});
  Expect(2, "needs --ca, --pin or --insecure", {"HTTPS://127.0.0.1/"});
  Expect(2, "/dev/null holds no PEM certificate", {"--pin", "/dev/null", url});
  Expect(1, "Can't load library: /nowhere/libcurl.so.4", {"--library-dir", "/nowhere", url});
}

TEST(Fetch, GetsAndPosts) {
  LiveServers& servers = LiveServers::Get();
  const std::string bytes("\0\xFF\r\n\xC3", 5);
  servers.Serve(L"bytes", bytes);
  const TempFolder folder;
  WriteFile(folder / L"body", "from \u00E9 file");
  const auto url = [&](const wchar_t* path) { return Narrow(servers.Http(path)); };
  Expect(0, "200", {url(L"/status/200")});
  Expect(3, "status 404", {url(L"/status/404")});
  Expect(0, "", {"--output", folder.Path() / "output", url(L"/bytes")});
  EXPECT_EQ(ReadFile(folder / L"output"), bytes);
  Expect(0, "Zo\u00EB", {"--body", "Zo\u00EB", url(L"/echo")});
  Expect(0, "from \u00E9 file", {"--body-file", folder.Path() / "body", url(L"/echo")});
  Expect(0, "a:b|7|application/json|zelto_fetch",
         {"--body", "x", "--header", "X-Name:a:b", "--header", "X-Number: 7", url(L"/head")});
  const LoopbackServer silent(StaySilent);
  Expect(1, "Timeout was reached", {"--timeout", "1", Narrow(silent.Url())});
}

TEST(Fetch, TrustsWhatItIsTold) {
  LiveServers& servers = LiveServers::Get();
  const std::string url = Narrow(servers.Https(L"/uri?tls"));
  const auto pem = [&](const char* name) { return Narrow(servers.PemPath(name)); };
  Expect(0, "/uri?tls", {"--ca", pem("root"), url});
  Expect(0, "/uri?tls", {"--pin", pem("stranger"), "--pin", pem("server"), url});
  Expect(1, "SSL peer certificate", {"--ca", pem("stranger"), url});
  Expect(1, "SSL peer certificate", {"--pin", pem("stranger"), url});

  const std::string proxy = "127.0.0.1:" + std::to_string(servers.ProxyPort());
  Expect(3, "", {"--proxy", proxy, "--proxy-user", "agent:guess", Narrow(servers.Http(L"/via"))});
  Expect(0, "?tls", {"--proxy", proxy, "--proxy-user", "agent:pa5sword", "--pin", pem("root"), url});
}

}  // namespace Zelto::Testing
