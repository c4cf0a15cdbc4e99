/// @file
/// A child process that echoes messages until its parent lets go of it.
#pragma once

#include <sys/types.h>

#include <functional>

/// Forks a child that runs an echo server. Made before the parent starts a thread.
class EchoProcess {
 public:
  /// @param processor  on which it stays, as `StayOnProcessor` counts
  /// @param serve  runs in the child; calls its argument once when it can be connected to; its return or its parent's
  ///               end ends the child
  EchoProcess(unsigned processor, const std::function<void(const std::function<void()>& ready)>& serve);
  ~EchoProcess();
  EchoProcess(const EchoProcess&) = delete;
  EchoProcess& operator=(const EchoProcess&) = delete;

 private:
  pid_t child_;
};
