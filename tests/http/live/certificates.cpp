#include "tests/http/live/certificates.h"

#include "tests/http/live/program.h"

#include <fstream>
#include <iterator>
#include <vector>

namespace Zelto::Testing {

CertificateMaker::CertificateMaker(std::filesystem::path folder) : folder_(std::move(folder)) {}

void CertificateMaker::MakeAuthority(const std::string& name, const std::string& issuer) {
  Make(name, issuer, "basicConstraints=critical,CA:true\nkeyUsage=critical,keyCertSign,cRLSign\n");
}

void CertificateMaker::MakeServer(const std::string& name, const std::string& issuer, const std::string& hosts) {
  Make(name, issuer, "basicConstraints=critical,CA:false\nsubjectAltName=" + hosts + "\n");
}

std::string CertificateMaker::Pem(const std::string& name) const {
  std::ifstream file(folder_ / (name + ".pem"), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

void CertificateMaker::Make(const std::string& name, const std::string& issuer, const std::string& extensions) {
  const std::string base = folder_ / name;
  std::ofstream(base + ".cnf")
      << "[req]\ndistinguished_name=name\nprompt=no\nx509_extensions=extensions\n[name]\nCN=Zelto " << name
      << "\n[extensions]\nsubjectKeyIdentifier=hash\n"
      << extensions;
  std::vector<std::string> command{
      "openssl", "req",        "-x509", "-newkey", "ec",          "-pkeyopt", "ec_paramgen_curve:P-256",
      "-nodes",  "-days",      "2",     "-config", base + ".cnf", "-keyout",  base + ".key",
      "-out",    base + ".pem"};
  if (!issuer.empty()) {
    const std::string authority = folder_ / issuer;
    command.insert(command.end(), {"-CA", authority + ".pem", "-CAkey", authority + ".key"});
  }
  Run(command);
}

}  // namespace Zelto::Testing
