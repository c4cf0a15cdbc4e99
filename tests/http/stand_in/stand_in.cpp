#include "tests/http/stand_in/stand_in.h"

#include <mutex>
#include <utility>

namespace Zelto::Testing {
namespace {

std::mutex lock;
std::vector<std::string> notes;
std::atomic<bool> notes_closed{false};

}  // namespace

Answers& GetAnswers() {
  static Answers answers;
  return answers;
}

LockingCallbacks& GetLockingCallbacks() {
  static LockingCallbacks callbacks;
  return callbacks;
}

void Note(std::string call) {
  if (!notes_closed.load(std::memory_order_relaxed)) {
    const std::lock_guard guard(lock);
    notes.push_back(std::move(call));
  }
}

std::vector<std::string> TakeNotes() {
  const std::lock_guard guard(lock);
  return std::exchange(notes, {});
}

void CloseNotes(bool closed) {
  notes_closed.store(closed);
}

}  // namespace Zelto::Testing
