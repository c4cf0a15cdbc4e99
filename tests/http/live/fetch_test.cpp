// The example program that fetches and posts, as its user runs it.
#include "tests/http/live/live_servers.h"
#include "tests/http/live/shell.h"

#include <gtest/gtest.h>

namespace Zelto::Testing {

namespace {

std::string Narrow(const std::wstring& text) {
  return std::string(text.begin(), text.end());
}

testing::AssertionResult Shows(const Result& result, int status, const std::string& part) {
  const bool shows = result.status == status && result.text.find(part) != std::string::npos;
  return (shows ? testing::AssertionSuccess() : testing::AssertionFailure()) << result;
}

Result Fetch(const std::vector<std::string>& arguments) {
  std::string line = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "zelto_fetch";
  for (const std::string& argument : arguments) {
    line += " '" + argument + "'";
  }
  return Run(line);
}

}  // namespace

TEST(Fetch, HelpsAndRefusesBadOptions) {
  const Result help = Fetch({"--help"});
  for (const char* option : {"--body", "--ca", "--pin", "--proxy", "--header", "--timeout", "--output", "usage:"}) {
    EXPECT_TRUE(Shows(help, 0, option));
  }
  EXPECT_TRUE(Shows(Fetch({}), 2, "give one address"));
  EXPECT_TRUE(Shows(Fetch({"--colour", "red", "http://127.0.0.1/"}), 2, "unknown option --colour"));
  EXPECT_TRUE(Shows(Fetch({"http://127.0.0.1/", "--body"}), 2, "--body lacks its value"));
  EXPECT_TRUE(Shows(Fetch({"--timeout", "soon", "http://127.0.0.1/"}), 2, "'soon' is no number"));
  for (const char* proxy : {":8080", "proxy"}) {
    EXPECT_TRUE(Shows(Fetch({"--proxy", proxy, "http://127.0.0.1/"}), 2, "--proxy needs a host and a port"));
  }
  EXPECT_TRUE(Shows(Fetch({"--proxy-user", "u:p", "http://127.0.0.1/"}), 2, "--proxy-user needs --proxy"));
  EXPECT_TRUE(Shows(Fetch({"HTTPS://127.0.0.1/"}), 2, "needs --ca, --pin or --insecure"));
  EXPECT_TRUE(Shows(Fetch({"--pin", "/dev/null", "http://127.0.0.1/"}), 2, "/dev/null holds no PEM certificate"));
  EXPECT_TRUE(Shows(Fetch({"ftp://127.0.0.1/"}), 1, "Unsupported URL scheme"));
  EXPECT_TRUE(Shows(Fetch({"--library-dir", "/nowhere", "http://a/"}), 1, "Can't load library: /nowhere/libcurl.so.4"));
}

TEST(Fetch, GetsAndPosts) {
  LiveServers& servers = LiveServers::Get();
  const std::string bytes("\0\xFF\r\n\xC3", 5);
  servers.Serve(L"bytes", bytes);
  const TempFolder folder;
  const std::string output = folder.Path() / "output";
  const auto url = [&](const wchar_t* path) { return Narrow(servers.Http(path)); };
  EXPECT_TRUE(Shows(Fetch({url(L"/status/200")}), 0, "200"));
  EXPECT_TRUE(Shows(Fetch({url(L"/status/404")}), 3, "status 404"));
  EXPECT_EQ(Fetch({"--output", output, url(L"/bytes")}).status, 0);
  EXPECT_EQ(ReadFile(folder / L"output"), bytes);

  WriteFile(folder / L"body", "from \u00E9 file");
  EXPECT_TRUE(Shows(Fetch({"--body", "Zo\u00EB", url(L"/echo")}), 0, "Zo\u00EB"));
  EXPECT_TRUE(Shows(Fetch({"--body-file", folder.Path() / "body", url(L"/echo")}), 0, "from \u00E9 file"));
  const Result head = Fetch({"--body", "x", "--header", "X-Name:a:b", "--header", "X-Number: 7", url(L"/head")});
  EXPECT_TRUE(Shows(head, 0, "a:b|7|application/json|zelto_fetch"));

  const LoopbackServer silent([](Connection& connection) { connection.WaitForEnd(); });
  EXPECT_TRUE(Shows(Fetch({"--timeout", "1", Narrow(silent.Url(L"/"))}), 1, "Timeout was reached"));
}

TEST(Fetch, TrustsWhatItIsTold) {
  LiveServers& servers = LiveServers::Get();
  const std::string url = Narrow(servers.Https(L"/uri?tls"));
  const auto pem = [&](const char* name) { return Narrow(servers.PemPath(name)); };
  EXPECT_TRUE(Shows(Fetch({"--ca", pem("root"), url}), 0, "/uri?tls"));
  EXPECT_TRUE(Shows(Fetch({"--pin", pem("stranger"), "--pin", pem("server"), url}), 0, "/uri?tls"));
  EXPECT_TRUE(Shows(Fetch({"--insecure", url}), 0, "/uri?tls"));
  EXPECT_TRUE(Shows(Fetch({"--ca", pem("stranger"), url}), 1, "SSL peer certificate"));
  EXPECT_TRUE(Shows(Fetch({"--pin", pem("stranger"), url}), 1, "SSL peer certificate"));

  const std::string proxy = "127.0.0.1:" + std::to_string(servers.ProxyPort());
  const std::string via = Narrow(servers.Http(L"/via"));
  EXPECT_TRUE(Shows(Fetch({"--proxy", proxy, "--proxy-user", "agent:pa5sword", via}), 0, "tinyproxy"));
  EXPECT_EQ(Fetch({"--proxy", proxy, "--proxy-user", "agent:guess", via}).status, 3);
  EXPECT_TRUE(Shows(Fetch({"--proxy", proxy, "--proxy-user", "agent:pa5sword", "--pin", pem("root"), url}), 0, "?tls"));
}

}  // namespace Zelto::Testing
