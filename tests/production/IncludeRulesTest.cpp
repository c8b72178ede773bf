// The layers of the source tree, held by its includes: a file may include
// only headers of its own layer and of the layers below it.
//
//   foundation                  no OpenGL, no SDL
//   texture, geometry           over foundation (geometry without OpenGL too)
//   render                      over texture and geometry
//   scene interface             scenes/Scene.h: Scene and Parameter, over foundation
//   flow                        over foundation and the scene interface only
//   demo                        the engine object in core/ (OSTRAVINE_DEMO_SOURCES), over render
//   scenes                      over the demo
//   core                        the rest of core/, over the scenes and flow
//   editor                      over everything but core; only the entry calls it
//   entry                       core/Entry.*, core/main.cpp: the top
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

enum class Layer {
  foundation,
  texture,
  geometry,
  render,
  sceneInterface,
  flow,
  demo,
  scenes,
  core,
  editor,
  entry,
  none
};

const char* nameOf(Layer layer) {
  switch (layer) {
    case Layer::foundation: return "foundation";
    case Layer::texture: return "texture";
    case Layer::geometry: return "geometry";
    case Layer::render: return "render";
    case Layer::sceneInterface: return "scene interface";
    case Layer::flow: return "flow";
    case Layer::demo: return "demo";
    case Layer::scenes: return "scenes";
    case Layer::core: return "core";
    case Layer::editor: return "editor";
    case Layer::entry: return "entry";
    default: return "none";
  }
}

// What each layer may include besides itself.
const std::map<Layer, std::set<Layer>> allowedBelow = {
    {Layer::foundation, {}},
    {Layer::texture, {Layer::foundation}},
    {Layer::geometry, {Layer::foundation}},
    {Layer::render, {Layer::foundation, Layer::texture, Layer::geometry}},
    {Layer::sceneInterface, {Layer::foundation}},
    {Layer::flow, {Layer::foundation, Layer::sceneInterface}},
    {Layer::demo, {Layer::foundation, Layer::texture, Layer::geometry, Layer::render, Layer::sceneInterface}},
    {Layer::scenes,
     {Layer::foundation, Layer::texture, Layer::geometry, Layer::render, Layer::sceneInterface, Layer::demo}},
    {Layer::core,
     {Layer::foundation, Layer::texture, Layer::geometry, Layer::render, Layer::sceneInterface, Layer::flow,
      Layer::demo, Layer::scenes}},
    {Layer::editor,
     {Layer::foundation, Layer::texture, Layer::geometry, Layer::render, Layer::sceneInterface, Layer::flow,
      Layer::demo, Layer::scenes}},
    {Layer::entry,
     {Layer::foundation, Layer::texture, Layer::geometry, Layer::render, Layer::sceneInterface, Layer::flow,
      Layer::demo, Layer::scenes, Layer::core, Layer::editor}},
};

// The stems of the engine object's sources ("core/Demo" for core/Demo.cpp),
// from the build's own list; a header belongs with its source of the same stem.
std::set<std::string> demoStems() {
  std::set<std::string> stems;
  std::stringstream list(OSTRAVINE_DEMO_SOURCES);
  std::string item;
  while (std::getline(list, item, ',')) stems.insert(item.substr(0, item.rfind('.')));
  return stems;
}

// The layer of a path relative to the source root ("render/World.h").
Layer layerOf(const std::string& path) {
  static const std::set<std::string> demo = demoStems();
  const std::string folder = path.substr(0, path.find('/'));
  const std::string stem = path.substr(0, path.rfind('.'));
  if (folder == "foundation") return Layer::foundation;
  if (folder == "texture") return Layer::texture;
  if (folder == "geometry") return Layer::geometry;
  if (folder == "render") return Layer::render;
  if (folder == "flow") return Layer::flow;
  if (folder == "editor") return Layer::editor;
  if (folder == "scenes") return stem == "scenes/Scene" ? Layer::sceneInterface : Layer::scenes;
  if (folder == "core") {
    if (stem == "core/Entry" || stem == "core/main") return Layer::entry;
    return demo.count(stem) ? Layer::demo : Layer::core;
  }
  return Layer::none;
}

struct Include {
  std::string file;  // relative to the source root
  int line;
  std::string target;  // as written between the quotes or brackets
  bool system;         // <...>
};

std::string pathInTree(const fs::path& file) { return fs::relative(file, OSTRAVINE_SOURCE_DIR).generic_string(); }

std::vector<fs::path> sourcesIn(const std::vector<std::string>& folders) {
  std::vector<fs::path> files;
  for (const std::string& folder : folders) {
    const fs::path root = fs::path(OSTRAVINE_SOURCE_DIR) / folder;
    if (!fs::exists(root)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      const std::string ext = entry.path().extension().string();
      if (ext == ".cpp" || ext == ".h") files.push_back(entry.path());
    }
  }
  return files;
}

const std::vector<std::string> engineFolders = {"foundation", "texture", "geometry", "render",
                                                "flow",       "scenes",  "core",     "editor"};

std::vector<Include> includesOf(const fs::path& file) {
  static const std::regex directive(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])");
  std::vector<Include> result;
  std::ifstream in(file);
  std::string text;
  int number = 0;
  while (std::getline(in, text)) {
    ++number;
    std::smatch m;
    if (std::regex_search(text, m, directive)) result.push_back({pathInTree(file), number, m[2], m[1] == "<"});
  }
  return result;
}

bool isGraphicsOrWindowHeader(const std::string& target) {
  return target.rfind("GL/", 0) == 0 || target.rfind("SDL/", 0) == 0 || target.rfind("SDL.h", 0) == 0 ||
         target.rfind("SDL_", 0) == 0 || target.rfind("OpenGL/", 0) == 0;
}

// Code of a line without its // comment (string contents are left in).
std::string codeOf(const std::string& line) { return line.substr(0, line.find("//")); }

}  // namespace

TEST(IncludeRules, EveryEngineFolderHasALayer) {
  const std::vector<fs::path> files = sourcesIn(engineFolders);
  ASSERT_GT(files.size(), 50u);
  for (const fs::path& file : files) EXPECT_NE(layerOf(pathInTree(file)), Layer::none) << file;
  // The build's list names real files of core/.
  for (const std::string& stem : demoStems())
    EXPECT_TRUE(fs::exists(fs::path(OSTRAVINE_SOURCE_DIR) / (stem + ".cpp"))) << stem;
}

// foundation/ is plain C++ that every layer and tool can use; geometry/ hands
// its arrays to the render layer, which owns the GL side.
TEST(IncludeRules, NoOpenGLOrSDLInFoundationAndGeometry) {
  const std::vector<fs::path> files = sourcesIn({"foundation", "geometry"});
  ASSERT_GT(files.size(), 10u);
  for (const fs::path& file : files)
    for (const Include& include : includesOf(file))
      EXPECT_FALSE(isGraphicsOrWindowHeader(include.target))
          << include.file << ":" << include.line << " includes " << include.target;
}

// The editor sits on top: a player without it needs nothing from it.
TEST(IncludeRules, OnlyTheEntryAndTheEditorIncludeTheEditor) {
  for (const fs::path& file : sourcesIn(engineFolders)) {
    const Layer from = layerOf(pathInTree(file));
    if (from == Layer::entry || from == Layer::editor) continue;
    for (const Include& include : includesOf(file))
      EXPECT_NE(include.target.rfind("editor/", 0), 0u)
          << include.file << ":" << include.line << " includes " << include.target;
  }
}

TEST(IncludeRules, LowerLayersNeverIncludeHigherOnes) {
  int checked = 0;
  for (const fs::path& file : sourcesIn(engineFolders)) {
    const Layer from = layerOf(pathInTree(file));
    const std::set<Layer>& allowed = allowedBelow.at(from);
    for (const Include& include : includesOf(file)) {
      if (include.system) continue;
      const Layer to = layerOf(include.target);
      if (to == Layer::none) continue;  // test support and the like
      ++checked;
      EXPECT_TRUE(to == from || allowed.count(to)) << include.file << ":" << include.line << " (" << nameOf(from)
                                                   << ") includes " << include.target << " (" << nameOf(to) << ")";
    }
  }
  EXPECT_GT(checked, 100);
}

// The rule itself: a made-up include upwards is caught, one downwards passes.
TEST(IncludeRules, TheLayerTableRefusesUpwardIncludes) {
  EXPECT_EQ(layerOf("scenes/Scene.h"), Layer::sceneInterface);
  EXPECT_EQ(layerOf("scenes/ScenePerforme.cpp"), Layer::scenes);
  EXPECT_EQ(layerOf("core/Demo.h"), Layer::demo);
  EXPECT_EQ(layerOf("core/OstravineDemo.h"), Layer::core);
  EXPECT_EQ(layerOf("core/Entry.cpp"), Layer::entry);
  EXPECT_FALSE(allowedBelow.at(Layer::render).count(Layer::scenes));
  EXPECT_FALSE(allowedBelow.at(Layer::flow).count(Layer::demo));
  EXPECT_FALSE(allowedBelow.at(Layer::scenes).count(Layer::core));
  EXPECT_FALSE(allowedBelow.at(Layer::core).count(Layer::editor));
  EXPECT_TRUE(allowedBelow.at(Layer::scenes).count(Layer::demo));
  // No two layers may include each other, and no layer lists itself.
  for (const auto& [layer, below] : allowedBelow) {
    EXPECT_FALSE(below.count(layer)) << nameOf(layer);
    for (Layer other : below) EXPECT_FALSE(allowedBelow.at(other).count(layer)) << nameOf(layer) << nameOf(other);
  }
}

// Scenes are built for the Demo passed to them and reach the engine through
// it, never through the process-wide theDemo.
TEST(IncludeRules, ScenesDoNotUseTheGlobalDemo) {
  const std::regex global(R"((^|[^A-Za-z0-9_])theDemo([^A-Za-z0-9_]|$))");
  const std::vector<fs::path> files = sourcesIn({"scenes"});
  ASSERT_GT(files.size(), 3u);
  for (const fs::path& file : files) {
    std::ifstream in(file);
    std::string line;
    int number = 0;
    while (std::getline(in, line)) {
      ++number;
      EXPECT_FALSE(std::regex_search(codeOf(line), global)) << pathInTree(file) << ":" << number << ": " << line;
    }
  }
}
