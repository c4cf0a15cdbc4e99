#include "zelto/platform/handle_state.h"

#include <windows.h>

namespace Zelto::Platform {
namespace {

class WindowsHandle final : public HandleState {
 public:
  explicit WindowsHandle(HANDLE handle) noexcept : handle_(handle) {}
  ~WindowsHandle() override { ::CloseHandle(handle_); }
  void* Native() const noexcept override { return handle_; }

 private:
  HANDLE handle_;
};

}  // namespace

std::shared_ptr<HandleState> AdoptHandle(void* handle) {
  try {
    return std::make_shared<WindowsHandle>(handle);
  } catch (...) {
    ::CloseHandle(handle);
    throw;
  }
}

}  // namespace Zelto::Platform
