/// @file
/// The bytes of a message on their way.
#pragma once

#include <zelto/export.h>
#include <zelto/pipes/named_pipe_message_encoding.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zelto::Utilities {

/// A transfer buffer for one message or one chunk of a message.
///
/// Its data ends with one zero code unit (one byte in UTF-8, two in UTF-16) that is never transferred. One object
/// belongs to one thread at a time.
class ZELTO_API AsyncIOBuffer {
 public:
  /// Holds a message for writing.
  ///
  /// @throws std::range_error  "bad conversion" on a unit above 0x10FFFF and, in UTF-8, on a lone surrogate
  AsyncIOBuffer(NamedPipeMessageEncoding encoding, std::wstring_view message);

  /// Makes room, all zero, for reading `capacity` code units.
  AsyncIOBuffer(NamedPipeMessageEncoding encoding, std::size_t capacity);

  virtual ~AsyncIOBuffer() = default;
  AsyncIOBuffer(const AsyncIOBuffer&) = default;
  AsyncIOBuffer(AsyncIOBuffer&&) noexcept = default;
  AsyncIOBuffer& operator=(const AsyncIOBuffer&) = default;
  AsyncIOBuffer& operator=(AsyncIOBuffer&&) noexcept = default;

  /// Sets every byte to zero.
  void Clear() noexcept;

  NamedPipeMessageEncoding Encoding() const noexcept { return encoding_; }

  std::uint8_t* TransferData() noexcept { return reinterpret_cast<std::uint8_t*>(data_.data()); }
  const std::uint8_t* TransferData() const noexcept { return reinterpret_cast<const std::uint8_t*>(data_.data()); }

  /// The bytes to transfer: all but the last code unit.
  std::size_t TransferSize() const noexcept;

  /// The contents up to the first zero code unit, as text.
  ///
  /// @throws std::range_error  "bad conversion" on malformed UTF-8
  std::wstring Text() const { return Text(TransferSize()); }

  /// The same of the first `size` bytes alone, as many as a read brought: whatever stands behind them counts as zero.
  ///
  /// @param size  at most `TransferSize`
  std::wstring Text(std::size_t size) const;

 private:
  std::string data_;  // the bytes, and in UTF-16 one zero byte more
  NamedPipeMessageEncoding encoding_;
};

}  // namespace Zelto::Utilities
