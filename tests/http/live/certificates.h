/// @file
/// Certificates of the test's own, made anew in each run.
#pragma once

#include <filesystem>
#include <string>

namespace Zelto::Testing {

/// Makes certificates with their keys in a folder: NAME.pem and NAME.key.
class CertificateMaker {
 public:
  explicit CertificateMaker(std::filesystem::path folder);

  /// @param issuer  the name of an authority made before; empty: it signs itself
  void MakeAuthority(const std::string& name, const std::string& issuer = {});
  /// @param hosts  as in the extension, e.g. "DNS:localhost,IP:127.0.0.1"
  void MakeServer(const std::string& name, const std::string& issuer, const std::string& hosts);

  /// A certificate's text.
  std::string Pem(const std::string& name) const;

 private:
  void Make(const std::string& name, const std::string& issuer, const std::string& extensions);

  const std::filesystem::path folder_;
};

}  // namespace Zelto::Testing
