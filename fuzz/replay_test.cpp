// Gives every input of the corpus to its target.
#include "fuzz/fuzz_target.h"

#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Zelto::Fuzz {
namespace {

class Replay : public testing::Test {
 public:
  explicit Replay(const Target::Entry& target) : target_(target) {}

  void TestBody() override {
    const std::filesystem::path folder = std::filesystem::path(ZELTO_FUZZ_CORPUS) / target_.name;
    int inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      SCOPED_TRACE(entry.path().filename().string());
      std::ifstream file(entry.path(), std::ios::binary);
      const std::string bytes(std::istreambuf_iterator<char>(file), {});
      RunOn({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
      ++inputs;
    }
    EXPECT_GT(inputs, 0) << "no inputs in " << folder;
    RunOn({});
  }

 private:
  void RunOn(Bytes bytes) const {
    try {
      target_.run(bytes);
    } catch (const Finding& finding) {
      ADD_FAILURE() << finding.what;
    } catch (const std::exception& error) {
      ADD_FAILURE() << "thrown: " << error.what();
    }
  }

  Target::Entry target_;
};

}  // namespace
}  // namespace Zelto::Fuzz

int main(int count, char** arguments) {
  testing::InitGoogleTest(&count, arguments);
  for (const Zelto::Fuzz::Target::Entry& target : Zelto::Fuzz::Target::All()) {
    testing::RegisterTest("Corpus", target.name, nullptr, nullptr, __FILE__, __LINE__,
                          [target]() -> testing::Test* { return new Zelto::Fuzz::Replay(target); });
  }
  return RUN_ALL_TESTS();
}
