#include "zelto/platform/shared_handle.h"

#include "zelto/platform/handle_state.h"

#include <utility>

namespace Zelto::Utilities {

SharedHandle::SharedHandle(void* handle) {
  if (handle != nullptr && handle != Platform::InvalidHandle()) {
    state_ = Platform::AdoptHandle(handle);
  }
}

SharedHandle::SharedHandle(std::shared_ptr<Platform::HandleState> state) noexcept : state_(std::move(state)) {}

void* SharedHandle::Get() const noexcept {
  return state_ ? state_->Native() : nullptr;
}

}  // namespace Zelto::Utilities
