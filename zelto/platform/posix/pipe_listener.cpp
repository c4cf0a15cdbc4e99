#include "zelto/platform/posix/pipe_listener.h"

#include "zelto/platform/posix/errno_codes.h"
#include "zelto/platform/posix/pipe_names.h"
#include "zelto/platform/posix/pipe_socket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <mutex>
#include <new>
#include <utility>

namespace Zelto::Platform {
namespace {

constexpr std::uint32_t kNoLimit = 255;
constexpr int kBacklog = 4096;  // the system may allow fewer
constexpr mode_t kOwnerOnly = 0600;
constexpr mode_t kEveryone = 0666;

struct Registry {
  std::mutex lock;
  std::map<std::string, std::unique_ptr<PipeListener>> listeners;  // by file name
};

// Never destroyed: a pipe may be closed by another static object's destructor.
Registry& TheRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

bool IsSameFile(const std::string& path, int opened) noexcept {
  struct stat there {};
  struct stat ours {};
  return ::lstat(path.c_str(), &there) == 0 && ::fstat(opened, &ours) == 0 && there.st_dev == ours.st_dev &&
         there.st_ino == ours.st_ino;
}

// Ends a connection that no instance takes.
void TurnAway(int client) noexcept {
  ::shutdown(client, SHUT_RDWR);
  DropPackets(client);
}

}  // namespace

void PipeListenerRelease::operator()(PipeListener* listener) const noexcept {
  Registry& registry = TheRegistry();
  const std::lock_guard<std::mutex> guard(registry.lock);
  if (--listener->instances_ == 0) {
    registry.listeners.erase(registry.listeners.find(listener->file_));
  }
}

ErrorCode PipeListener::Share(const PipeSettings& settings, PipeListenerShare& share) {
  std::string file = PipeFileName(settings.name);
  if (file.empty()) {
    return kInvalidName;
  }
  if (settings.maximum_instances == 0 || settings.maximum_instances > kNoLimit) {
    return kInvalidParameter;
  }
  Registry& registry = TheRegistry();
  const std::lock_guard<std::mutex> guard(registry.lock);
  auto found = registry.listeners.find(file);
  if (found == registry.listeners.end()) {
    std::unique_ptr<PipeListener> made(new PipeListener(settings, file));
    if (const ErrorCode error = made->Listen(); error != kSuccess) {
      return error;
    }
    found = registry.listeners.emplace(std::move(file), std::move(made)).first;
  }
  PipeListener& listener = *found->second;
  if (listener.maximum_instances_ != kNoLimit && listener.instances_ >= listener.maximum_instances_) {
    return kPipeBusy;
  }
  ++listener.instances_;
  share.reset(&listener);
  return kSuccess;
}

PipeListener::PipeListener(const PipeSettings& settings, std::string file)
    : file_(std::move(file)),
      maximum_instances_(settings.maximum_instances),
      allow_everyone_(settings.allow_everyone) {}

// The lock goes last: whoever gets it must find nothing of ours. An administrator may have cleared the directory and
// another server may live there now; its files are not ours to take away.
PipeListener::~PipeListener() {
  if (lock_ && IsSameFile(lock_path_, lock_.Get())) {
    if (socket_) {
      ::unlink(socket_path_.c_str());
    }
    ::unlink(lock_path_.c_str());
  }
  TurnAllAway();
}

// The system would drop what clients in the queue have sent, as it does when their own socket is closed.
void PipeListener::TurnAllAway() const noexcept {
  ::shutdown(socket_.Get(), SHUT_RDWR);  // nobody joins the queue any more
  while (true) {
    const UniqueDescriptor client(::accept4(socket_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (client) {
      TurnAway(client.Get());
    } else if (errno != EINTR && errno != ECONNABORTED) {
      return;
    }
  }
}

ErrorCode PipeListener::Listen() {
  ErrorCode error = kAccessDenied;
  for (const PipeDirectory& directory : PipeDirectories()) {
    uid_t owner = 0;
    error = CheckPipeDirectory(directory, true, owner);
    if (error == kSuccess) {
      error = ListenIn(directory.path);
    }
    if (error == kPipeBusy) {
      return kAccessDenied;  // another process has the lock
    }
    // Who may not use the machine's directory has one of their own.
    if (error != kAccessDenied || !directory.system) {
      return error;
    }
  }
  return error;
}

ErrorCode PipeListener::ListenIn(const std::string& directory) {
  socket_path_ = directory + '/' + file_ + ".pipe";
  lock_path_ = directory + '/' + file_ + ".lock";
  const ErrorCode error = Lock();
  return error == kSuccess ? Bind() : error;
}

ErrorCode PipeListener::Lock() {
  while (true) {
    UniqueDescriptor file(
        AvoidStandardStreams(::open(lock_path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly)));
    if (!file) {
      return CodeFromErrno(errno);
    }
    while (::flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EINTR) {
        return CodeFromErrno(errno);  // EWOULDBLOCK becomes kPipeBusy
      }
    }
    // The server before may have taken its lock file away between our opening and locking it.
    if (IsSameFile(lock_path_, file.Get())) {
      lock_ = std::move(file);
      return kSuccess;
    }
  }
}

ErrorCode PipeListener::Bind() {
  PipeAddress address;
  if (!address.Set(socket_path_)) {
    return kInvalidName;
  }
  UniqueDescriptor made = MakePipeSocket();
  if (!made) {
    return CodeFromErrno(errno);
  }
  // A socket that lies there while we hold the lock is a dead server's. The mode is set before the socket gets its
  // name, so that at no time more users can connect than may; the process's file mask can only narrow it.
  const mode_t mode = allow_everyone_ ? kEveryone : kOwnerOnly;
  const int backlog = maximum_instances_ == kNoLimit
                          ? kBacklog
                          : static_cast<int>(std::min<std::uint32_t>(maximum_instances_, kBacklog));
  if ((::unlink(socket_path_.c_str()) != 0 && errno != ENOENT) || ::fchmod(made.Get(), mode) != 0 ||
      ::bind(made.Get(), address.Get(), address.Size()) != 0) {
    return CodeFromErrno(errno);
  }
  socket_ = std::move(made);  // from here on the name is taken away with this object
  if (::chmod(socket_path_.c_str(), mode) != 0 || ::listen(socket_.Get(), backlog) != 0) {
    return CodeFromErrno(errno);
  }
  return kSuccess;
}

ErrorCode PipeListener::Accept(UniqueDescriptor& client) const noexcept {
  while (true) {
    UniqueDescriptor accepted(AvoidStandardStreams(::accept4(socket_.Get(), nullptr, nullptr, SOCK_CLOEXEC)));
    if (!accepted) {
      if (errno == EINTR || errno == ECONNABORTED) {
        continue;
      }
      return errno == EAGAIN ? kIoPending : CodeFromErrno(errno);
    }
    ucred peer{};
    if (!GetPeerCredentials(accepted.Get(), peer) || !WantPacketCredentials(accepted.Get())) {
      continue;
    }
    if (allow_everyone_ || peer.uid == 0 || peer.uid == ::geteuid()) {
      client = std::move(accepted);
      return kSuccess;
    }
    TurnAway(accepted.Get());
  }
}

}  // namespace Zelto::Platform
