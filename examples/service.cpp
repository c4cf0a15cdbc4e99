// A service that takes JSON documents over a named pipe, adds what it knows, and answers with JSON. Run it in one
// terminal and the agent in another.

#include "arguments.h"
#include "document_checks.h"

#include <zelto/zelto.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <mutex>
#include <string>
#include <vector>

using Zelto::Json::DataObject;
using Zelto::Json::JsonWriter;
using Zelto::Utilities::Diagnostics;
using Zelto::Utilities::MultiClientNamedPipeServer;
using Zelto::Utilities::NamedPipeMessageEncoding;
using Zelto::Utilities::PipePeerIdentity;
using Zelto::Utilities::SharedHandle;
using Zelto::Utilities::StringUtilities;

namespace {

constexpr unsigned kBufferSize = 4096;
constexpr unsigned long kPipeTimeoutMs = 5000;
constexpr auto kLastAnswerLimit = std::chrono::seconds(5);
constexpr auto kSignalCheckInterval = std::chrono::milliseconds(200);

volatile std::sig_atomic_t interrupted = 0;

/// Lets the main thread sleep until an agent asks for the end and has read its last answer.
class StopRequest {
 public:
  void Ask(unsigned connection) {
    const std::lock_guard<std::mutex> guard(lock_);
    asked_ = true;
    asker_ = connection;
  }
  void ClientLeft(unsigned connection) {
    const std::lock_guard<std::mutex> guard(lock_);
    asker_left_ = asker_left_ || (asked_ && asker_ == connection);
    changed_.notify_all();
  }
  /// Stopping disconnects the pipe, and what a client has not read by then is lost: so the asker leaves first.
  void Wait() {
    std::unique_lock<std::mutex> guard(lock_);
    auto give_up = std::chrono::steady_clock::time_point::max();
    while (!asker_left_ && interrupted == 0 && std::chrono::steady_clock::now() < give_up) {
      changed_.wait_for(guard, kSignalCheckInterval);
      if (asked_ && give_up == std::chrono::steady_clock::time_point::max()) {
        give_up = std::chrono::steady_clock::now() + kLastAnswerLimit;
      }
    }
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  bool asked_ = false;
  bool asker_left_ = false;
  unsigned asker_ = 0;
};

std::wstring ErrorAnswer(const std::string& reason) {
  DataObject answer;
  answer.SetValue(L"status", L"error");
  answer.SetValue(L"reason", StringUtilities::Utf8ToUtf16(reason));
  return JsonWriter::Encode(answer, false);
}

std::wstring Answer(unsigned connection, const std::wstring& message, std::atomic<unsigned>& documents,
                    StopRequest& stop) {
  const CheckedDocument document = CheckDocument(message);
  if (!document.object) {
    return ErrorAnswer(document.reason);
  }
  DataObject answer;
  if (document.object->GetStringValue(L"command", L"") == L"stop") {
    stop.Ask(connection);
    answer.SetValue(L"status", L"stopping");
    return JsonWriter::Encode(answer, false);
  }
  document.object->SetUint64Value(L"sequence", ++documents);
  document.object->SetUint64Value(L"serviceProcess", Zelto::Platform::CurrentProcessId());
  answer.SetValue(L"status", L"ok");
  answer.SetObject(L"document", document.object);
  return JsonWriter::Encode(answer, false);
}

bool Authenticate(const SharedHandle& pipe, bool server_side) {
  const PipePeerIdentity agent = PipePeerIdentity::Of(pipe, server_side);
  std::cout << "agent is process " << agent.process_id;
  if (agent.user_id) {
    std::cout << " of user " << *agent.user_id;
  }
  std::cout << std::endl;
  return agent.process_id != 0;
}

int Serve(const std::wstring& pipe_name) {
  // What goes wrong on the library's threads, such as a name that another process holds.
  Diagnostics::SetSink([](const std::wstring& text) { std::cerr << StringUtilities::Utf16ToUtf8(text) << std::endl; });
  StopRequest stop;
  std::atomic<unsigned> documents = 0;
  // UTF-16: in UTF-8 a chunk of a long message may end inside a character, which costs the client its connection.
  const auto server = MultiClientNamedPipeServer::Create(
      pipe_name,
      [&](unsigned connection, const std::wstring& message) { return Answer(connection, message, documents, stop); },
      NamedPipeMessageEncoding::Utf16, kPipeTimeoutMs, kBufferSize, false,
      [&](unsigned connection) { stop.ClientLeft(connection); });
  server->SetMaximumMessageSize(16U << 20U);
  server->Start(Authenticate);
  std::cout << "listening on " << StringUtilities::Utf16ToUtf8(server->GetPipeName()) << " as process "
            << Zelto::Platform::CurrentProcessId() << std::endl;
  stop.Wait();
  server->Stop();
  std::cout << "stopped after " << documents << " documents" << std::endl;
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  std::string pipe = "zelto-demo";
  const std::vector<std::string> arguments = ReadArguments(argc, argv);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& option = arguments[i];
    if (option == "--pipe" && i + 1 < arguments.size()) {
      pipe = arguments[++i];
      continue;
    }
    std::cout
        << "usage: zelto_service [--pipe NAME]\n\n"
           "Answers JSON documents on the named pipe NAME (zelto-demo), adding a sequence number and its process.\n"
           "Ends on {\"command\":\"stop\"} or at an interrupt.\n";
    return option == "--help" ? 0 : 2;
  }
  std::signal(SIGINT, [](int) { interrupted = 1; });
  std::signal(SIGTERM, [](int) { interrupted = 1; });
  return Serve(StringUtilities::Utf8ToUtf16(pipe));
} catch (const std::exception& failure) {
  std::cerr << "zelto_service: " << failure.what() << std::endl;
  return 1;
}
