/// @file
/// The signal for a write to a connection that its peer has closed. Not installed.
#pragma once

namespace Zelto::Platform {

/// Keeps that signal, which by default ends the process, from the calling thread while the object lives, for foreign
/// code that may bring it about. One that comes meanwhile is gone at the end, unless the thread had it blocked before.
///
/// Linux: SIGPIPE, by `pthread_sigmask` and `sigtimedwait`. Windows has no such signal.
class PipeSignalGuard {
 public:
  PipeSignalGuard() noexcept;
  /// On the thread of the constructor. The last error stays as it is.
  ~PipeSignalGuard();
  PipeSignalGuard(const PipeSignalGuard&) = delete;
  PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;

 private:
  bool blocked_ = false;  // by this object
};

}  // namespace Zelto::Platform
