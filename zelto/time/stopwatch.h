/// @file
/// Measuring how long something takes.
#pragma once

#include <zelto/export.h>
#include <zelto/time/time_span.h>

#include <chrono>

namespace Zelto::Utilities {

/// Adds up the time while it runs, by the steady clock: changes of the system's time do not touch it.
///
/// One object belongs to one thread at a time.
class ZELTO_API Stopwatch {
 public:
  /// Stopped, at zero.
  Stopwatch() noexcept = default;

  /// A stopwatch that runs.
  static Stopwatch StartNew() noexcept;

  /// Goes on from what was added up; does nothing when running.
  void Start() noexcept;

  /// Does nothing when stopped.
  void Stop() noexcept;

  /// Stops, at zero.
  void Reset() noexcept;

  /// Runs on, from zero.
  void Restart() noexcept;

  bool IsRunning() const noexcept { return running_; }

  /// What was added up so far, in whole ticks; never decreases until `Reset` or `Restart`.
  TimeSpan GetElapsed() const noexcept;

 private:
  using Clock = std::chrono::steady_clock;

  Clock::duration elapsed_{};
  Clock::time_point started_{};
  bool running_ = false;
};

}  // namespace Zelto::Utilities
