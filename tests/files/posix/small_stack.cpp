#include "tests/files/small_stack.h"

#include <pthread.h>

#include <stdexcept>

namespace Zelto::Testing {

void RunWithSmallStack(std::function<void()> function) {
  const auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  pthread_t thread{};
  const bool started = ::pthread_attr_setstacksize(&attributes, kSmallStack) == 0 &&
                       ::pthread_create(&thread, &attributes, run, &function) == 0;
  ::pthread_attr_destroy(&attributes);
  if (!started) {
    throw std::runtime_error("pthread_create");
  }
  ::pthread_join(thread, nullptr);
}

}  // namespace Zelto::Testing
