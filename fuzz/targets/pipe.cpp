// Bytes on a pipe into live servers, which answer each message with it behind a "=". A client of the input's making
// writes, reads, goes away or sends what no client of the library sends; a good client must be served all the time.
#include "fuzz/foreign_packet.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/input.h"
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/pipes/multi_client_named_pipe_server.h"
#include "zelto/platform/message_pipe.h"
#include "zelto/platform/process.h"
#include "zelto/text/string_utilities.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Zelto::Fuzz {
namespace {

using Utilities::AsyncNamedPipeClient;
using Utilities::MultiClientNamedPipeServer;
using Utilities::NamedPipeMessageEncoding;
using Utilities::SharedHandle;
using Utilities::StringUtilities;

constexpr std::size_t kChunkUnits = 64;
constexpr std::uint32_t kLimitMs = 20000;
constexpr int kMostSteps = 12;
constexpr std::size_t kLargeMessage = 70000;  // above what one packet holds

std::wstring PipeName(NamedPipeMessageEncoding encoding) {
  return L"zelto-fuzz-" + std::to_wstring(Platform::CurrentProcessId()) + L"-" +
         std::to_wstring(static_cast<std::uint32_t>(encoding));
}

// A server and its good client, as long as the program runs.
class Server {
 public:
  explicit Server(NamedPipeMessageEncoding encoding)
      : encoding_(encoding),
        server_(MultiClientNamedPipeServer::Create(
            PipeName(encoding), [](unsigned int, const std::wstring& message) { return L"=" + message; }, encoding,
            5000, kChunkUnits, false, [](unsigned int) {})),
        client_(PipeName(encoding), kLimitMs) {
    server_->Start({});
    client_.SetEncoding(encoding);
    client_.Open();
  }

  NamedPipeMessageEncoding Encoding() const { return encoding_; }
  std::wstring Name() const { return server_->GetPipeName(); }

  void CheckGoodClient() {
    client_.WriteMessage(L"still there?").get();
    Require(client_.ReadMessage().get() == L"=still there?", "a good client is served beside a bad one");
  }

  static Server& Of(bool utf8) {
    static Server utf8_server(NamedPipeMessageEncoding::Utf8);
    static Server utf16_server(NamedPipeMessageEncoding::Utf16);
    return utf8 ? utf8_server : utf16_server;
  }

 private:
  NamedPipeMessageEncoding encoding_;
  std::shared_ptr<MultiClientNamedPipeServer> server_;
  AsyncNamedPipeClient client_;
};

std::string Utf16Bytes(std::wstring_view text) {
  std::string bytes;
  for (const wchar_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8 & 0xFF);
  }
  return bytes;
}

// Up to a zero. Of an odd number of bytes the last one is a unit by itself.
std::wstring Utf16Text(std::string_view bytes) {
  std::wstring text;
  for (Input input({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}); !input.IsEmpty();) {
    text += static_cast<wchar_t>(input.Unit());
  }
  return text.substr(0, text.find(L'\0'));
}

// The answer to a message, empty when there is none; nothing when the message costs the connection.
std::optional<std::string> AnswerTo(std::string_view message, NamedPipeMessageEncoding encoding) {
  const bool utf8 = encoding == NamedPipeMessageEncoding::Utf8;
  const std::size_t chunk = kChunkUnits * (utf8 ? 1 : 2);
  std::wstring text;
  try {
    for (; !message.empty(); message.remove_prefix(std::min(chunk, message.size()))) {
      const std::string_view bytes = message.substr(0, chunk);
      text += utf8 ? StringUtilities::Utf8ToUtf16(bytes) : Utf16Text(bytes);
    }
  } catch (const std::range_error&) {
    return std::nullopt;
  }
  if (text.empty()) {
    return "";
  }
  text.insert(0, L"=");
  return utf8 ? StringUtilities::Utf16ToUtf8(text) : Utf16Bytes(text);
}

// The input's end of a connection.
class Client {
 public:
  explicit Client(const std::wstring& name) {
    Platform::ErrorCode error = Platform::OpenPipe(name, pipe_);
    while (error == Platform::kPipeBusy) {
      Platform::WaitForFreePipe(name, kLimitMs);
      error = Platform::OpenPipe(name, pipe_);
    }
    Require(error == Platform::kSuccess, "a live server takes clients");
    Require(Platform::SetMessageReadMode(pipe_) == Platform::kSuccess, "messages are read");
  }

  const SharedHandle& Pipe() const { return pipe_; }

  bool Write(std::string_view message) {
    return Complete([&](Platform::PipeOperation& operation) {
             return operation.BeginWrite(message.data(), static_cast<std::uint32_t>(message.size()));
           }).error == Platform::kSuccess;
  }

  // A whole message; nothing when the connection ended.
  std::optional<std::string> Read() {
    std::string message;
    std::array<char, 4096> buffer{};
    Outcome outcome{Platform::kMoreData, 0};
    while (outcome.error == Platform::kMoreData) {
      outcome = Complete([&](Platform::PipeOperation& operation) {
        return operation.BeginRead(buffer.data(), static_cast<std::uint32_t>(buffer.size()));
      });
      message.append(buffer.data(), outcome.count);
    }
    return outcome.error == Platform::kSuccess ? std::optional(message) : std::nullopt;
  }

 private:
  struct Outcome {
    Platform::ErrorCode error;
    std::uint32_t count;
  };

  template <typename Begin>
  Outcome Complete(const Begin& begin) {
    SharedHandle event;
    Platform::OverlappedRecord record;
    Platform::PipeOperation operation(pipe_, event, record);
    Outcome outcome{begin(operation), 0};
    if (outcome.error == Platform::kIoPending) {
      const std::array<Platform::Waitable, 1> things{operation};
      Require(Platform::WaitForAny(things, kLimitMs) == 0, "the server reads and answers");
    } else if (outcome.error != Platform::kSuccess && outcome.error != Platform::kMoreData) {
      return outcome;
    }
    outcome.error = operation.Finish(outcome.count);
    return outcome;
  }

  SharedHandle pipe_;
};

std::string TakeMessage(Input& input, bool large) {
  const Bytes bytes = input.Take(input.Byte());
  std::string message(bytes.begin(), bytes.end());
  if (large && !message.empty()) {
    const std::string part = message;
    while (message.size() < kLargeMessage) {
      message += part;
    }
  }
  return message;
}

// One connection. Ends early when the server, rightly, ended it.
void Converse(Server& server, Input& input, bool& may_be_large) {
  Client client(server.Name());
  for (int step = 0; step < kMostSteps && !input.IsEmpty(); ++step) {
    const std::uint8_t action = input.Byte();
    switch (action % 8) {
      case 0: {  // nobody waits for the answer
        if (!client.Write(TakeMessage(input, false))) {
          return;
        }
        client.Write("last words");
        return;
      }
      case 1: {
        const std::uint8_t shape = input.Byte();
        SendForeignPacket(client.Pipe(), shape, input.Take(input.Byte()));
        return;
      }
      default: {
        const std::string message = TakeMessage(input, action == 2 && may_be_large);
        may_be_large = may_be_large && action != 2;
        const std::optional<std::string> expected = AnswerTo(message, server.Encoding());
        Require(client.Write(message), "a message is taken");
        if (!expected || !expected->empty()) {
          Require(client.Read() == expected, "the answer, or the connection's end for a malformed message");
        }
        if (!expected) {
          return;
        }
        break;
      }
    }
  }
}

void Run(Bytes bytes) {
  Input input(bytes);
  Server& server = Server::Of((input.Byte() & 1U) != 0);
  bool may_be_large = true;  // once: it takes long
  for (int connection = 0; connection < 4 && (connection == 0 || !input.IsEmpty()); ++connection) {
    Converse(server, input, may_be_large);
  }
  server.CheckGoodClient();
}

const Target target("pipe", Run);

}  // namespace
}  // namespace Zelto::Fuzz
