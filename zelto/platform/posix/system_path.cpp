#include "zelto/platform/posix/system_path.h"

#include <cstddef>
#include <cstdint>
#include <exception>

namespace Zelto::Platform {
namespace {

void AppendTail(std::string& text, std::uint32_t code_point, int shift) {
  for (; shift >= 0; shift -= 6) {
    text += static_cast<char>(0x80 | ((code_point >> shift) & 0x3F));
  }
}

void AppendCodePoint(std::string& text, std::uint32_t code_point) {
  if (code_point < 0x80) {
    text += static_cast<char>(code_point);
  } else if (code_point < 0x800) {
    text += static_cast<char>(0xC0 | (code_point >> 6));
    AppendTail(text, code_point, 0);
  } else if (code_point < 0x10000) {
    text += static_cast<char>(0xE0 | (code_point >> 12));
    AppendTail(text, code_point, 6);
  } else {
    text += static_cast<char>(0xF0 | (code_point >> 18));
    AppendTail(text, code_point, 12);
  }
}

}  // namespace

ErrorCode ToSystemPath(std::wstring_view path, std::string& result) noexcept {
  try {
    // Nearly every path is ASCII to its end: as many bytes as units.
    result.resize(path.size());
    std::size_t ascii = 0;
    for (; ascii < path.size() && path[ascii] > 0 && path[ascii] < 0x80; ++ascii) {
      result[ascii] = static_cast<char>(path[ascii]);
    }
    result.resize(ascii);
    for (std::size_t i = ascii; i < path.size(); ++i) {
      // NOLINTNEXTLINE(bugprone-signed-char-misuse): a whole unit, no byte
      auto code_point = static_cast<std::uint32_t>(path[i]);
      const bool high = (code_point & 0xFFFFFC00) == 0xD800;
      const auto next = high && i + 1 < path.size() ? static_cast<std::uint32_t>(path[i + 1]) : 0U;
      if ((next & 0xFFFFFC00) == 0xDC00) {
        code_point = 0x10000 + ((code_point & 0x3FF) << 10) + (next & 0x3FF);
        ++i;
      } else if (code_point == 0 || code_point > 0x10FFFF || (code_point & 0xFFFFF800) == 0xD800) {
        return kInvalidName;
      }
      AppendCodePoint(result, code_point);
    }
    return kSuccess;
  } catch (const std::exception&) {
    return kNotEnoughMemory;
  }
}

}  // namespace Zelto::Platform
