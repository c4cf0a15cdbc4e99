// Gives every input of the corpus to its target, and what the corpus and the words of the dictionary make together.
#include "fuzz/fuzz_target.h"

#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace Zelto::Fuzz {
namespace {

constexpr int kMixed = 10000;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The words of a dictionary: one a line, in quotes, some of their bytes as "\xHH".
std::vector<std::string> ReadWords(const std::filesystem::path& path) {
  std::vector<std::string> words;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::string word;
    for (std::size_t i = line.find('"') + 1; i != 0 && i < line.rfind('"'); ++i) {
      const bool escaped = line[i] == '\\';
      word += escaped ? static_cast<char>(std::stoul(line.substr(i + 2, 2), nullptr, 16)) : line[i];
      i += escaped ? 3 : 0;
    }
    words.push_back(word);
  }
  return words;
}

class Replay : public testing::Test {
 public:
  explicit Replay(const Target::Entry& target) : target_(target) {}

  void TestBody() override {
    const std::filesystem::path fuzz = ZELTO_FUZZ_FOLDER;
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(fuzz / "corpus" / target_.name)) {
      files.insert(entry.path());
    }
    EXPECT_FALSE(files.empty());
    std::vector<std::string> inputs{""};
    for (const std::filesystem::path& file : files) {
      inputs.push_back(ReadFile(file));
      RunOn(inputs.back(), file.filename().string());
    }
    RunOn("", "nothing");

    const std::vector<std::string> words = ReadWords(fuzz / "dictionaries" / (std::string(target_.name) + ".dict"));
    std::mt19937 random(1);
    // A piece of another input, a word, a random byte, or nothing.
    const auto piece = [&]() -> std::string {
      const std::string& other = inputs[random() % inputs.size()];
      switch (random() % 6) {
        case 0:
          return other.substr(random() % (other.size() + 1), 20);
        case 1:
          return {static_cast<char>(random() % 256)};
        case 2:
          return "";
        default:
          return words[random() % words.size()];
      }
    };
    for (int i = 0; i < kMixed && !words.empty(); ++i) {
      std::string input = inputs[random() % inputs.size()];
      for (auto edits = random() % 6 + 1; edits > 0; --edits) {
        const std::string inserted = piece();
        const std::size_t at = random() % (input.size() + 1);
        input.replace(at, random() % 3, inserted);
      }
      RunOn(input, testing::PrintToString(input));
    }
  }

 private:
  void RunOn(const std::string& input, const std::string& name) const {
    SCOPED_TRACE(name);
    try {
      target_.run({reinterpret_cast<const std::uint8_t*>(input.data()), input.size()});
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
