#include "tests/pipes/pipe_fixture.h"

namespace Zelto::Utilities {
namespace {

using testing::ElementsAre;

TEST(PipeServerConnection, RunsWithoutAServerToo) {
  const std::wstring name = UniquePipeName();
  BareEnd end = BareEnd::Listen(name);
  const auto client = OpenClient(name);
  end.Accept();
  auto instance = std::make_shared<NamedPipeInstance>();
  instance->pipe = end.pipe;
  Counter dropped;
  std::shared_ptr<ActiveNamedPipeServerConnection> connection = ActiveNamedPipeServerConnection::Create(
      9, instance, 5000, 4096, Encoding::Utf8,
      [](unsigned int id, const std::wstring& message) { return message + std::to_wstring(id); },
      [&](unsigned int id) { dropped.Add(id); });
  EXPECT_FALSE(connection->IsRunning());
  connection->Start();
  EXPECT_TRUE(connection->IsRunning());
  EXPECT_EQ(Ask(*client, L"x"), L"x9");
  client->Close();
  EXPECT_TRUE(dropped.WaitFor(1));
  EXPECT_TRUE(Eventually([&] { return !connection->IsRunning(); }));
  connection->Stop();
  EXPECT_THAT(dropped.Ids(), ElementsAre(9));
}

TEST(PipeServerConnection, StoppedAndStartedByItsCallbackItDropsItsClientOnce) {
  const std::wstring name = UniquePipeName();
  BareEnd end = BareEnd::Listen(name);
  const auto client = OpenClient(name);
  end.Accept();
  auto instance = std::make_shared<NamedPipeInstance>();
  instance->pipe = std::move(end.pipe);
  Counter dropped;
  ActiveNamedPipeServerConnection* self = nullptr;
  const auto connection = ActiveNamedPipeServerConnection::Create(
      9, instance, 5000, 4096, Encoding::Utf8,
      [&](unsigned int, const std::wstring& message) {
        self->Stop();
        self->Start();
        return message;
      },
      [&](unsigned int) {
        dropped.Add();
        dropped.WaitFor(2, std::chrono::milliseconds(300));  // time for the other thread to come here as well
      });
  self = connection.get();
  connection->Start();
  client->WriteMessage(L"x").get();
  EXPECT_TRUE(dropped.WaitFor(1));
  EXPECT_TRUE(Eventually([&] { return connection->HasEnded(); }));
  EXPECT_EQ(dropped.Value(), 1);
}

}  // namespace
}  // namespace Zelto::Utilities
