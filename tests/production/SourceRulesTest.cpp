// Rules over the source tree itself.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;

namespace {
std::vector<fs::path> sources() {
  std::vector<fs::path> files;
  for (const char* dir : {"core", "foundation", "flow", "editor", "texture", "geometry", "render", "scenes", "tools"}) {
    fs::path root = fs::path(OSTRAVINE_SOURCE_DIR) / dir;
    if (!fs::exists(root)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      const std::string ext = entry.path().extension().string();
      if (ext == ".cpp" || ext == ".h" || ext == ".c") files.push_back(entry.path());
    }
  }
  return files;
}
}  // namespace

// Scenes depend on the Microsoft runtime's sequence, which our own generator
// reproduces; the C library's rand would give other pictures.
TEST(SourceRules, NoCallOfTheCLibraryGenerator) {
  const std::regex call(R"((^|[^A-Za-z0-9_])(std::)?s?rand\s*\()");
  std::vector<fs::path> files = sources();
  ASSERT_GT(files.size(), 10u);
  for (const fs::path& file : files) {
    std::ifstream in(file);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
      ++number;
      const std::string code = line.substr(0, line.find("//"));
      EXPECT_FALSE(std::regex_search(code, call)) << file << ":" << number << ": " << line;
    }
  }
}
