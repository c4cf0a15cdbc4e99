#include "tests/pipes/pipe_fixture.h"

namespace Zelto::Utilities {
namespace {

using testing::ElementsAre;

/// A connection that runs without a server, and its client.
struct LoneConnection {
  LoneConnection(MessageReceivedCallback message_received, ClientDroppedCallback client_dropped) {
    const std::wstring name = UniquePipeName();
    const auto instance = std::make_shared<NamedPipeInstance>();
    instance->pipe = Listen(name);
    client = OpenClient(name);
    EXPECT_EQ(Connect(instance->pipe), Platform::kSuccess);
    connection = ActiveNamedPipeServerConnection::Create(9, instance, 5000, 4096, Encoding::Utf8,
                                                         std::move(message_received), std::move(client_dropped));
  }

  std::shared_ptr<AsyncNamedPipeClient> client;
  std::shared_ptr<ActiveNamedPipeServerConnection> connection;
};

TEST(PipeServerConnection, RunsWithoutAServerToo) {
  Counter dropped;
  const LoneConnection lone([](unsigned int id, const std::wstring& message) { return message + std::to_wstring(id); },
                            [&](unsigned int id) { dropped.Add(id); });
  EXPECT_FALSE(lone.connection->IsRunning());
  lone.connection->Start();
  EXPECT_TRUE(lone.connection->IsRunning());
  EXPECT_EQ(Ask(*lone.client, L"x"), L"x9");
  lone.client->Close();
  EXPECT_TRUE(dropped.WaitFor(1));
  EXPECT_TRUE(Eventually([&] { return !lone.connection->IsRunning(); }));
  lone.connection->Stop();
  EXPECT_THAT(dropped.Ids(), ElementsAre(9));
}

TEST(PipeServerConnection, StoppedAndStartedByItsCallbackItDropsItsClientOnce) {
  Counter dropped;
  ActiveNamedPipeServerConnection* self = nullptr;
  const LoneConnection lone(
      [&](unsigned int, const std::wstring& message) {
        self->Stop();
        self->Start();
        return message;
      },
      [&](unsigned int) {
        dropped.Add();
        dropped.WaitFor(2, std::chrono::milliseconds(300));  // time for the other thread to come here as well
      });
  self = lone.connection.get();
  self->Start();
  lone.client->WriteMessage(L"x").get();
  EXPECT_TRUE(dropped.WaitFor(1));
  EXPECT_TRUE(Eventually([&] { return self->HasEnded(); }));
  EXPECT_EQ(dropped.Value(), 1);
}

TEST(PipeServerConnection, StoppedAndStartedByItsCallbackItsThreadsEndTogether) {
  for (int round = 0; round < 50; ++round) {
    ActiveNamedPipeServerConnection* self = nullptr;
    const LoneConnection lone(
        [&](unsigned int, const std::wstring&) {
          self->Stop();
          self->Start();
          return std::wstring();
        },
        [](unsigned int) {});
    self = lone.connection.get();
    self->Start();
    lone.client->WriteMessage(L"x").get();
    ASSERT_TRUE(Eventually([&] { return self->HasEnded(); }));
  }
}

}  // namespace
}  // namespace Zelto::Utilities
