/// @file
/// How threads of this library tell the diagnostics sink what went wrong. Not installed.
#pragma once

#include <cstdint>
#include <exception>
#include <string_view>

namespace Zelto::Utilities {

/// Tells the diagnostics sink `what` happened. Lets nothing out.
void ReportFailure(std::wstring_view what) noexcept;

/// The same with ": " and the exception's text behind it.
void ReportFailure(std::wstring_view what, const std::exception& error) noexcept;

/// The same with the text of a `Win32Exception` that is made of `message` and `code`.
void ReportFailure(std::wstring_view what, const char* message, std::uint32_t code) noexcept;

/// The same with the text of the exception that is being handled. Only inside a `catch`.
void ReportCurrentException(std::wstring_view what) noexcept;

}  // namespace Zelto::Utilities
