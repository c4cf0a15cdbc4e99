/// @file
/// Certificates of the test's own, made anew in each run.
#pragma once

#include "tests/http/live/shell.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace Zelto::Testing {

/// Makes a certificate and its key: NAME.pem and NAME.key in a folder.
/// @param issuer      the name of one made before; empty: it signs itself
/// @param extensions  lines of OpenSSL's configuration
inline void MakeCertificate(const std::string& folder, const std::string& name, const std::string& issuer,
                            const std::string& extensions) {
  const std::string base = folder + "/" + name;
  const std::string authority = folder + "/" + issuer;
  std::ofstream(base + ".cnf")
      << "[req]\ndistinguished_name=name\nprompt=no\nx509_extensions=extensions\n[name]\nCN=Zelto " << name
      << "\n[extensions]\nsubjectKeyIdentifier=hash\n"
      << extensions;
  const Result made = Run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -config " +
                          base + ".cnf -keyout " + base + ".key -out " + base + ".pem" +
                          (issuer.empty() ? "" : " -CA " + authority + ".pem -CAkey " + authority + ".key"));
  if (made.status != 0) {
    throw std::runtime_error("openssl: " + made.text);
  }
}

}  // namespace Zelto::Testing
