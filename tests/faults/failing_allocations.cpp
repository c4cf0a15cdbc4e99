#include "tests/faults/failing_allocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace Zelto::Testing {
namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

thread_local std::size_t left = kNever;  // allocations until one fails
thread_local bool failed = false;
thread_local std::ptrdiff_t live_blocks = 0;
thread_local bool has_memory = false;  // whatever happens to other threads
std::atomic<bool> memory_elsewhere = true;

}  // namespace

void* Allocate(std::size_t size, std::size_t alignment) {
  if (left != kNever && !failed && left-- == 0) {
    failed = true;
    throw std::bad_alloc();
  }
  if (!memory_elsewhere && !has_memory) {
    throw std::bad_alloc();
  }
  void* const block = std::aligned_alloc(alignment, (size + alignment) / alignment * alignment);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  ++live_blocks;
  return block;
}

void Free(void* block) noexcept {
  live_blocks -= block != nullptr ? 1 : 0;
  std::free(block);
}

AllocationOutcome RunWithFailure(std::size_t before, const std::function<void()>& act) {
  AllocationOutcome outcome{false, false};
  failed = false;
  left = before;
  try {
    act();
  } catch (const std::bad_alloc&) {
    outcome.thrown = true;
  }
  left = kNever;
  outcome.failed = failed;
  return outcome;
}

NoMemoryElsewhere::NoMemoryElsewhere() {
  has_memory = true;
  memory_elsewhere = false;
}

NoMemoryElsewhere::~NoMemoryElsewhere() {
  memory_elsewhere = true;
  has_memory = false;
}

std::ptrdiff_t LiveBlocks() {
  return live_blocks;
}

}  // namespace Zelto::Testing

// The standard library's other forms, of arrays and without exceptions, come down to these.
void* operator new(std::size_t size) {
  return Zelto::Testing::Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return Zelto::Testing::Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
  Zelto::Testing::Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Zelto::Testing::Free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  Zelto::Testing::Free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  Zelto::Testing::Free(block);
}
