#include "zelto/text/exceptions/system_error_category.h"

#include "zelto/platform/errors.h"
#include "zelto/text/never_destroyed.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace Zelto::Utilities {
namespace {

struct Description {
  Platform::ErrorCode code;
  const char* text;
  std::errc condition;  // kNone: no generic counterpart
};

constexpr std::errc kNone{};

// Sorted by code. Texts are ASCII, without a full stop, as they stand in the middle of longer messages.
constexpr Description kDescriptions[] = {
    {0, "The operation completed successfully", kNone},
    {1, "Incorrect function", std::errc::function_not_supported},
    {2, "The system cannot find the file specified", std::errc::no_such_file_or_directory},
    {3, "The system cannot find the path specified", std::errc::no_such_file_or_directory},
    {4, "The system cannot open the file", std::errc::too_many_files_open},
    {5, "Access is denied", std::errc::permission_denied},
    {6, "The handle is invalid", std::errc::bad_file_descriptor},
    {8, "Not enough memory resources are available to process this command", std::errc::not_enough_memory},
    {12, "The access code is invalid", std::errc::permission_denied},
    {13, "The data is invalid", kNone},
    {14, "Not enough memory resources are available to complete this operation", std::errc::not_enough_memory},
    {15, "The system cannot find the drive specified", std::errc::no_such_device},
    {16, "The directory cannot be removed", std::errc::permission_denied},
    {17, "The system cannot move the file to a different disk drive", std::errc::cross_device_link},
    {18, "There are no more files", kNone},
    {19, "The media is write protected", std::errc::permission_denied},
    {20, "The system cannot find the device specified", std::errc::no_such_device},
    {21, "The device is not ready", std::errc::resource_unavailable_try_again},
    {24, "The program issued a command but the command length is incorrect", kNone},
    {25, "The drive cannot locate a specific area or track on the disk", std::errc::io_error},
    {29, "The system cannot write to the specified device", std::errc::io_error},
    {30, "The system cannot read from the specified device", std::errc::io_error},
    {31, "A device attached to the system is not functioning", kNone},
    {32, "The file is being used by another process", std::errc::device_or_resource_busy},
    {33, "Another process has locked a portion of the file", std::errc::no_lock_available},
    {36, "Too many files opened for sharing", std::errc::too_many_files_open},
    {38, "Reached the end of the file", kNone},
    {39, "The disk is full", std::errc::no_space_on_device},
    {50, "The request is not supported", std::errc::not_supported},
    {53, "The network path was not found", std::errc::no_such_file_or_directory},
    {55, "The specified network resource or device is no longer available", std::errc::no_such_device},
    {64, "The specified network name is no longer available", std::errc::connection_reset},
    {65, "Network access is denied", std::errc::permission_denied},
    {67, "The network name cannot be found", std::errc::no_such_file_or_directory},
    {80, "The file exists", std::errc::file_exists},
    {82, "The directory or file cannot be created", std::errc::permission_denied},
    {87, "The parameter is incorrect", std::errc::invalid_argument},
    {89, "The system cannot start another process at this time", std::errc::resource_unavailable_try_again},
    {108, "The disk is in use or locked by another process", std::errc::device_or_resource_busy},
    {109, "The pipe has been ended", std::errc::broken_pipe},
    {110, "The system cannot open the device or file specified", std::errc::io_error},
    {111, "The file name is too long", std::errc::filename_too_long},
    {112, "There is not enough space on the disk", std::errc::no_space_on_device},
    {120, "This function is not supported on this system", std::errc::function_not_supported},
    {121, "The semaphore timeout period has expired", std::errc::timed_out},
    {122, "The data area passed to a system call is too small", kNone},
    {123, "The filename, directory name, or volume label syntax is incorrect", std::errc::no_such_file_or_directory},
    {126, "The specified module could not be found", kNone},
    {127, "The specified procedure could not be found", kNone},
    {130, "The file handle is of a kind that does not allow this operation", std::errc::invalid_argument},
    {131, "The file pointer cannot be moved before the beginning of the file", std::errc::invalid_argument},
    {132, "The file pointer cannot be set on the specified device or file", std::errc::io_error},
    {145, "The directory is not empty", std::errc::directory_not_empty},
    {158, "The segment is already unlocked", std::errc::no_lock_available},
    {161, "The specified path is invalid", std::errc::no_such_file_or_directory},
    {164, "No more threads can be created in the system", std::errc::resource_unavailable_try_again},
    {167, "Unable to lock a region of a file", std::errc::no_lock_available},
    {170, "The requested resource is in use", std::errc::device_or_resource_busy},
    {183, "Cannot create a file when that file already exists", std::errc::file_exists},
    {186, "The flag passed is not correct", std::errc::invalid_argument},
    {191, "The module does not have a valid signature", kNone},
    {193, "The file is not a valid program of this system", std::errc::executable_format_error},
    {206, "The filename or extension is too long", std::errc::filename_too_long},
    {223, "The file size exceeds the limit allowed", std::errc::file_too_large},
    {230, "The pipe state is invalid", kNone},
    {231, "All pipe instances are busy", std::errc::device_or_resource_busy},
    {232, "The pipe is being closed", std::errc::broken_pipe},
    {233, "No process is on the other end of the pipe", std::errc::broken_pipe},
    {234, "More data is available", kNone},
    {258, "The wait operation timed out", std::errc::timed_out},
    {259, "No more data is available", kNone},
    {267, "The directory name is invalid", std::errc::not_a_directory},
    {288, "The caller does not own the mutex", std::errc::operation_not_permitted},
    {487, "Attempt to access an invalid address", std::errc::bad_address},
    {535, "There is a process on the other end of the pipe", kNone},
    {536, "Waiting for a process to open the other end of the pipe", kNone},
    {995, "The operation was aborted by the thread's exit or by request", std::errc::operation_canceled},
    {996, "The event of the overlapped operation is not signaled", std::errc::operation_in_progress},
    {997, "The overlapped operation is in progress", std::errc::operation_in_progress},
    {998, "Invalid access to memory location", std::errc::bad_address},
    {1004, "Invalid flags", std::errc::invalid_argument},
    {1006, "The opened file is no longer valid because its volume was altered", std::errc::io_error},
    {1113, "The character does not exist in the target code page", std::errc::illegal_byte_sequence},
    {1117, "The request could not be performed because of an I/O device error", std::errc::io_error},
    {1168, "Element not found", kNone},
    {1223, "The operation was canceled by the user", std::errc::operation_canceled},
    {1225, "The remote system refused the connection", std::errc::connection_refused},
    {1235, "The request was aborted", std::errc::connection_aborted},
    {1236, "The connection was aborted by the local system", std::errc::connection_aborted},
    {1237, "The operation could not be completed and should be retried", std::errc::resource_unavailable_try_again},
    {1314, "The client does not hold a required privilege", std::errc::operation_not_permitted},
    {1326, "The user name or password is incorrect", std::errc::permission_denied},
    {1392, "The file or directory is corrupted and unreadable", std::errc::io_error},
    {1450, "Insufficient system resources exist to complete the request", std::errc::not_enough_memory},
    {1455, "The paging file is too small for this operation to complete", std::errc::not_enough_memory},
    {1460, "The time allotted to the operation expired", std::errc::timed_out},
    {1627, "The function failed during execution", kNone},
    {1920, "The file cannot be accessed by the system", std::errc::permission_denied},
    {2404, "The device is in use by an active process", std::errc::device_or_resource_busy},
    {4390, "The file or directory is not a reparse point", std::errc::invalid_argument},
    {12005, "The URL is invalid", std::errc::invalid_argument},
    {12006, "The URL does not use a recognized protocol", std::errc::protocol_not_supported},
};

static_assert(std::is_sorted(std::begin(kDescriptions), std::end(kDescriptions),
                             [](const Description& a, const Description& b) { return a.code < b.code; }));

const Description* Find(int value) noexcept {
  const auto code = static_cast<Platform::ErrorCode>(value);
  const auto* found =
      std::lower_bound(std::begin(kDescriptions), std::end(kDescriptions), code,
                       [](const Description& entry, Platform::ErrorCode wanted) { return entry.code < wanted; });
  return found != std::end(kDescriptions) && found->code == code ? found : nullptr;
}

class Win32Category final : public std::error_category {
 public:
  const char* name() const noexcept override { return "system"; }

  std::string message(int value) const override {
    const Description* entry = Find(value);
    return entry != nullptr ? entry->text : "unknown error";
  }

  std::error_condition default_error_condition(int value) const noexcept override {
    if (value == 0) {
      return {};
    }
    const Description* entry = Find(value);
    if (entry == nullptr || entry->condition == kNone) {
      return {value, *this};
    }
    return std::make_error_condition(entry->condition);
  }
};

constinit const NeverDestroyed<Win32Category> kCategory;

}  // namespace

const std::error_category& SystemErrorCategory() noexcept {
  return kCategory.value;
}

}  // namespace Zelto::Utilities
