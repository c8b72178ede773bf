// The AC3D converter: the reader on files as modelling programs write them,
// the dropped and skipped cases, damaged input, the source dump, the binary
// form and the command line.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "geometry/A3dFile.h"
#include "geometry/Ac3dConverter.h"
#include "support/RunProgram.h"

namespace {

std::string tempPath(const std::string &name) {
  const auto dir = std::filesystem::temp_directory_path() / "ostravine_ac3d_test";
  std::filesystem::create_directories(dir);
  return (dir / name).string();
}

std::string writeText(const std::string &name, const std::string &text) {
  const std::string path = tempPath(name);
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
  return path;
}

std::string readText(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

struct Parsed {
  int result;
  Ac3dObject object;
  std::string messages;
};

Parsed parse(const std::string &text) {
  Parsed p;
  std::ostringstream messages;
  p.result = parseAc3d(text, "test.ac", p.object, messages);
  p.messages = messages.str();
  return p;
}

// One quad and one triangle over five vertices.
const char *simpleObject =
    "OBJECT poly\n"
    "name \"simple\"\n"
    "loc 1 2 3\n"
    "crease 30.000000\n"
    "numvert 5\n"
    "0 0 0\n"
    "1 0 0\n"
    "1 1 0\n"
    "0 1 0\n"
    "0.5 2 0\n"
    "numsurf 2\n"
    "SURF 0x10\n"
    "mat 0\n"
    "refs 4\n"
    "0 0 1\n"
    "1 1 1\n"
    "2 1 0\n"
    "3 0 0\n"
    "SURF 0x0\n"
    "mat 1\n"
    "refs 3\n"
    "3 0.25 0.75\n"
    "2 0.5 0.5\n"
    "4 0.5 0\n"
    "kids 0\n";

std::string simpleFile() { return std::string("AC3Db\n") + simpleObject; }

// A file as a modeller writes it: materials, a group with data, texture
// and transform lines, kids, a line surface, CRLF line ends, a decimal and
// an upper-case hexadecimal SURF, three-digit exponents.
std::string modellerFile() {
  std::string text =
      "AC3Db\n"
      "MATERIAL \"red\" rgb 1 0 0  amb 0.2 0.2 0.2  emis 0 0 0  spec 0.5 0.5 0.5  shi 10  trans 0\n"
      "MATERIAL \"blue\" rgb 0 0 1  amb 0.2 0.2 0.2  emis 0 0 0  spec 0.5 0.5 0.5  shi 10  trans 0\n"
      "OBJECT world\n"
      "kids 2\n"
      "OBJECT group\n"
      "name \"group with loc\"\n"
      "data 18\n"
      "crease numvert kid\n"
      "loc 10 0 0\n"
      "kids 1\n"
      "OBJECT poly\n"
      "name \"tri\"\n"
      "data 9\n"
      "some\n"
      "data\n"
      "texture \"images/bark.png\"\n"
      "texrep 2 2\n"
      "texoff 0.5 0\n"
      "rot 0 -1 0 1 0 0 0 0 1\n"
      "loc 1.000000e+000 -2.500000E+000 0.000000e+000\n"
      "crease 4.500000e+001\n"
      "numvert 4\n"
      "0 0 0\n"
      "1.000000e+000 0 0\n"
      "1 1.0e+000 0\n"
      "0 1 1e-100\n"
      "numsurf 4\n"
      "SURF 0X10\n"
      "mat 1\n"
      "refs 3\n"
      "0 0 0\n"
      "1 1 0\n"
      "2 1 1\n"
      "SURF 0x31\n"
      "mat 0\n"
      "refs 3\n"
      "0 0 0\n"
      "1 0 0\n"
      "3 0 0\n"
      "SURF 2\n"
      "mat 0\n"
      "refs 2\n"
      "2 0 0\n"
      "3 0 0\n"
      "SURF 32\n"
      "mat 0\n"
      "refs 3\n"
      "0 0 0\n"
      "2 1 1\n"
      "3 0 1\n"
      "kids 0\n"
      "OBJECT poly\n"
      "name \"second\"\n"
      "crease 60\n"
      "numvert 3\n"
      "5 5 5\n6 5 5\n5 6 5\n"
      "numsurf 1\n"
      "SURF 0x0\nmat 0\nrefs 3\n0 0 0\n1 0 0\n2 0 0\n"
      "kids 0\n";
  std::string crlf;
  for (char c : text) {
    if (c == '\n') crlf += '\r';
    crlf += c;
  }
  return crlf;
}

}  // namespace

// --- reading ---------------------------------------------------------------------

TEST(Ac3dConverterTest, ReadsNameLocationCreaseAndVertices) {
  const Parsed p = parse(simpleFile());
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_EQ("simple", p.object.objectName);
  EXPECT_EQ(1.0f, p.object.location[0]);
  EXPECT_EQ(3.0f, p.object.location[2]);
  EXPECT_EQ(30.0f, p.object.creaseAngle);
  EXPECT_EQ(5, p.object.vertexCount());
  EXPECT_EQ(2.0f, p.object.vertices[4 * 3 + 1]);
}

TEST(Ac3dConverterTest, AQuadBecomesTwoTrianglesSharingR0AndR2) {
  const Parsed p = parse(simpleFile());
  ASSERT_EQ(ac3dOk, p.result);
  ASSERT_EQ(3, p.object.triangleCount());
  const std::vector<int> expected = {0, 1, 2, 0, 2, 3, 3, 2, 4};
  EXPECT_EQ(expected, p.object.triangleIndices);
  // The corners keep their texture coordinates.
  EXPECT_EQ(1.0f, p.object.cornerTexCoords[3 * 2 + 1]);  // second triangle, r0 = (0, 1)
  EXPECT_EQ(0.0f, p.object.cornerTexCoords[5 * 2 + 0]);  // its r3 = (0, 0)
  EXPECT_EQ((std::vector<int>{0, 0, 1}), p.object.triangleMaterials);
}

TEST(Ac3dConverterTest, TheLastCornerThatTouchesAVertexGivesItsTextureCoordinates) {
  const Parsed p = parse(simpleFile());
  ASSERT_EQ(ac3dOk, p.result);
  // Vertex 3: (0, 0) in the quad, then (0.25, 0.75) in the triangle.
  EXPECT_EQ(0.25f, p.object.verticeTextureCoords[3 * 2]);
  EXPECT_EQ(0.75f, p.object.verticeTextureCoords[3 * 2 + 1]);
  // Vertex 2: (1, 0) in the quad, then (0.5, 0.5).
  EXPECT_EQ(0.5f, p.object.verticeTextureCoords[2 * 2]);
  // Vertex 1 only in the quad.
  EXPECT_EQ(1.0f, p.object.verticeTextureCoords[1 * 2]);
}

TEST(Ac3dConverterTest, ASurfaceWithFiveReferencesIsDroppedAndTheCountStays) {
  std::string text = simpleFile();
  const std::string five = "SURF 0x0\nmat 0\nrefs 5\n0 0 0\n1 0 0\n2 0 0\n3 0 0\n4 0 0\n";
  text.replace(text.find("numsurf 2"), 9, "numsurf 3");
  text.insert(text.find("kids 0"), five);
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_EQ(3, p.object.triangleCount());
  EXPECT_NE(std::string::npos, p.messages.find("polygons without 3 or 4 corners dropped"));
}

TEST(Ac3dConverterTest, ALineWithObjectPolyAndNameIsNotTakenAsTheName) {
  std::string text = simpleFile();
  text.replace(text.find("OBJECT poly\n"), 12, "OBJECT poly name \"wrong\"\n");
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result);
  EXPECT_EQ("simple", p.object.objectName);
  // Without a name line the object stays unnamed rather than taking it.
  std::string unnamed = text;
  unnamed.erase(unnamed.find("name \"simple\"\n"), 14);
  const Parsed q = parse(unnamed);
  ASSERT_EQ(ac3dOk, q.result) << q.messages;
  EXPECT_EQ("", q.object.objectName);
}

TEST(Ac3dConverterTest, WithoutNumvertNothingIsConverted) {
  const Parsed p = parse("AC3Db\nOBJECT poly\nname \"empty\"\ncrease 30\nkids 0\n");
  EXPECT_EQ(ac3dNothingToConvert, p.result);
  EXPECT_NE(std::string::npos, p.messages.find("nothing written"));
}

TEST(Ac3dConverterTest, WithoutACreaseLineNothingIsConverted) {
  std::string text = simpleFile();
  text.erase(text.find("crease 30.000000\n"), 17);
  const Parsed p = parse(text);
  EXPECT_EQ(ac3dNothingToConvert, p.result);
}

TEST(Ac3dConverterTest, ReadsAModellersFileAndConvertsTheFirstUsableObject) {
  const Parsed p = parse(modellerFile());
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  // The group has no crease and no vertices; its data block mentions crease,
  // numvert and kid without effect. The first poly object is taken.
  EXPECT_EQ("tri", p.object.objectName);
  EXPECT_EQ(1.0f, p.object.location[0]);  // its own loc; the group's is not added
  EXPECT_EQ(-2.5f, p.object.location[1]);
  EXPECT_EQ(45.0f, p.object.creaseAngle);
  EXPECT_EQ(4, p.object.vertexCount());
  EXPECT_EQ(0.0f, p.object.vertices[3 * 3 + 2]);  // 1e-100 underflows to 0
  // 0X10 polygon, 0x31 closed line (dropped), 2 open line (dropped), 32 polygon.
  EXPECT_EQ((std::vector<int>{0, 1, 2, 0, 2, 3}), p.object.triangleIndices);
  EXPECT_EQ((std::vector<int>{1, 0}), p.object.triangleMaterials);
  EXPECT_NE(std::string::npos, p.messages.find("2 line surfaces dropped")) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("rot")) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("texture")) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("texrep")) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("only object \"tri\"")) << p.messages;
}

TEST(Ac3dConverterTest, SurfFlagsInEveryRadixAndCase) {
  for (const char *flags : {"0x30", "0X10", "0x0", "0", "48", "0x20"}) {
    std::string text = simpleFile();
    text.replace(text.find("SURF 0x10"), 9, std::string("SURF ") + flags);
    const Parsed p = parse(text);
    ASSERT_EQ(ac3dOk, p.result) << flags << p.messages;
    EXPECT_EQ(3, p.object.triangleCount()) << flags;
  }
  // Type 1 in any radix is a closed line.
  for (const char *flags : {"0x1", "0X21", "17"}) {
    std::string text = simpleFile();
    text.replace(text.find("SURF 0x10"), 9, std::string("SURF ") + flags);
    const Parsed p = parse(text);
    ASSERT_EQ(ac3dOk, p.result) << flags;
    EXPECT_EQ(1, p.object.triangleCount()) << flags;
  }
}

TEST(Ac3dConverterTest, UnknownTokensAreSkippedWithAMessage) {
  std::string text = simpleFile();
  text.insert(text.find("crease"), "shader \"glass\"\nsubdiv 2\nhidden\n");
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result);
  EXPECT_NE(std::string::npos, p.messages.find("unknown token 'shader'")) << p.messages;
  EXPECT_EQ(std::string::npos, p.messages.find("subdiv"));
}

TEST(Ac3dConverterTest, OldMacLineEndsAndBlankLinesAreAccepted) {
  std::string text = simpleFile();
  std::string cr;
  for (char c : text) cr += c == '\n' ? std::string("\r\r\n") : std::string(1, c);
  const Parsed p = parse(cr);
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_EQ(3, p.object.triangleCount());
}

// --- damaged input ------------------------------------------------------------------

class Ac3dDamaged : public ::testing::TestWithParam<std::pair<const char *, std::string>> {};

TEST_P(Ac3dDamaged, GivesAMessageAndNoObject) {
  const Parsed p = parse(GetParam().second);
  EXPECT_EQ(ac3dDamaged, p.result) << GetParam().first;
  EXPECT_NE(std::string::npos, p.messages.find("test.ac")) << p.messages;
  EXPECT_EQ(0, p.object.vertexCount());
}

namespace {

std::string replaced(const std::string &what, const std::string &with) {
  std::string text = simpleFile();
  text.replace(text.find(what), what.size(), with);
  return text;
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Cases, Ac3dDamaged,
    ::testing::Values(
        std::make_pair("not AC3D", std::string("hello\nOBJECT poly\n")),
        std::make_pair("empty", std::string()),
        std::make_pair("truncated in vertices", simpleFile().substr(0, simpleFile().find("1 1 0"))),
        std::make_pair("truncated in surfaces", simpleFile().substr(0, simpleFile().find("2 1 0"))),
        std::make_pair("truncated before kids", simpleFile().substr(0, simpleFile().find("kids 0"))),
        std::make_pair("numvert too large", replaced("numvert 5", "numvert 7")),
        std::make_pair("numsurf too large", replaced("numsurf 2", "numsurf 3")),
        std::make_pair("refs too large", replaced("refs 3", "refs 4")),
        std::make_pair("index out of range", replaced("4 0.5 0", "5 0.5 0")),
        std::make_pair("negative index", replaced("4 0.5 0", "-1 0.5 0")),
        std::make_pair("missing uv", replaced("4 0.5 0", "4")),
        std::make_pair("bad number", replaced("0.5 2 0", "0.5 two 0")),
        std::make_pair("huge number", replaced("0.5 2 0", "0.5 1e+400 0")),
        std::make_pair("bad SURF", replaced("SURF 0x0", "SURF 0xZZ")),
        std::make_pair("negative count", replaced("numvert 5", "numvert -5")),
        std::make_pair("kids missing children", replaced("kids 0", "kids 2")),
        std::make_pair("data past the end", replaced("kids 0", "data 100\nabc"))),
    [](const ::testing::TestParamInfo<std::pair<const char *, std::string>> &info) {
      std::string name;
      for (const char *c = info.param.first; *c; ++c) name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : '_';
      return name;
    });

TEST(Ac3dConverterTest, DeeplyNestedKidsAreRefusedRatherThanRecursingWithoutEnd) {
  std::string text = "AC3Db\n";
  for (int i = 0; i < 200; ++i) text += "OBJECT group\nkids 1\n";
  const Parsed p = parse(text);
  EXPECT_EQ(ac3dDamaged, p.result);
}

// --- counts the file cannot hold -----------------------------------------------------

namespace {

// The simple file with one line replaced; the damage is expected at `line`.
struct CountCase {
  const char *name;
  std::string text;
  int line;
};

std::string withCount(const std::string &what, const std::string &with) {
  std::string text = simpleFile();
  text.replace(text.find(what), what.size(), with);
  return text;
}

}  // namespace

class Ac3dImpossibleCount : public ::testing::TestWithParam<CountCase> {};

TEST_P(Ac3dImpossibleCount, IsDamageAtItsOwnLineBeforeAnythingIsReserved) {
  // Reserving for these counts would abort with an allocation error or grow
  // to gigabytes; they are refused at the count's line instead.
  const Parsed p = parse(GetParam().text);
  EXPECT_EQ(ac3dDamaged, p.result) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("test.ac:" + std::to_string(GetParam().line) + ": damaged"))
      << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("bytes left in the file")) << p.messages;
  EXPECT_EQ(0, p.object.vertexCount());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Ac3dImpossibleCount,
    ::testing::Values(
        CountCase{"numvert_billions", withCount("numvert 5", "numvert 4000000000"), 6},
        CountCase{"numvert_64bit", withCount("numvert 5", "numvert 9223372036854775807"), 6},
        CountCase{"numvert_hex", withCount("numvert 5", "numvert 0x7fffffffffffffff"), 6},
        CountCase{"numvert_just_too_many", withCount("numvert 5", "numvert 50"), 6},
        CountCase{"numsurf_billions", withCount("numsurf 2", "numsurf 3000000000"), 12},
        CountCase{"refs_billions", withCount("refs 4", "refs 2147483648"), 15},
        CountCase{"refs_64bit", withCount("refs 3", "refs 0x7FFFFFFFFFFFFFF0"), 22},
        CountCase{"kids_billions", withCount("kids 0", "kids 1000000000"), 26},
        CountCase{"data_longer_than_the_file", withCount("crease", "data 9000000000\ncrease"), 5}),
    [](const ::testing::TestParamInfo<CountCase> &info) { return std::string(info.param.name); });

TEST(Ac3dConverterTest, ACountIsRefusedOnlyWhenTheRestOfTheFileCannotHoldIt) {
  // Five vertices of the shortest form, the last without a line end, hold
  // 29 bytes: numvert 5 is possible (the file then ends inside the object),
  // numvert 6 is not.
  const std::string head = "AC3Db\nOBJECT poly\ncrease 1\n";
  const std::string five = "0 0 0\n0 0 0\n0 0 0\n0 0 0\n0 0 0";
  const Parsed possible = parse(head + "numvert 5\n" + five);
  EXPECT_EQ(ac3dDamaged, possible.result);
  EXPECT_NE(std::string::npos, possible.messages.find("ends inside the object")) << possible.messages;
  const Parsed impossible = parse(head + "numvert 6\n" + five);
  EXPECT_EQ(ac3dDamaged, impossible.result);
  EXPECT_NE(std::string::npos, impossible.messages.find("test.ac:4: damaged AC3D file: numvert 6: the 29 bytes "
                                                        "left in the file hold at most 5 vertices"))
      << impossible.messages;
}

// --- structural lines where the grammar does not allow them --------------------------------

namespace {

// A parent with the simple object as its one kid: line 3 is "kids 1", the
// kid's lines follow from line 4.
std::string parentFile() {
  return std::string("AC3Db\nOBJECT world\nkids 1\n") + simpleObject;
}

struct MisplacedCase {
  const char *name;
  std::string text;
  int line;             // where the damage is reported
  const char *message;  // part of it
};

}  // namespace

class Ac3dMisplacedLine : public ::testing::TestWithParam<MisplacedCase> {};

TEST_P(Ac3dMisplacedLine, IsDamageNamingTheLine) {
  const Parsed p = parse(GetParam().text);
  EXPECT_EQ(ac3dDamaged, p.result) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("test.ac:" + std::to_string(GetParam().line) + ": damaged"))
      << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find(GetParam().message)) << p.messages;
  EXPECT_EQ(0, p.object.triangleCount());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Ac3dMisplacedLine,
    ::testing::Values(
        // numsurf spelt wrong: its SURF line is met among the object's lines.
        MisplacedCase{"numsurf_misspelt", withCount("numsurf 2", "numsurg 2"), 13, "'SURF 0x10'"},
        // numvert spelt wrong: the first vertex line is a bare number line.
        MisplacedCase{"numvert_misspelt", withCount("numvert 5", "nunvert 5"), 7, "'0 0 0'"},
        // SURF spelt wrong inside the surface list.
        MisplacedCase{"surf_misspelt", withCount("SURF 0x0", "SUFR 0x0"), 20, "expected SURF"},
        // refs spelt wrong: its first reference is not a mat or refs line.
        MisplacedCase{"refs_misspelt", withCount("refs 3", "rafs 3"), 22, "expected mat or refs"},
        // The parent's kids line missing: the kid would become its body.
        MisplacedCase{"parent_kids_missing", [] {
                        std::string t = parentFile();
                        t.erase(t.find("kids 1\n"), 7);
                        return t;
                      }(), 3, "OBJECT line before the kids line of the object of line 2"},
        // The parent's kids line spelt wrong: the same, after a skipped token.
        MisplacedCase{"parent_kids_misspelt", [] {
                        std::string t = parentFile();
                        t.replace(t.find("kids 1\n"), 7, "kisd 1\n");
                        return t;
                      }(), 4, "OBJECT line before the kids line"},
        // A kid without its kids line followed by a sibling.
        MisplacedCase{"kid_kids_missing", [] {
                        std::string t = "AC3Db\nOBJECT world\nkids 2\n" + std::string(simpleObject) +
                                        simpleObject;
                        t.erase(t.find("kids 0\n"), 7);
                        return t;
                      }(), 28, "OBJECT line before the kids line of the object of line 4"},
        MisplacedCase{"material_inside_an_object", withCount("crease", "MATERIAL \"m\" rgb 1 1 1\ncrease"), 5,
                      "MATERIAL line"},
        MisplacedCase{"mat_outside_a_surface", withCount("crease", "mat 0\ncrease"), 5, "'mat 0'"},
        MisplacedCase{"second_numsurf", withCount("kids 0", "numsurf 0\nkids 0"), 26, "second numsurf"}),
    [](const ::testing::TestParamInfo<MisplacedCase> &info) { return std::string(info.param.name); });

TEST(Ac3dConverterTest, AFileCutInItsMaterialListIsTruncatedNotEmpty) {
  const std::string materials =
      "AC3Db\n"
      "MATERIAL \"white\" rgb 1 1 1  amb 0.2 0.2 0.2  emis 0 0 0  spec 0.5 0.5 0.5  shi 10  trans 0\n"
      "MATERIAL \"red\" rgb 1 0 0  amb 0.2 0.2 0.2  emis 0 0 0  spec 0.5 0.5 0.5  shi 10  trans 0\n";
  for (const std::string &text :
       {materials, materials.substr(0, materials.size() - 30), std::string("AC3Db\n"), std::string("AC3Db")}) {
    const Parsed p = parse(text);
    EXPECT_EQ(ac3dDamaged, p.result) << text;
    EXPECT_NE(std::string::npos, p.messages.find("the file ends before its first OBJECT")) << p.messages;
  }
}

TEST(Ac3dConverterTest, UnknownTokensAreStillSkippedAmongTheObjectsLines) {
  // The check for misplaced lines leaves other unknown words alone.
  std::string text = simpleFile();
  text.insert(text.find("numvert"), "shader \"glass\" 2\nxyz 0 0\n");
  text.insert(text.find("kids 0"), "Crease 30\n");
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_EQ(3, p.object.triangleCount());
  EXPECT_NE(std::string::npos, p.messages.find("unknown token 'Crease'")) << p.messages;
}

// --- what messages quote ----------------------------------------------------------------

TEST(Ac3dConverterTest, ExcerptsAreShortAndPrintable) {
  EXPECT_EQ("abc", ac3dExcerpt("abc"));
  EXPECT_EQ("a\\x00b\\xff\\x5c\\x0a", ac3dExcerpt(std::string("a\0b\xff\\\n", 6)));
  EXPECT_EQ("abcd...", ac3dExcerpt("abcdefgh", 4));
  EXPECT_EQ(std::string(40, 'x') + "...", ac3dExcerpt(std::string(1 << 20, 'x')));
}

namespace {

bool allPrintable(const std::string &text) {
  for (char c : text)
    if (c != '\n' && (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7f)) return false;
  return true;
}

}  // namespace

TEST(Ac3dConverterTest, MessagesQuoteNoLongLinesAndNoBinaryBytes) {
  std::string binary(1 << 20, 'q');
  for (size_t i = 0; i < binary.size(); i += 97) binary[i] = char(0x80 + i % 100);
  binary[5] = '\0';
  // An unknown token, a bad vertex, a bad count, a bad reference, a bad
  // surface line and a name in a note, each holding the megabyte token.
  const std::vector<std::string> cases = {
      withCount("crease", binary + "\ncrease"),
      withCount("0.5 2 0", "0.5 2 " + binary),
      withCount("numsurf 2", "numsurf " + binary),
      withCount("4 0.5 0", "4 " + binary + " 0"),
      withCount("SURF 0x0", binary),
      withCount("name \"simple\"", "name \"" + binary + "\"\nrot 0 1 0 1 0 0 0 0 1"),
  };
  for (size_t i = 0; i < cases.size(); ++i) {
    const Parsed p = parse(cases[i]);
    EXPECT_FALSE(p.messages.empty()) << i;
    EXPECT_LT(p.messages.size(), 1000u) << i;
    EXPECT_TRUE(allPrintable(p.messages)) << i << ": " << p.messages.substr(0, 300);
  }
}

TEST(Ac3dConverterTest, NotesAboutSingleLinesStopAfterTheFirstFewAndAreCounted) {
  std::string text = simpleFile();
  std::string unknown;
  for (int i = 0; i < 1000; ++i) unknown += "shader " + std::to_string(i) + "\n";
  text.insert(text.find("crease"), unknown);
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result);
  EXPECT_LT(p.messages.size(), 2000u) << p.messages;
  EXPECT_EQ(std::string::npos, p.messages.find("test.ac:100:"));
  EXPECT_NE(std::string::npos, p.messages.find("990 more lines skipped or noted")) << p.messages;
}

// --- the scope of the dropped counts ------------------------------------------------------

TEST(Ac3dConverterTest, DroppedSurfacesAreCountedForTheConvertedObjectOnly) {
  // The second object has line surfaces and a pentagon of its own; they are
  // not part of the converted model and do not enter its counts.
  std::string text = modellerFile();
  const std::string extra =
      "SURF 0x1\r\nmat 0\r\nrefs 2\r\n0 0 0\r\n1 0 0\r\n"
      "SURF 0x2\r\nmat 0\r\nrefs 2\r\n0 0 0\r\n1 0 0\r\n"
      "SURF 0x0\r\nmat 0\r\nrefs 5\r\n0 0 0\r\n1 0 0\r\n2 0 0\r\n0 0 0\r\n1 0 0\r\n"
      "SURF 0x4\r\nmat 0\r\nrefs 3\r\n0 0 0\r\n1 0 0\r\n2 0 0\r\n";
  text.replace(text.find("numsurf 1\r\n"), 11, "numsurf 5\r\n" + extra);
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_NE(std::string::npos, p.messages.find("2 line surfaces dropped from object \"tri\"")) << p.messages;
  EXPECT_EQ(std::string::npos, p.messages.find("4 line surfaces")) << p.messages;
  EXPECT_EQ(std::string::npos, p.messages.find("polygons without")) << p.messages;
  EXPECT_EQ(std::string::npos, p.messages.find("unknown type")) << p.messages;
}

TEST(Ac3dConverterTest, DropsInAnObjectBeforeTheConvertedOneAreNotReported) {
  // The first object has no crease line, so the second one is converted.
  const std::string text =
      "AC3Db\nOBJECT world\nkids 2\n"
      "OBJECT poly\nnumvert 3\n0 0 0\n1 0 0\n0 1 0\nnumsurf 1\nSURF 0x1\nrefs 3\n0 0 0\n1 0 0\n2 0 0\nkids 0\n"
      "OBJECT poly\nname \"good\"\ncrease 30\nnumvert 3\n0 0 0\n1 0 0\n0 1 0\nnumsurf 1\n"
      "SURF 0x0\nrefs 3\n0 0 0\n1 0 0\n2 0 0\nkids 0\n";
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_EQ("good", p.object.objectName);
  EXPECT_EQ(1, p.object.triangleCount());
  EXPECT_EQ(std::string::npos, p.messages.find("dropped")) << p.messages;
}

// --- writers -----------------------------------------------------------------------------

TEST(Ac3dConverterTest, SourceDumpHasTheLiteralPiecesInOrder) {
  Ac3dObject o;
  o.objectName = "tri";
  o.location[0] = 1.5f;
  o.creaseAngle = 30.0f;
  o.vertices = {0, 0, 0, 1, 0, 0, 0, 1, 0.5f};
  o.triangleIndices = {0, 1, 2};
  o.verticeTextureCoords = {0, 0, 1, 0, 0, 0.25f};
  const std::string expected =
      "static const char *objectName = \"tri\";\n"
      "\n"
      "static float location[3] = { 1.5, 0, 0 };\n"
      "\n"
      "static float creaseAngle = 30;\n"
      "\n"
      "static int numVert = 3;\n"
      "\n"
      "static int numTriangles = 1;\n"
      "\n"
      "static float vertices[3][3] = {\n"
      " { 0, 0, 0 },\n"
      " { 1, 0, 0 },\n"
      " { 0, 1, 0.5 }\n"
      "};\n"
      "\n"
      "static int triangleIndices[1][3] = {\n"
      " { 0, 1, 2 }\n"
      "};\n"
      "\n"
      "static float verticeTextureCoords[3][2] = {\n"
      " { 0, 0 },\n"
      " { 1, 0 },\n"
      " { 0, 0.25 }\n"
      "};\n";
  EXPECT_EQ(expected, ac3dSourceDump(o));
}

TEST(Ac3dConverterTest, SourceDumpEscapesTheNameForACStringLiteral) {
  Ac3dObject o;
  o.objectName = "a\"b\\c\td\n\x01\xe9" "7?\?=z";
  o.vertices = {0, 0, 0};
  o.verticeTextureCoords = {0, 0};
  const std::string dump = ac3dSourceDump(o);
  EXPECT_EQ(0u, dump.find("static const char *objectName = \"a\\\"b\\\\c\\011d\\012\\001\\3517?\\?=z\";\n"))
      << dump.substr(0, 80);
}

#ifdef TEST_C_COMPILER
TEST(Ac3dConverterTest, SourceDumpOfAHostileNameCompilesAndKeepsTheName) {
  // The dump, compiled with a main that writes the name back out, gives the
  // bytes of the name: quotes, backslashes, control and high bytes, trigraphs.
  const std::string name = "q\"uote\\back\\\"slash\t\r\n\x7f\xff\x80" "0?\?/end?\?=";
  // The reader ends a quoted name at its first quote, so the object read
  // from the file is given the name directly.
  Ac3dObject o;
  std::ostringstream messages;
  ASSERT_EQ(ac3dOk, parseAc3d(simpleFile(), "test.ac", o, messages));
  o.objectName = name;
  const std::string dump = writeText("hostile_dump.c", ac3dSourceDump(o));
  const std::string mainFile = writeText(
      "hostile_main.c",
      "#include <stdio.h>\n#include <string.h>\n#include \"hostile_dump.c\"\n"
      "int main(void) {\n"
      "  fwrite(objectName, 1, strlen(objectName), stdout);\n"
      "  return numVert == 5 && numTriangles == 3 && vertices[4][1] == 2.0f &&\n"
      "         triangleIndices[2][2] == 4 && verticeTextureCoords[3][0] == 0.25f &&\n"
      "         location[2] == 3.0f && creaseAngle == 30.0f ? 0 : 1;\n"
      "}\n");
  const std::string program = tempPath("hostile_dump");
  const testrun::Result compiled = testrun::run(std::string(TEST_C_COMPILER) + " -std=c99 -trigraphs -Wall -Werror -o " +
                                                    program + " " + mainFile,
                                                tempPath(""));
  ASSERT_EQ(0, compiled.exitStatus) << compiled.err;
  const testrun::Result ran = testrun::run(program, ".");
  EXPECT_EQ(0, ran.exitStatus);
  EXPECT_EQ(name, ran.out);
}
#endif

TEST(Ac3dConverterTest, ConvertWritesTheSourceDump) {
  const std::string source = writeText("simple.ac", simpleFile());
  const std::string target = tempPath("simple.c");
  std::filesystem::remove(target);
  ASSERT_EQ(ac3dOk, convertAc3d(source, target, false, 0, 0));
  const std::string text = readText(target);
  EXPECT_EQ(0u, text.find("static const char *objectName = \"simple\";\n"));
  EXPECT_NE(std::string::npos, text.find("static int numTriangles = 3;\n"));
  EXPECT_NE(std::string::npos, text.find("static float verticeTextureCoords[5][2] = {\n"));
}

TEST(Ac3dConverterTest, ConvertWritesTheBinaryFormAndAnnouncesItsSize) {
  const std::string source = writeText("simple_bin.ac", simpleFile());
  for (int pForm = 0; pForm <= 2; ++pForm) {
    const std::string target = tempPath("simple_" + std::to_string(pForm) + ".a3d");
    testing::internal::CaptureStdout();
    ASSERT_EQ(ac3dOk, convertAc3d(source, target, true, pForm, 0));
    const std::string out = testing::internal::GetCapturedStdout();
    const auto size = std::filesystem::file_size(target);
    EXPECT_EQ("number of bytes to write: " + std::to_string(size) + "\n", out);
    A3dModel model;
    ASSERT_EQ(a3dOk, readA3d(target, model));
    EXPECT_EQ(5u, model.vertexCount());
    EXPECT_EQ(3u, model.faceCount());
    EXPECT_EQ(30.0f, model.creaseAngle);
    EXPECT_EQ(2.0f, model.location[1]);
    EXPECT_EQ((std::vector<int>{0, 1, 2, 0, 2, 3, 3, 2, 4}), model.indices);
    EXPECT_NEAR(2.0f, model.positions[4 * 3 + 1], pForm == 2 ? 2.0f / 255.0f : 2.0f / 65535.0f);
    EXPECT_EQ(0.25f, model.texCoords[3 * 2]);
  }
}

TEST(Ac3dConverterTest, NothingIsWrittenForAFileWithoutObjectsOrASourceThatCannotBeRead) {
  const std::string target = tempPath("never.a3d");
  std::filesystem::remove(target);
  const std::string source = writeText("nocrease.ac", "AC3Db\nOBJECT poly\nnumvert 1\n0 0 0\nkids 0\n");
  testing::internal::CaptureStderr();
  EXPECT_EQ(ac3dNothingToConvert, convertAc3d(source, target, true, 0, 0));
  EXPECT_EQ(ac3dCannotOpen, convertAc3d(tempPath("no_such_file.ac"), target, true, 0, 0));
  EXPECT_EQ(ac3dDamaged, convertAc3d(writeText("bad.ac", "AC3Db\nOBJECT poly\nnumvert 9\n"), target,
                                     false, 0, 0));
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_FALSE(std::filesystem::exists(target));
  EXPECT_NE(std::string::npos, err.find("no_such_file.ac"));
}

TEST(Ac3dConverterTest, AModelBeyondTheBufferIsCutWithAWarning) {
  // 120000 vertices as floats need 120000 * 20 bytes, more than 2000000.
  std::string text = "AC3Db\nOBJECT poly\nname \"big\"\ncrease 30\nnumvert 120000\n";
  for (int i = 0; i < 120000; ++i) text += "0 0 0\n";
  text += "numsurf 0\nkids 0\n";
  const std::string source = writeText("big.ac", text);
  const std::string target = tempPath("big.a3d");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(ac3dOk, convertAc3d(source, target, true, 0, 0));
  testing::internal::GetCapturedStdout();
  const std::string err = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, err.find("cut")) << err;
  EXPECT_LE(std::filesystem::file_size(target), ac3dBufferSize);
  A3dModel model;
  testing::internal::CaptureStdout();
  EXPECT_EQ(a3dDamaged, readA3d(target, model));  // the loader refuses the cut file
  testing::internal::GetCapturedStdout();
}

// --- the command line ------------------------------------------------------------------------

#ifdef A3DCONV_EXECUTABLE
TEST(A3dconvToolTest, ConvertsWithTheChosenForms) {
  const std::string source = writeText("tool.ac", simpleFile());
  const std::string target = tempPath("tool.a3d");
  const testrun::Result r =
      testrun::run(std::string(A3DCONV_EXECUTABLE) + " -p 1 -t 2 " + source + " " + target, ".");
  EXPECT_EQ(0, r.exitStatus) << r.err;
  EXPECT_NE(std::string::npos, r.out.find("number of bytes to write: "));
  A3dModel model;
  ASSERT_EQ(a3dOk, readA3d(target, model));
  EXPECT_EQ(a3dPositions16 | a3dTexCoords8, model.flags);
}

TEST(A3dconvToolTest, WritesTheSourceDumpWithMinusC) {
  const std::string source = writeText("tool_c.ac", simpleFile());
  const std::string target = tempPath("tool.c");
  const testrun::Result r = testrun::run(std::string(A3DCONV_EXECUTABLE) + " -c " + source + " " + target, ".");
  EXPECT_EQ(0, r.exitStatus) << r.err;
  EXPECT_NE(std::string::npos, readText(target).find("verticeTextureCoords"));
}

TEST(A3dconvToolTest, DamagedInputGivesAMessageAndANonZeroExit) {
  const std::string source = writeText("tool_bad.ac", replaced("4 0.5 0", "99 0.5 0"));
  const std::string target = tempPath("tool_bad.a3d");
  std::filesystem::remove(target);
  const testrun::Result r = testrun::run(std::string(A3DCONV_EXECUTABLE) + " " + source + " " + target, ".");
  EXPECT_EQ(3, r.exitStatus);
  EXPECT_EQ(0, r.signal);
  EXPECT_NE(std::string::npos, r.err.find("vertex reference 99")) << r.err;
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST(A3dconvToolTest, HostileFilesGiveTheDamagedStatus) {
  const std::vector<std::pair<const char *, std::string>> cases = {
      {"huge_count", replaced("numvert 5", "numvert 9223372036854775807")},
      {"huge_refs", replaced("refs 4", "refs 4294967296")},
      {"misspelt_numsurf", replaced("numsurf 2", "numsurf2")},
      {"cut_materials", "AC3Db\nMATERIAL \"white\" rgb 1 1 1  amb 0.2"},
  };
  for (const auto &c : cases) {
    const std::string source = writeText(std::string("tool_") + c.first + ".ac", c.second);
    const std::string target = tempPath(std::string("tool_") + c.first + ".a3d");
    std::filesystem::remove(target);
    const testrun::Result r = testrun::run(std::string(A3DCONV_EXECUTABLE) + " " + source + " " + target, ".");
    EXPECT_EQ(3, r.exitStatus) << c.first << ": " << r.err;
    EXPECT_EQ(0, r.signal) << c.first;
    EXPECT_NE(std::string::npos, r.err.find("damaged AC3D file")) << c.first << ": " << r.err;
    EXPECT_FALSE(std::filesystem::exists(target)) << c.first;
  }
}

#if defined(__SANITIZE_ADDRESS__)
#define OSTRAVINE_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OSTRAVINE_UNDER_ASAN 1
#endif
#endif

TEST(A3dconvToolTest, AnImpossibleCountIsRefusedWithinASmallAddressSpace) {
#ifdef OSTRAVINE_UNDER_ASAN
  GTEST_SKIP() << "the address sanitizer needs far more address space than the limit leaves";
#else
  // 100 million vertices would reserve 1.2 GB; the limit is 256 MiB.
  const std::string source = writeText("tool_limit.ac", replaced("numvert 5", "numvert 100000000"));
  const testrun::Result r = testrun::run(
      "ulimit -v 262144 && " + std::string(A3DCONV_EXECUTABLE) + " " + source + " " + tempPath("tool_limit.a3d"), ".");
  EXPECT_EQ(3, r.exitStatus) << r.err;
  EXPECT_EQ(0, r.signal);
  EXPECT_NE(std::string::npos, r.err.find("numvert 100000000")) << r.err;
#endif
}

TEST(A3dconvToolTest, BinaryGarbageAndBadArgumentsDoNotCrash) {
  std::string garbage;
  for (int i = 0; i < 4096; ++i) garbage += char((i * 7919) & 0xFF);
  const std::string source = writeText("garbage.ac", garbage);
  testrun::Result r = testrun::run(std::string(A3DCONV_EXECUTABLE) + " " + source + " " + tempPath("g.a3d"), ".");
  EXPECT_EQ(3, r.exitStatus);
  EXPECT_EQ(0, r.signal);
  r = testrun::run(std::string(A3DCONV_EXECUTABLE) + " -p 7 a b", ".");
  EXPECT_EQ(64, r.exitStatus);
  r = testrun::run(std::string(A3DCONV_EXECUTABLE), ".");
  EXPECT_EQ(64, r.exitStatus);
  EXPECT_NE(std::string::npos, r.err.find("usage"));
}
#endif

TEST(Ac3dConverterTest, VertexLinesWithNormalsAndIndentedLinesAreRead) {
  std::string text = simpleFile();
  text.replace(text.find("1 0 0\n1 1 0"), 5, "\t1 0 0 0 0 -1");
  text.replace(text.find("mat 0"), 5, "  mat 0");
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result) << p.messages;
  EXPECT_EQ(5, p.object.vertexCount());
  EXPECT_EQ(1.0f, p.object.vertices[3]);
  EXPECT_EQ(0.0f, p.object.vertices[5]);
}

TEST(Ac3dConverterTest, SurfacesOfAnUnknownTypeAreDroppedWithAMessage) {
  std::string text = simpleFile();
  text.replace(text.find("SURF 0x10"), 9, "SURF 0x14");
  const Parsed p = parse(text);
  ASSERT_EQ(ac3dOk, p.result);
  EXPECT_EQ(1, p.object.triangleCount());
  EXPECT_NE(std::string::npos, p.messages.find("surfaces of unknown type dropped")) << p.messages;
}

TEST(Ac3dConverterTest, EveryTruncationOfAModellersFileIsHandled) {
  // Cut at every byte: the reader answers each with a result code, never a
  // crash (the sanitizer build checks the reads).
  const std::string whole = modellerFile();
  int converted = 0;
  for (size_t length = 0; length <= whole.size(); ++length) {
    const Parsed p = parse(whole.substr(0, length));
    EXPECT_TRUE(p.result == ac3dOk || p.result == ac3dDamaged || p.result == ac3dNothingToConvert) << length;
    if (p.result == ac3dOk) ++converted;
  }
  EXPECT_GE(converted, 1);  // at least the whole file
}
