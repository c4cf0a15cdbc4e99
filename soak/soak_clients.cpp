// Clients of the soak: zelto_soak_clients PIPE COUNT SEED. Each, on a thread of its own, talks, stalls, sends garbage
// or leaves, again and again, until the input ends. Exit code 0 when every answer was right.
#include "zelto/pipes/async_named_pipe_client.h"
#include "zelto/platform/message_pipe.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Zelto::Utilities;
namespace Platform = Zelto::Platform;

constexpr std::uint32_t kTimeoutMs = 60000;  // an answer that takes longer counts as lost

std::atomic<bool> stop{false};
std::atomic<int> failures{0};

void Fail(const std::string& what) {
  ++failures;
  std::fprintf(stderr, "soak client: %s\n", what.c_str());
}

class Client {
 public:
  Client(std::wstring pipe, unsigned int seed) : pipe_(std::move(pipe)), random_(seed) {}

  void Run() {
    while (!stop) {
      try {
        const int turn = Number(0, 9);
        turn < 7 ? Talk() : turn == 7 ? Stall() : turn == 8 ? SendGarbage() : Leave();
      } catch (const std::exception& failure) {
        Fail(failure.what());
      }
      Sleep(Number(0, 30));
    }
  }

 private:
  int Number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(random_); }

  static void Sleep(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

  std::wstring Message() {
    const bool is_long = Number(0, 19) == 0;
    std::wstring text(static_cast<std::size_t>(Number(1, is_long ? 60000 : 600)), L'\0');
    for (wchar_t& unit : text) {
      unit = static_cast<wchar_t>(Number(1, 0xD7FF));
    }
    return text;
  }

  void Open(AsyncNamedPipeClient& client) {
    client.SetEncoding(NamedPipeMessageEncoding::Utf16);
    client.Open();
  }

  void Talk() {
    AsyncNamedPipeClient client(pipe_, kTimeoutMs);
    Open(client);
    for (int left = Number(1, 20); left > 0 && !stop; --left) {
      const std::wstring message = Message();
      client.WriteMessage(message).get();
      if (client.ReadMessage().get() != message) {
        Fail("a wrong answer");
      }
    }
  }

  // Reads none of its answers.
  void Stall() {
    AsyncNamedPipeClient client(pipe_, kTimeoutMs);
    Open(client);
    for (int left = Number(1, 5); left > 0; --left) {
      client.WriteMessage(Message(), false);
    }
    Sleep(Number(0, 300));
  }

  // Odd numbers of bytes, no text, and no end of the conversation.
  void SendGarbage() {
    SharedHandle pipe;
    if (Platform::OpenPipe(L"\\\\.\\pipe\\" + pipe_, pipe) != Platform::kSuccess) {
      return;
    }
    SharedHandle event;
    Platform::OverlappedRecord record;
    Platform::PipeOperation operation(pipe, event, record);
    std::string bytes(static_cast<std::size_t>(Number(1, 9000)), '\0');
    for (char& byte : bytes) {
      byte = static_cast<char>(Number(0, 255));
    }
    if (operation.BeginWrite(bytes.data(), static_cast<std::uint32_t>(bytes.size())) == Platform::kIoPending) {
      const std::array<Platform::Waitable, 1> things{operation};
      Platform::WaitForAny(things, 1000);
    }
    operation.Cancel();
    Sleep(Number(0, 50));
  }

  void Leave() {
    AsyncNamedPipeClient client(pipe_, kTimeoutMs);
    Open(client);
  }

  const std::wstring pipe_;
  std::minstd_rand random_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) {
    return 2;
  }
  const std::string pipe = arguments[1];
  const unsigned int seed = static_cast<unsigned int>(std::stoul(arguments[3]));
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < std::stoul(arguments[2]); ++i) {
    threads.emplace_back([&pipe, seed, i] { Client({pipe.begin(), pipe.end()}, seed + i).Run(); });
  }
  while (std::getchar() != EOF) {
  }
  stop = true;
  for (std::thread& thread : threads) {
    thread.join();
  }
  return failures == 0 ? 0 : 1;
}
