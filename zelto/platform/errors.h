/// @file
/// Error codes of the operating system: Win32 codes on both targets.
#pragma once

#include <zelto/export.h>

#include <cstdint>

namespace Zelto::Platform {

/// A Win32 error code; 0 is success. Where a function of this room returns one, nothing is thrown for the failure.
using ErrorCode = std::uint32_t;

inline constexpr ErrorCode kSuccess = 0;
inline constexpr ErrorCode kFileNotFound = 2;            // ERROR_FILE_NOT_FOUND
inline constexpr ErrorCode kPathNotFound = 3;            // ERROR_PATH_NOT_FOUND
inline constexpr ErrorCode kTooManyOpenFiles = 4;        // ERROR_TOO_MANY_OPEN_FILES
inline constexpr ErrorCode kAccessDenied = 5;            // ERROR_ACCESS_DENIED
inline constexpr ErrorCode kInvalidHandle = 6;           // ERROR_INVALID_HANDLE
inline constexpr ErrorCode kNotEnoughMemory = 8;         // ERROR_NOT_ENOUGH_MEMORY
inline constexpr ErrorCode kInvalidData = 13;            // ERROR_INVALID_DATA
inline constexpr ErrorCode kSharingViolation = 32;       // ERROR_SHARING_VIOLATION
inline constexpr ErrorCode kNotSupported = 50;           // ERROR_NOT_SUPPORTED
inline constexpr ErrorCode kInvalidParameter = 87;       // ERROR_INVALID_PARAMETER
inline constexpr ErrorCode kBrokenPipe = 109;            // ERROR_BROKEN_PIPE
inline constexpr ErrorCode kDiskFull = 112;              // ERROR_DISK_FULL
inline constexpr ErrorCode kInvalidName = 123;           // ERROR_INVALID_NAME
inline constexpr ErrorCode kModuleNotFound = 126;        // ERROR_MOD_NOT_FOUND
inline constexpr ErrorCode kProcedureNotFound = 127;     // ERROR_PROC_NOT_FOUND
inline constexpr ErrorCode kAlreadyExists = 183;         // ERROR_ALREADY_EXISTS
inline constexpr ErrorCode kInvalidExeSignature = 191;   // ERROR_INVALID_EXE_SIGNATURE
inline constexpr ErrorCode kBadExeFormat = 193;          // ERROR_BAD_EXE_FORMAT
inline constexpr ErrorCode kPipeBusy = 231;              // ERROR_PIPE_BUSY
inline constexpr ErrorCode kNoData = 232;                // ERROR_NO_DATA: the pipe's other end is closing
inline constexpr ErrorCode kPipeNotConnected = 233;      // ERROR_PIPE_NOT_CONNECTED
inline constexpr ErrorCode kMoreData = 234;              // ERROR_MORE_DATA
inline constexpr ErrorCode kPipeConnected = 535;         // ERROR_PIPE_CONNECTED
inline constexpr ErrorCode kPipeListening = 536;         // ERROR_PIPE_LISTENING: an instance without a client
inline constexpr ErrorCode kOperationAborted = 995;      // ERROR_OPERATION_ABORTED
inline constexpr ErrorCode kIoIncomplete = 996;          // ERROR_IO_INCOMPLETE
inline constexpr ErrorCode kIoPending = 997;             // ERROR_IO_PENDING
inline constexpr ErrorCode kNotFound = 1168;             // ERROR_NOT_FOUND
inline constexpr ErrorCode kTimeout = 1460;              // ERROR_TIMEOUT
inline constexpr ErrorCode kCantAccessFile = 1920;       // ERROR_CANT_ACCESS_FILE: not a file of the ordinary kind
inline constexpr ErrorCode kInvalidUrl = 12005;          // ERROR_WINHTTP_INVALID_URL
inline constexpr ErrorCode kUnrecognizedScheme = 12006;  // ERROR_WINHTTP_UNRECOGNIZED_SCHEME

/// The calling thread's last system error, as a Win32 code.
///
/// Windows: `GetLastError`. Linux: `errno`, translated; a code that `SetLastErrorCode` put there comes back as it was,
/// until the next failing call of the C library replaces it. An `errno` without a counterpart gives 31
/// (ERROR_GEN_FAILURE).
ZELTO_API ErrorCode GetLastErrorCode() noexcept;

/// Sets what `GetLastErrorCode` returns next on this thread. Windows: `SetLastError`. Linux: `errno` holds it.
ZELTO_API void SetLastErrorCode(ErrorCode code) noexcept;

}  // namespace Zelto::Platform
