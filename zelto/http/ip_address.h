/// @file
/// Addresses of hosts as numbers. Not installed.
#pragma once

#include <zelto/export.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Zelto::Utilities {

/// An address in 16 bytes, network order; one of IPv4 stands in its mapped form (::ffff:a.b.c.d).
using IpAddress = std::array<std::uint8_t, 16>;

/// Reads "192.0.2.1": four decimal numbers of at most 255, without leading zeros.
ZELTO_API std::optional<IpAddress> ParseIpv4(std::string_view text) noexcept;

/// Reads "2001:db8::1", also "::ffff:192.0.2.1"; no brackets, no zone.
ZELTO_API std::optional<IpAddress> ParseIpv6(std::string_view text) noexcept;

/// Reads either.
ZELTO_API std::optional<IpAddress> ParseIpAddress(std::string_view text) noexcept;

/// Whether an address lies in "192.0.2.0/24" or "fd00::/8", or is the one address that stands there. Not when the
/// network cannot be read.
ZELTO_API bool IsInNetwork(const IpAddress& address, std::string_view network) noexcept;

}  // namespace Zelto::Utilities
