#include "processor.h"

#include <sched.h>

namespace Zelto::Bench {

bool StayOnProcessor(unsigned index) {
  // What the program was given, before it limited itself.
  static const cpu_set_t given = [] {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    ::sched_getaffinity(0, sizeof processors, &processors);
    return processors;
  }();
  for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
    if (CPU_ISSET(processor, &given) && index-- == 0) {
      cpu_set_t one;
      CPU_ZERO(&one);
      CPU_SET(processor, &one);
      return ::sched_setaffinity(0, sizeof one, &one) == 0;
    }
  }
  return false;
}

}  // namespace Zelto::Bench
