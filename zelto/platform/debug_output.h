/// @file
/// The system's channel for debug texts.
#pragma once

#include <zelto/export.h>

#include <string>

namespace Zelto::Platform {

/// Sends one text to an attached debugger. Windows: `OutputDebugStringW`. Linux: does nothing.
ZELTO_API void WriteDebugText(const std::wstring& text) noexcept;

}  // namespace Zelto::Platform
