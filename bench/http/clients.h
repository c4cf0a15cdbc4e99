/// @file
/// The library's HTTP client and bare libcurl, doing the same.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// One session that gets its address again and again, over one connection.
class Client {
 public:
  virtual ~Client() = default;
  /// Gets the body and drops it. @return the number of its bytes, or of its characters where it becomes text
  virtual std::size_t Get() = 0;
};

/// The library: the body goes to a receive callback, or becomes wide text.
std::unique_ptr<Client> MakeZeltoClient(const std::string& url, bool to_text);
/// libcurl with the options that the library sets, all of them anew for each request and taken back after it.
std::unique_ptr<Client> MakeBareClient(const std::string& url, unsigned int port);
