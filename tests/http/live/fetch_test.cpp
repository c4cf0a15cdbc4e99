// The example program that fetches and posts, as its user runs it.
#include "tests/http/live/live_servers.h"

#include <gtest/gtest.h>

namespace Zelto::Testing {

namespace {

std::string Narrow(const std::wstring& text) {
  return std::string(text.begin(), text.end());
}

/// What a run printed and how it ended.
struct Result {
  int status;
  std::string text;

  bool Shows(int expected_status, const std::string& part) const {
    return status == expected_status && text.find(part) != std::string::npos;
  }
};
std::ostream& operator<<(std::ostream& stream, const Result& result) {
  return stream << "exit status " << result.status << ": " << result.text;
}

Result Fetch(std::vector<std::string> arguments) {
  const TempFolder folder;
  arguments.insert(arguments.begin(), std::filesystem::read_symlink("/proc/self/exe").parent_path() / "zelto_fetch");
  Program program(arguments, folder.Path() / "output");
  const int status = program.Wait();
  return {status, ReadFile(folder / L"output")};
}

}  // namespace

TEST(Fetch, HelpsAndRefusesBadOptions) {
  const Result help = Fetch({"--help"});
  for (const char* option : {"--body", "--ca", "--pin", "--proxy", "--header", "--timeout", "--output", "usage:"}) {
    EXPECT_TRUE(help.Shows(0, option)) << help;
  }
  EXPECT_TRUE(Fetch({}).Shows(2, "give one address"));
  EXPECT_TRUE(Fetch({"--colour", "red", "http://127.0.0.1/"}).Shows(2, "unknown option --colour"));
  EXPECT_TRUE(Fetch({"http://127.0.0.1/", "--body"}).Shows(2, "--body lacks its value"));
  EXPECT_TRUE(Fetch({"--timeout", "soon", "http://127.0.0.1/"}).Shows(2, "'soon' is no number"));
  EXPECT_TRUE(Fetch({"HTTPS://127.0.0.1/"}).Shows(2, "needs --ca, --pin or --insecure"));
  EXPECT_TRUE(Fetch({"--pin", "/dev/null", "http://127.0.0.1/"}).Shows(2, "/dev/null holds no PEM certificate"));
  EXPECT_TRUE(Fetch({"ftp://127.0.0.1/"}).Shows(1, "Unsupported URL scheme"));
  EXPECT_TRUE(Fetch({"--library-dir", "/nowhere", "http://a/"}).Shows(1, "Can't load library: /nowhere/libcurl.so.4"));
}

TEST(Fetch, GetsAndPosts) {
  LiveServers& servers = LiveServers::Get();
  const std::string bytes("\0\xFF\r\n\xC3", 5);
  servers.Serve(L"bytes", bytes);
  const TempFolder folder;
  const std::string output = folder.Path() / "output";
  const auto url = [&](const wchar_t* path) { return Narrow(servers.Http(path)); };
  EXPECT_TRUE(Fetch({url(L"/status/200")}).Shows(0, "200"));
  EXPECT_TRUE(Fetch({url(L"/status/404")}).Shows(3, "status 404"));
  EXPECT_EQ(Fetch({"--output", output, url(L"/bytes")}).status, 0);
  EXPECT_EQ(ReadFile(folder / L"output"), bytes);

  WriteFile(folder / L"body", "from \u00E9 file");
  EXPECT_TRUE(Fetch({"--body", "Zo\u00EB", url(L"/echo")}).Shows(0, "Zo\u00EB"));
  EXPECT_TRUE(Fetch({"--body-file", folder.Path() / "body", url(L"/echo")}).Shows(0, "from \u00E9 file"));
  const Result head = Fetch({"--body", "x", "--header", "X-Name:a:b", "--header", "X-Number: 7", url(L"/head")});
  EXPECT_TRUE(head.Shows(0, "a:b|7|application/json|zelto_fetch")) << head;

  const LoopbackServer silent([](Connection& connection) { connection.WaitForEnd(); });
  EXPECT_TRUE(Fetch({"--timeout", "1", Narrow(silent.Url(L"/"))}).Shows(1, "Timeout was reached"));
}

TEST(Fetch, TrustsWhatItIsTold) {
  LiveServers& servers = LiveServers::Get();
  const std::string url = Narrow(servers.Https(L"/uri?tls"));
  const auto pem = [&](const char* name) { return Narrow(servers.PemPath(name)); };
  EXPECT_TRUE(Fetch({"--ca", pem("root"), url}).Shows(0, "/uri?tls"));
  EXPECT_TRUE(Fetch({"--pin", pem("stranger"), "--pin", pem("server"), url}).Shows(0, "/uri?tls"));
  EXPECT_TRUE(Fetch({"--insecure", url}).Shows(0, "/uri?tls"));
  EXPECT_TRUE(Fetch({"--ca", pem("stranger"), url}).Shows(1, "SSL peer certificate"));
  EXPECT_TRUE(Fetch({"--pin", pem("stranger"), url}).Shows(1, "SSL peer certificate"));

  const std::string proxy = "127.0.0.1:" + std::to_string(servers.ProxyPort());
  const std::string via = Narrow(servers.Http(L"/via"));
  EXPECT_TRUE(Fetch({"--proxy", proxy, "--proxy-user", "agent:pa5sword", via}).Shows(0, "tinyproxy"));
  EXPECT_EQ(Fetch({"--proxy", proxy, "--proxy-user", "agent:guess", via}).status, 3);
  EXPECT_TRUE(Fetch({"--proxy", proxy, "--proxy-user", "agent:pa5sword", "--pin", pem("root"), url}).Shows(0, "?tls"));
}

}  // namespace Zelto::Testing
