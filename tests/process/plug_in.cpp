// A module that uses the library behind a C interface. It leaves the library's pool with threads, and an open client.
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"

#include <exception>
#include <memory>
#include <string>

extern "C" int UsePlugIn(const char* pipe_name) {
  using namespace Zelto::Utilities;
  static std::shared_ptr<AsyncNamedPipeClient> kept;  // goes with the module, or with the process
  try {
    const std::string narrow = pipe_name;
    const std::wstring name(narrow.begin(), narrow.end());
    const auto server = MultiClientNamedPipeServer::Create(
        name, [](unsigned int, const std::wstring& message) { return message; }, NamedPipeMessageEncoding::Utf8, 5000,
        4096, false, [](unsigned int) {});
    server->Start({});
    kept = std::make_shared<AsyncNamedPipeClient>(name);
    kept->Open();
    kept->WriteMessage(L"hello", false);
    return kept->ReadMessage().then([](const std::wstring& answer) { return answer == L"hello" ? 0 : 10; }).get();
  } catch (const std::exception&) {
    return 11;
  }
}
