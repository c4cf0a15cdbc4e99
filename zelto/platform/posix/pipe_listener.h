/// @file
/// The listening socket that all of a process's instances of one pipe share. Not installed.
#pragma once

#include "zelto/platform/message_pipe.h"
#include "zelto/platform/posix/descriptor.h"

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Zelto::Platform {

class PipeListener;

/// Lets go of one instance's share; the last one takes the pipe's name away.
struct PipeListenerRelease {
  void operator()(PipeListener* listener) const noexcept;
};
using PipeListenerShare = std::unique_ptr<PipeListener, PipeListenerRelease>;

/// Listens on a path socket. A locked file beside it tells a living server's socket from a dead one's.
class PipeListener {
 public:
  /// Gives one more instance its share of the process's listener of this name, made if there is none.
  static ErrorCode Share(const PipeSettings& settings, PipeListenerShare& share);

  /// Takes a waiting client; those that may not connect are turned away. @return 0, `kIoPending` or the error
  ErrorCode Accept(UniqueDescriptor& client) const noexcept;

  int Descriptor() const noexcept { return socket_.Get(); }
  ~PipeListener();
  PipeListener(const PipeListener&) = delete;
  PipeListener& operator=(const PipeListener&) = delete;

 private:
  friend struct PipeListenerRelease;

  PipeListener(const PipeSettings& settings, std::string file);
  ErrorCode Listen();
  ErrorCode ListenIn(const std::string& directory);
  ErrorCode Lock();
  ErrorCode Bind();
  void TurnAllAway() const noexcept;

  const std::string file_;
  const std::uint32_t maximum_instances_;
  const bool allow_everyone_;
  std::uint32_t instances_ = 0;
  std::string socket_path_;
  std::string lock_path_;
  UniqueDescriptor lock_;
  UniqueDescriptor socket_;
};

}  // namespace Zelto::Platform
