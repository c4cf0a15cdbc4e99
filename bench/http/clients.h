/// @file
/// The library's HTTP client and bare libcurl, doing the same.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// One session that gets an address again and again, over one connection.
class Client {
 public:
  virtual ~Client() = default;
  /// Gets an address and drops the body. @return the number of its bytes, or of its characters where it becomes text
  virtual std::size_t Get(const std::string& url) = 0;
};

/// The library: the body goes to a receive callback, or becomes wide text.
std::unique_ptr<Client> MakeZeltoClient(bool to_text);
/// libcurl with the options that the library sets, all of them anew for each request.
std::unique_ptr<Client> MakeBareClient();
