// ".a3d" files: byte layout, every storage form, round trips, the loader's
// messages and damaged files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "geometry/A3dFile.h"
#include "geometry/Mesh.h"

namespace {

std::string tempPath(const std::string &name) {
  const auto dir = std::filesystem::temp_directory_path() / "ostravine_a3d_test";
  std::filesystem::create_directories(dir);
  return (dir / name).string();
}

uint32_t u32At(const std::vector<uint8_t> &b, size_t at) {
  return uint32_t(b[at]) | uint32_t(b[at + 1]) << 8 | uint32_t(b[at + 2]) << 16 | uint32_t(b[at + 3]) << 24;
}

float f32At(const std::vector<uint8_t> &b, size_t at) {
  const uint32_t bits = u32At(b, at);
  float v;
  std::memcpy(&v, &bits, 4);
  return v;
}

// Two triangles with varied values on every axis.
A3dModel sampleModel() {
  A3dModel m;
  m.creaseAngle = 30.0f;
  m.location[0] = 1.5f;
  m.location[1] = -2.0f;
  m.location[2] = 3.25f;
  m.positions = {-1.0f, 0.5f, 2.0f, 3.0f, -4.0f, 0.0f, 0.25f, 7.0f, -1.5f, 2.0f, 2.0f, 2.0f};
  m.texCoords = {0.0f, 1.0f, 0.5f, 0.25f, 1.0f, 0.0f, 0.75f, 0.6f};
  m.indices = {0, 1, 2, 2, 1, 3};
  return m;
}

A3dModel decode(const std::vector<uint8_t> &bytes) {
  A3dModel out;
  EXPECT_EQ(a3dOk, decodeA3d(bytes, "memory", out));
  return out;
}

}  // namespace

// --- layout -------------------------------------------------------------------

TEST(A3dFileTest, HeaderIsLittleEndianWithTheMagicAndCounts) {
  const std::vector<uint8_t> b = encodeA3d(sampleModel(), a3dBits16, a3dBits8);
  ASSERT_GE(b.size(), 20u);
  EXPECT_EQ('0', b[0]);
  EXPECT_EQ('0', b[1]);
  EXPECT_EQ('0', b[2]);
  EXPECT_EQ(0, b[3]);
  EXPECT_EQ(1u + 8u, u32At(b, 4));
  EXPECT_EQ(9, b[4]);  // least significant byte first
  EXPECT_EQ(4u, u32At(b, 8));
  EXPECT_EQ(2u, u32At(b, 12));
  EXPECT_EQ(30.0f, f32At(b, 16));
}

TEST(A3dFileTest, AllFloatFlagsMeanTheLocationStartsAtOffset20) {
  const A3dModel m = sampleModel();
  const std::vector<uint8_t> b = encodeA3d(m, a3dFloat, a3dFloat);
  EXPECT_EQ(0u, u32At(b, 4));
  EXPECT_EQ(1.5f, f32At(b, 20));
  EXPECT_EQ(-2.0f, f32At(b, 24));
  EXPECT_EQ(3.25f, f32At(b, 28));
  EXPECT_EQ(-1.0f, f32At(b, 32));  // first position
  // No padding: header, location, positions, 16-bit indices, texture coordinates.
  EXPECT_EQ(20u + 12u + 4 * 3 * 4 + 2 * 3 * 2 + 4 * 2 * 4, b.size());
}

TEST(A3dFileTest, WithOnlyTextureBitsTheTextureBlockStartsAtOffset20) {
  const A3dModel m = sampleModel();
  const std::vector<uint8_t> b = encodeA3d(m, a3dFloat, a3dBits16, SIZE_MAX, true);
  EXPECT_EQ(4u, u32At(b, 4));
  EXPECT_EQ(-0.0f, f32At(b, 20));  // offset u = -min u = -0
  EXPECT_EQ(-0.0f, f32At(b, 24));  // offset v
  EXPECT_EQ(1.0f, f32At(b, 28));   // scale u
  EXPECT_EQ(1.0f, f32At(b, 32));   // scale v
  EXPECT_EQ(1.5f, f32At(b, 36));   // then the location
}

TEST(A3dFileTest, PositionBlockHoldsNegatedMinimumThenExtent) {
  const std::vector<uint8_t> b = encodeA3d(sampleModel(), a3dBits8, a3dFloat);
  EXPECT_EQ(2u, u32At(b, 4));
  EXPECT_EQ(1.0f, f32At(b, 20));   // x min -1
  EXPECT_EQ(4.0f, f32At(b, 24));   // y min -4
  EXPECT_EQ(1.5f, f32At(b, 28));   // z min -1.5
  EXPECT_EQ(4.0f, f32At(b, 32));   // x extent 3 - -1
  EXPECT_EQ(11.0f, f32At(b, 36));  // y extent 7 - -4
  EXPECT_EQ(3.5f, f32At(b, 40));   // z extent 2 - -1.5
  EXPECT_EQ(1.5f, f32At(b, 44));   // location
}

TEST(A3dFileTest, TextureBoundsAreTakenFromThePositionArrayAsTheConverterDoes) {
  A3dModel m;
  m.positions = {10.0f, 10.0f, 10.0f, 20.0f, 20.0f, 20.0f};
  m.texCoords = {0.0f, 0.0f, 1.0f, 1.0f};
  const std::vector<uint8_t> b = encodeA3d(m, a3dFloat, a3dBits16);
  // u at k = 0: 0 < 1e6 and 0 > -1e6, so both bounds become positions[0] =
  // 10; u at k = 2: 1 is neither below nor above 10. Offset -10, scale 0.
  EXPECT_EQ(-10.0f, f32At(b, 20));
  EXPECT_EQ(0.0f, f32At(b, 28));
  // The loader decodes with those bounds, so both u come back as 10.
  const A3dModel back = decode(b);
  EXPECT_EQ(10.0f, back.texCoords[0]);
  EXPECT_EQ(10.0f, back.texCoords[2]);
  // Exact bounds are what a round trip needs.
  const std::vector<uint8_t> exact = encodeA3d(m, a3dFloat, a3dBits16, SIZE_MAX, true);
  EXPECT_EQ(-0.0f, f32At(exact, 20));
  EXPECT_EQ(1.0f, f32At(exact, 28));
}

TEST(A3dFileTest, QuantisedTexturesComeBackWhenThePositionsSpanThem) {
  A3dModel m;
  // Positions chosen so that positions[k] equals texCoords[k] for k < 2n.
  m.positions = {0.0f, 1.0f, 0.5f, 0.25f, 1.0f, 0.0f};
  m.texCoords = {0.0f, 1.0f, 0.5f, 0.25f};
  m.indices = {0, 1, 1};
  const A3dModel back = decode(encodeA3d(m, a3dFloat, a3dBits16));
  for (size_t k = 0; k < 4; ++k) EXPECT_NEAR(m.texCoords[k], back.texCoords[k], 1.0f / 65535.0f);
}

// --- index width ------------------------------------------------------------------

TEST(A3dFileTest, IndicesAre16BitUpTo65535VerticesAnd32BitFrom65536) {
  for (uint32_t count : {65535u, 65536u}) {
    A3dModel m;
    m.positions.assign(size_t(count) * 3, 0.0f);
    m.texCoords.assign(size_t(count) * 2, 0.0f);
    m.indices = {int(count) - 1, 0, 1};
    const std::vector<uint8_t> b = encodeA3d(m, a3dFloat, a3dFloat);
    const size_t indexSize = count < 65536 ? 2 : 4;
    EXPECT_EQ(32u + size_t(count) * 12 + 3 * indexSize + size_t(count) * 8, b.size()) << count;
    const A3dModel back = decode(b);
    EXPECT_EQ(int(count) - 1, back.indices[0]) << count;
    EXPECT_EQ(1, back.indices[2]);
  }
}

// --- decoding ---------------------------------------------------------------------

TEST(A3dFileTest, Extreme16BitCodesDecodeToTheMaximumAndMinimum) {
  const A3dModel m = sampleModel();
  std::vector<uint8_t> b = encodeA3d(m, a3dBits16, a3dFloat);
  // Position of vertex 2, y (7, the maximum) is code 65535; vertex 1 y (-4) is 0.
  const size_t positions = 20 + 24 + 12;
  EXPECT_EQ(0xFF, b[positions + (2 * 3 + 1) * 2]);
  EXPECT_EQ(0xFF, b[positions + (2 * 3 + 1) * 2 + 1]);
  EXPECT_EQ(0, b[positions + (1 * 3 + 1) * 2]);
  const A3dModel back = decode(b);
  EXPECT_FLOAT_EQ(11.0f - 4.0f, back.positions[2 * 3 + 1]);  // scale - offset
  EXPECT_FLOAT_EQ(-4.0f, back.positions[1 * 3 + 1]);         // -offset
}

TEST(A3dFileTest, DecodingFollowsQOverRangeTimesScaleMinusOffset) {
  // Hand-made 8-bit file: one vertex, code 51 on x with offset 2, scale 10.
  std::vector<uint8_t> b = {'0', '0', '0', 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  auto f32 = [&b](float v) {
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    for (int i = 0; i < 4; ++i) b.push_back(uint8_t(bits >> (8 * i)));
  };
  f32(2.0f), f32(0.0f), f32(0.0f);    // offsets
  f32(10.0f), f32(1.0f), f32(1.0f);   // scales
  f32(0.0f), f32(0.0f), f32(0.0f);    // location
  b.push_back(51), b.push_back(255), b.push_back(0);  // x, y, z codes
  f32(0.5f), f32(0.5f);               // u, v as floats
  A3dModel m;
  ASSERT_EQ(a3dOk, decodeA3d(b, "hand", m));
  EXPECT_FLOAT_EQ(float(51 / 255.0 * 10.0 - 2.0), m.positions[0]);
  EXPECT_FLOAT_EQ(1.0f, m.positions[1]);
  EXPECT_FLOAT_EQ(0.0f, m.positions[2]);
  EXPECT_EQ(0u, m.faceCount());
}

TEST(A3dFileTest, PositionBitZeroWinsOverBitOneAndTextureBitTwoOverThree) {
  const A3dModel m = sampleModel();
  std::vector<uint8_t> b = encodeA3d(m, a3dBits16, a3dBits16, SIZE_MAX, true);
  b[4] = 1 | 2 | 4 | 8;  // all bits: still the 16-bit forms
  const A3dModel back = decode(b);
  for (size_t i = 0; i < m.positions.size(); ++i) EXPECT_NEAR(m.positions[i], back.positions[i], 11.0f / 65535.0f);
}

TEST(A3dFileTest, TheMagicIsNotChecked) {
  std::vector<uint8_t> b = encodeA3d(sampleModel(), a3dFloat, a3dFloat);
  b[0] = 'X';
  b[3] = 'Y';
  A3dModel m;
  EXPECT_EQ(a3dOk, decodeA3d(b, "magic", m));
  EXPECT_EQ(4u, m.vertexCount());
}

// --- round trips in every form ---------------------------------------------------------

class A3dRoundTrip : public ::testing::TestWithParam<std::pair<int, int>> {};

TEST_P(A3dRoundTrip, WriteThenReadWithinTheQuantisationError) {
  const int pForm = GetParam().first, tForm = GetParam().second;
  const A3dModel m = sampleModel();
  const std::string path = tempPath("roundtrip_" + std::to_string(pForm) + std::to_string(tForm) + ".a3d");
  ASSERT_EQ(0, writeFileBytes(path, encodeA3d(m, pForm, tForm, SIZE_MAX, true)));
  A3dModel back;
  ASSERT_EQ(a3dOk, readA3d(path, back));
  ASSERT_EQ(m.positions.size(), back.positions.size());
  ASSERT_EQ(m.texCoords.size(), back.texCoords.size());
  EXPECT_EQ(m.indices, back.indices);
  EXPECT_EQ(m.creaseAngle, back.creaseAngle);
  EXPECT_EQ(m.location[2], back.location[2]);
  const float extent[3] = {4.0f, 11.0f, 3.5f};
  const double pSteps = pForm == a3dBits16 ? 65535.0 : pForm == a3dBits8 ? 255.0 : 0.0;
  const double tSteps = tForm == a3dBits16 ? 65535.0 : tForm == a3dBits8 ? 255.0 : 0.0;
  for (size_t i = 0; i < m.positions.size(); ++i) {
    if (pSteps == 0.0)
      EXPECT_EQ(m.positions[i], back.positions[i]);
    else
      EXPECT_NEAR(m.positions[i], back.positions[i], extent[i % 3] / pSteps * 1.001) << i;
  }
  for (size_t k = 0; k < m.texCoords.size(); ++k) {
    if (tSteps == 0.0)
      EXPECT_EQ(m.texCoords[k], back.texCoords[k]);
    else
      EXPECT_NEAR(m.texCoords[k], back.texCoords[k], 1.0 / tSteps * 1.001) << k;
  }
}

namespace {
std::string formsName(const ::testing::TestParamInfo<std::pair<int, int>> &info) {
  static const char *const form[3] = {"Float", "Bits16", "Bits8"};
  return std::string("Positions") + form[info.param.first] + "TexCoords" + form[info.param.second];
}
}  // namespace

INSTANTIATE_TEST_SUITE_P(EveryForm, A3dRoundTrip,
                         ::testing::Values(std::make_pair(0, 0), std::make_pair(0, 1), std::make_pair(0, 2),
                                           std::make_pair(1, 0), std::make_pair(1, 1), std::make_pair(1, 2),
                                           std::make_pair(2, 0), std::make_pair(2, 1), std::make_pair(2, 2)),
                         formsName);

TEST(A3dFileTest, AFlatAxisQuantisesToZeroAndDecodesToItsValue) {
  A3dModel m;
  m.positions = {1.0f, 2.0f, 5.0f, 3.0f, 4.0f, 5.0f};  // z is flat
  m.texCoords = {0, 0, 1, 1};
  const A3dModel back = decode(encodeA3d(m, a3dBits16, a3dFloat));
  EXPECT_FLOAT_EQ(5.0f, back.positions[2]);
  EXPECT_FLOAT_EQ(5.0f, back.positions[5]);
}

TEST(A3dFileTest, ALimitCutsTheImageAtAWriteBoundary) {
  const A3dModel m = sampleModel();
  const std::vector<uint8_t> whole = encodeA3d(m, a3dFloat, a3dFloat);
  const std::vector<uint8_t> cut = encodeA3d(m, a3dFloat, a3dFloat, 35);
  EXPECT_EQ(32u, cut.size());  // the first position would pass 35 bytes
  EXPECT_TRUE(std::equal(cut.begin(), cut.end(), whole.begin()));
}

// --- loading ---------------------------------------------------------------------------

TEST(A3dFileTest, AMissingFileGivesMinusOneAndItsMessage) {
  testing::internal::CaptureStdout();
  A3dModel m;
  const int result = readA3d("./models/no_such_model.a3d", m);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(-1, result);
  EXPECT_EQ("ERROR: file ./models/no_such_model.a3d not found\n", out);
}

TEST(A3dFileTest, AnEmptyFileGivesMinusTwoAndItsMessage) {
  const std::string path = tempPath("empty.a3d");
  std::ofstream(path, std::ios::trunc).close();
  testing::internal::CaptureStdout();
  A3dModel m;
  const int result = readA3d(path, m);
  EXPECT_EQ("ERROR: size of the file is 0\n", testing::internal::GetCapturedStdout());
  EXPECT_EQ(-2, result);
}

TEST(A3dFileTest, ATruncatedFileIsRefusedWithAMessageAndNothingReadPastItsEnd) {
  const std::vector<uint8_t> whole = encodeA3d(sampleModel(), a3dBits16, a3dBits16, SIZE_MAX, true);
  for (size_t length : {size_t(3), size_t(19), size_t(20), size_t(50), whole.size() - 1}) {
    std::vector<uint8_t> part(whole.begin(), whole.begin() + long(length));
    testing::internal::CaptureStdout();
    A3dModel m;
    const int result = decodeA3d(part, "short.a3d", m);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(a3dDamaged, result) << length;
    EXPECT_NE(std::string::npos, out.find("short.a3d")) << out;
    EXPECT_EQ(0u, m.vertexCount());
  }
}

TEST(A3dFileTest, HugeCountsInADamagedHeaderAreRefusedWithoutAllocating) {
  std::vector<uint8_t> b = encodeA3d(sampleModel(), a3dFloat, a3dFloat);
  b[8] = b[9] = b[10] = b[11] = 0xFF;  // 4 billion vertices
  testing::internal::CaptureStdout();
  A3dModel m;
  EXPECT_EQ(a3dDamaged, decodeA3d(b, "huge.a3d", m));
  testing::internal::GetCapturedStdout();
}

TEST(A3dFileTest, BuildingAMeshKeepsFileOrderAndCornerOrder) {
  const A3dModel m = sampleModel();
  Mesh mesh;
  mesh.normalsDirty = false;
  buildMeshFromA3d(mesh, m, "sample");
  EXPECT_TRUE(mesh.normalsDirty);
  EXPECT_EQ(4, mesh.vertexCount);
  EXPECT_EQ(2, mesh.faceCount);
  EXPECT_EQ(Vector3(0.25f, 7.0f, -1.5f), mesh.vertices[2]->position);
  EXPECT_EQ(Vector3(1.0f, 0.0f, 0.0f), mesh.vertices[2]->texCoord);
  EXPECT_EQ(Vector3(1, 1, 1), mesh.vertices[2]->colour);
  EXPECT_EQ(1.0f, mesh.vertices[2]->alpha);
  // Corner order is kept: front faces follow the source's winding.
  EXPECT_EQ(2, mesh.faces[1]->vertexIndices[0]);
  EXPECT_EQ(1, mesh.faces[1]->vertexIndices[1]);
  EXPECT_EQ(3, mesh.faces[1]->vertexIndices[2]);
}

TEST(A3dFileTest, FacesWithAnIndexBeyondTheVerticesAreSkippedWithAMessage) {
  A3dModel m = sampleModel();
  m.indices[4] = 4;  // one past the last vertex
  const std::string path = tempPath("badindex.a3d");
  ASSERT_EQ(0, writeFileBytes(path, encodeA3d(m, a3dFloat, a3dFloat)));
  A3dModel back;
  ASSERT_EQ(a3dOk, readA3d(path, back));
  Mesh mesh;
  testing::internal::CaptureStdout();
  buildMeshFromA3d(mesh, back, path);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(1, mesh.faceCount);
  EXPECT_NE(std::string::npos, out.find("badindex.a3d")) << out;
}

TEST(A3dFileTest, ADirectoryReadsAsAnEmptyFileWithoutCrashing) {
  const std::string dir = tempPath("a_directory.a3d");
  std::filesystem::create_directories(dir);
  testing::internal::CaptureStdout();
  A3dModel m;
  const int result = readA3d(dir, m);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(result == a3dEmpty || result == a3dNotFound) << result;
  EXPECT_FALSE(out.empty());
}

TEST(A3dFileTest, EveryTruncationIsRefusedAndTheWholeFileAccepted) {
  const std::vector<uint8_t> whole = encodeA3d(sampleModel(), a3dBits8, a3dBits16, SIZE_MAX, true);
  testing::internal::CaptureStdout();
  for (size_t length = 0; length < whole.size(); ++length) {
    A3dModel m;
    EXPECT_NE(a3dOk, decodeA3d(std::vector<uint8_t>(whole.begin(), whole.begin() + long(length)), "cut", m)) << length;
  }
  testing::internal::GetCapturedStdout();
  A3dModel m;
  EXPECT_EQ(a3dOk, decodeA3d(whole, "whole", m));
}
