// One end of a pipe in a process of its own: pipe_peer <role> <pipe name>. Prints "ready" when it has begun.
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <string>

namespace {

using namespace Zelto::Utilities;

void SayReady() {
  std::puts("ready");
  std::fflush(stdout);
}

/// Answers until its input ends; "silence" gets no answer.
void Serve(const std::wstring& name) {
  const auto server = MultiClientNamedPipeServer::Create(
      name,
      [](unsigned int, const std::wstring& message) {
        return message == L"silence" ? std::wstring() : L"echo " + message;
      },
      NamedPipeMessageEncoding::Utf8, 5000, 4096, false, [](unsigned int) {});
  server->Start({});
  SayReady();
  while (std::getchar() != EOF) {
  }
  server->Stop();
}

/// Sends long messages until it is killed.
void Flood(const std::wstring& name) {
  AsyncNamedPipeClient client(name, 60000);
  client.Open();
  const std::wstring message(8 * 1024 * 1024, L'f');
  client.WriteMessage(L"quiet").get();
  SayReady();
  while (true) {
    client.WriteMessage(message).get();
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    return 2;
  }
  const std::string role = arguments[1];
  const std::string narrow = arguments[2];
  const std::wstring name(narrow.begin(), narrow.end());
  try {
    role == "serve" ? Serve(name) : Flood(name);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", role.c_str(), error.what());
    return 1;
  }
}
