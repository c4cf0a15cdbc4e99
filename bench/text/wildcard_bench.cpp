// Wildcard patterns beside the standard regex with the same expression.
#include "bench/support/interleaved.h"
#include "zelto/text/wildcard_pattern.h"

#include <cstdlib>
#include <regex>
#include <string>

namespace Zelto::Bench {
namespace {

using Utilities::WildcardPattern;

class Conversion : public WildcardPattern {
 public:
  using WildcardPattern::ToRegexString;
};

void Run(const char* name, const std::wstring& pattern, const std::wstring& text) {
  const WildcardPattern compiled(pattern);
  const std::wregex regex(Conversion::ToRegexString(pattern), std::regex_constants::icase);
  if (compiled.Match(text) != std::regex_match(text, regex)) {
    std::fprintf(stderr, "The matchers disagree on %s\n", name);
    std::exit(EXIT_FAILURE);
  }
  Print(name, "std::wregex",
        CompareComputing([&] { Keep(compiled.Match(text)); }, [&] { Keep(std::regex_match(text, regex)); }));
}

void RunConstruction(const char* name, const std::wstring& pattern) {
  const std::wstring expression = Conversion::ToRegexString(pattern);
  Print(name, "std::wregex",
        CompareComputing([&] { Keep(WildcardPattern(pattern)); },
                         [&] { Keep(std::wregex(expression, std::regex_constants::icase)); }));
}

}  // namespace
}  // namespace Zelto::Bench

int main() {
  using Zelto::Bench::Run;
  using Zelto::Bench::RunConstruction;
  const std::wstring name = L"C:\\Windows\\System32\\drivers\\etc\\Services.TXT";
  RunConstruction("compile *.txt", L"*.txt");
  Run("*.txt", L"*.txt", name);
  Run("*.doc, no match", L"*.doc", name);
  Run("folder and file with stars, one unit open", L"*\\driv?rs\\*serv*.txt", name);
  Run("the name itself", name, name);
  // Longer texts overflow the stack of the standard regex.
  Run("*a*b*c*d*, 200 units, no match", L"*a*b*c*d*", std::wstring(100, L'a') + std::wstring(100, L'b'));
  Run("*z, 4000 units, no match", L"*z", std::wstring(4000, L'a'));
}
