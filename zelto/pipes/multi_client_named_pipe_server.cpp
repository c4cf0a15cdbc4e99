#include "zelto/pipes/multi_client_named_pipe_server.h"

#include "zelto/pipes/accept_peer.h"
#include "zelto/pipes/pipe_name.h"
#include "zelto/pipes/pipe_observer.h"
#include "zelto/platform/message_pipe.h"
#include "zelto/threading/event_access_control.h"
#include "zelto/threading/failure_report.h"
#include "zelto/threading/thread_starter.h"
#include "zelto/threading/wait_for_objects.h"

#include <algorithm>
#include <future>
#include <list>
#include <map>
#include <utility>

namespace Zelto::Utilities {

namespace {

constexpr std::uint32_t kDefaultBufferSize = 4096;
// A closed connection's thread is at its end; it is looked at again after this time if it is not quite there.
constexpr std::uint32_t kReapRetryMs = 10;

}  // namespace

const std::uint32_t MultiClientNamedPipeServer::LISTENING_INSTANCES;

/// What lives from one `Start` to its `Stop`. The server's lock guards the two lists; the observer is the joiner's.
struct MultiClientNamedPipeServer::Session {
  PipeAuthenticationCallback authenticate;
  SharedHandle stop_event = EventAccessControl::CreateLocalEvent();
  SharedHandle reap_event = EventAccessControl::CreateLocalEvent();
  std::map<unsigned int, std::shared_ptr<ActiveNamedPipeServerConnection>> active_connections;
  std::list<std::shared_ptr<ActiveNamedPipeServerConnection>> closed_connections;
  std::thread observer;
  std::atomic<bool> observer_ended = false;
  std::promise<void> tried_to_listen;

  bool IsStopped() const { return WaitForObjects::WaitForSingleObject(stop_event, 0) == 0; }

  /// True when all threads are past their last callback: joining them takes no time. Under the server's lock.
  bool HasEnded() const {
    return observer_ended &&
           std::all_of(active_connections.begin(), active_connections.end(),
                       [](const auto& entry) { return entry.second->HasEnded(); }) &&
           std::all_of(closed_connections.begin(), closed_connections.end(),
                       [](const auto& connection) { return connection->HasEnded(); });
  }
};

/// Marks the thread as running a callback of a server, which may lie inside a callback of another.
class MultiClientNamedPipeServer::CallbackScope {
 public:
  explicit CallbackScope(const MultiClientNamedPipeServer& server) noexcept
      : server_(&server), around_(std::exchange(innermost_, this)) {}
  ~CallbackScope() { innermost_ = around_; }
  CallbackScope(const CallbackScope&) = delete;
  CallbackScope& operator=(const CallbackScope&) = delete;

  static bool IsInside(const MultiClientNamedPipeServer& server) noexcept {
    const CallbackScope* scope = innermost_;
    while (scope != nullptr && scope->server_ != &server) {
      scope = scope->around_;
    }
    return scope != nullptr;
  }

 private:
  static thread_local const CallbackScope* innermost_;
  const MultiClientNamedPipeServer* const server_;
  const CallbackScope* const around_;
};

thread_local const MultiClientNamedPipeServer::CallbackScope* MultiClientNamedPipeServer::CallbackScope::innermost_ =
    nullptr;

std::shared_ptr<MultiClientNamedPipeServer> MultiClientNamedPipeServer::Create(
    const std::wstring& pipe_name, MessageReceivedCallback message_received, NamedPipeMessageEncoding encoding,
    std::uint32_t timeout_ms, std::uint32_t buffer_size, bool allow_everyone, ClientDroppedCallback client_dropped) {
  std::shared_ptr<MultiClientNamedPipeServer> self(
      new MultiClientNamedPipeServer(FullPipeName(pipe_name), std::move(message_received), encoding, timeout_ms,
                                     buffer_size, allow_everyone, std::move(client_dropped)));
  self->self_ = self;
  // The threads share `self`; what callers own stops the server when the last of them goes.
  return {self.get(), [self](MultiClientNamedPipeServer*) mutable {
            self->EndSession();
            self->JoinEndedSessions();
            self.reset();
          }};
}

MultiClientNamedPipeServer::MultiClientNamedPipeServer(std::wstring pipe_name, MessageReceivedCallback message_received,
                                                       NamedPipeMessageEncoding encoding, std::uint32_t timeout_ms,
                                                       std::uint32_t buffer_size, bool allow_everyone,
                                                       ClientDroppedCallback client_dropped)
    : pipe_name_(std::move(pipe_name)),
      timeout_ms_(timeout_ms),
      buffer_size_(buffer_size == 0 ? kDefaultBufferSize : buffer_size),
      encoding_(encoding),
      allow_everyone_(allow_everyone),
      message_received_(std::make_shared<const MessageReceivedCallback>(std::move(message_received))),
      client_dropped_(std::move(client_dropped)) {}

MultiClientNamedPipeServer::~MultiClientNamedPipeServer() = default;

void MultiClientNamedPipeServer::Start(PipeAuthenticationCallback authenticate) {
  JoinSessionsAtTheirEnd();
  std::unique_lock guard(server_lock_);
  if (session_) {
    return;
  }
  ended_sessions_.reserve(ended_sessions_.size() + 1);  // so that ending this one cannot fail
  auto session = std::make_shared<Session>();
  session->authenticate = std::move(authenticate);
  const auto observer = std::make_shared<PipeObserver>(Platform::PipeSettings{.name = pipe_name_,
                                                                              .buffer_size = buffer_size_,
                                                                              .default_timeout_ms = timeout_ms_,
                                                                              .allow_everyone = allow_everyone_},
                                                       session->stop_event, session->reap_event);
  session->observer = StartThread([self = self_.lock(), session, observer] {
    self->WaitForConnections(*session, *observer);
    session->observer_ended = true;
  });
  session_ = session;
  guard.unlock();
  session->tried_to_listen.get_future().wait();
}

bool MultiClientNamedPipeServer::IsStarted() const {
  const std::lock_guard guard(server_lock_);
  return session_ != nullptr;
}

void MultiClientNamedPipeServer::Stop() {
  EndSession();
  if (!CallbackScope::IsInside(*this)) {
    JoinEndedSessions();
  }
}

/// Has everything that runs come to its end. Waits for nothing.
void MultiClientNamedPipeServer::EndSession() {
  const std::lock_guard guard(server_lock_);
  if (!session_) {
    return;
  }
  ended_sessions_.push_back(session_);
  Platform::SignalEvent(session_->stop_event);
  for (const auto& [id, connection] : session_->active_connections) {
    connection->RequestStop();
  }
  session_.reset();
}

void MultiClientNamedPipeServer::JoinEndedSessions() {
  const std::lock_guard joining(join_lock_);
  std::vector<std::shared_ptr<Session>> sessions;
  {
    const std::lock_guard guard(server_lock_);
    sessions.swap(ended_sessions_);
  }
  for (const auto& session : sessions) {
    StopObserverThread(*session);
    ClearActiveConnections(*session);
  }
}

// A server that is only ever stopped inside its callbacks lets go of its earlier sessions here. Those that others join
// are not in the list any more.
void MultiClientNamedPipeServer::JoinSessionsAtTheirEnd() {
  while (true) {
    std::shared_ptr<Session> session;
    {
      const std::lock_guard guard(server_lock_);
      const auto found = std::find_if(ended_sessions_.begin(), ended_sessions_.end(),
                                      [](const auto& each) { return each->HasEnded(); });
      if (found == ended_sessions_.end()) {
        return;
      }
      session = *found;
      ended_sessions_.erase(found);
    }
    StopObserverThread(*session);
    ClearActiveConnections(*session);
  }
}

void MultiClientNamedPipeServer::StopObserverThread(Session& session) noexcept {
  if (session.observer.get_id() == std::this_thread::get_id()) {
    JoinLater(std::move(session.observer));
  } else {
    session.observer.join();
  }
}

// Called when the observer has ended and the session is nobody's any more, so without a lock.
void MultiClientNamedPipeServer::ClearActiveConnections(Session& session) noexcept {
  for (const auto& connection : session.closed_connections) {
    connection->RequestStop();
  }
  for (const auto& [id, connection] : session.active_connections) {
    connection->Stop();
  }
  session.active_connections.clear();
  session.closed_connections.clear();
}

void MultiClientNamedPipeServer::SetReceiveCallBack(MessageReceivedCallback message_received) {
  auto next = std::make_shared<const MessageReceivedCallback>(std::move(message_received));
  const std::lock_guard guard(server_lock_);
  message_received_.swap(next);
}

std::wstring MultiClientNamedPipeServer::CallMessageReceivedCallback(unsigned int id, std::wstring message) {
  std::shared_ptr<const MessageReceivedCallback> callback;
  {
    const std::lock_guard guard(server_lock_);
    callback = message_received_;
  }
  const CallbackScope scope(*this);
  return *callback ? (*callback)(id, std::move(message)) : std::wstring();
}

void MultiClientNamedPipeServer::CallClientDroppedCallback(unsigned int id) {
  try {
    const CallbackScope scope(*this);
    client_dropped_(id);
  } catch (...) {
    RemoveActiveConnection(id);
    throw;
  }
  RemoveActiveConnection(id);
}

bool MultiClientNamedPipeServer::AuthenticateClient(const Session& session, const SharedHandle& pipe) {
  const CallbackScope scope(*this);
  return AcceptPeer(session.authenticate, pipe, true);
}

void MultiClientNamedPipeServer::WaitForConnections(Session& session, PipeObserver& observer) {
  observer.ListenAgain();
  session.tried_to_listen.set_value();
  while (true) {
    const bool all_cleared = ClearClosedConnections(session);
    if (session.IsStopped()) {
      return;
    }
    try {
      const std::shared_ptr<NamedPipeInstance> client =
          observer.WaitForNewClient(all_cleared ? Platform::kInfinite : kReapRetryMs);
      if (!client) {
        continue;
      }
      if (AuthenticateClient(session, client->pipe)) {
        AddActiveConnectionThread(session, client);
      } else {
        Platform::DisconnectPipe(client->pipe);
      }
    } catch (...) {
      ReportCurrentException(L"Exception waiting for a client of a named pipe");
    }
  }
}

void MultiClientNamedPipeServer::AddActiveConnectionThread(Session& session,
                                                           std::shared_ptr<NamedPipeInstance> instance) {
  const std::lock_guard guard(server_lock_);
  if (session_.get() != &session) {
    Platform::DisconnectPipe(instance->pipe);
    return;
  }
  const unsigned int id = next_id_;
  const SharedHandle pipe = instance->pipe;
  const auto self = self_.lock();
  const auto connection = ActiveNamedPipeServerConnection::Create(
      id, std::move(instance), timeout_ms_, buffer_size_, encoding_,
      [self](unsigned int from, std::wstring message) {
        return self->CallMessageReceivedCallback(from, std::move(message));
      },
      [self](unsigned int from) { self->CallClientDroppedCallback(from); });
  connection->SetMaximumMessageSize(maximum_message_size_);
  session.active_connections.emplace(id, connection);
  try {
    connection->Start();
  } catch (...) {
    session.active_connections.erase(id);
    Platform::DisconnectPipe(pipe);
    throw;
  }
  ++next_id_;
}

void MultiClientNamedPipeServer::RemoveActiveConnection(unsigned int id) {
  std::shared_ptr<Session> session;
  {
    const std::lock_guard guard(server_lock_);
    session = session_;
    if (!session) {
      return;
    }
    const auto found = session->active_connections.find(id);
    if (found == session->active_connections.end()) {
      return;
    }
    session->closed_connections.push_back(found->second);
    found->second->RequestStop();
    session->active_connections.erase(found);
  }
  Platform::SignalEvent(session->reap_event);
}

/// Lets go of the closed connections whose threads have ended. @return false when there are others
bool MultiClientNamedPipeServer::ClearClosedConnections(Session& session) {
  Platform::ClearEvent(session.reap_event);
  std::list<std::shared_ptr<ActiveNamedPipeServerConnection>> ended;
  bool all = true;
  {
    const std::lock_guard guard(server_lock_);
    auto& closed = session.closed_connections;
    for (auto connection = closed.begin(); connection != closed.end();) {
      const auto current = connection++;
      if ((*current)->HasEnded()) {
        ended.splice(ended.end(), closed, current);
      }
    }
    all = closed.empty();
  }
  for (const auto& connection : ended) {
    connection->Stop();
  }
  return all;
}

}  // namespace Zelto::Utilities
