/// @file
/// Descriptors that run out.
#pragma once

#include <sys/resource.h>

#include <vector>

namespace Zelto::Testing {

/// While it lives, the process can open this many descriptors more. Those that it closes count again.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t more);
  ~DescriptorLimit();
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit before_{};
  std::vector<int> taken_;
};

}  // namespace Zelto::Testing
