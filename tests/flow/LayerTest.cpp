// The flow charts stand on the foundation and the scene interface alone, so
// that a player built without the editor reads and evaluates the script.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> sourcesOf(const std::string& folder) {
  std::vector<std::string> files;
  if (DIR* d = opendir(folder.c_str())) {
    while (dirent* e = readdir(d)) {
      const std::string name = e->d_name;
      if (name.size() > 2 && (name.substr(name.size() - 2) == ".h" || name.substr(name.size() - 4) == ".cpp"))
        files.push_back(folder + "/" + name);
    }
    closedir(d);
  }
  return files;
}

TEST(FlowLayer, IncludesOnlyFoundationTheSceneInterfaceAndItself) {
  const std::vector<std::string> files = sourcesOf(std::string(OSTRAVINE_SOURCE_DIR) + "/flow");
  ASSERT_GE(files.size(), 6u);
  for (const std::string& file : files) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
      if (line.rfind("#include \"", 0) != 0) continue;
      const std::string target = line.substr(10, line.find('"', 10) - 10);
      const bool allowed =
          target.rfind("flow/", 0) == 0 || target.rfind("foundation/", 0) == 0 || target == "scenes/Scene.h";
      EXPECT_TRUE(allowed) << file << ": " << line;
    }
  }
}

}  // namespace
