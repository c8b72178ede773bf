// Lights and shadow maps: the light record, addLight's size rule and copy
// rule, applyLight, the shadow camera, the map and its projection.
#include <GL/glew.h>
#include <GL/glu.h>
#include <gtest/gtest.h>

#include <cmath>

#include "WorldTestHelpers.h"
#include "render/GLErrors.h"

namespace {

using wt::ScopedFlag;

void lookAtMatrix(const Vector3& p, const Vector3& direction, float out[16]) {
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  gluLookAt(p.x, p.y, p.z, p.x + direction.x, p.y + direction.y, p.z + direction.z, 0, 1, 0);
  glGetFloatv(GL_MODELVIEW_MATRIX, out);
  glPopMatrix();
}

void expectMatrixNear(const float* actual, const float* expected, float tolerance = 1e-5f) {
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

TEST(Light, NewRecordHasItsDefaults) {
  Light light;
  EXPECT_FALSE(light.enabled);
  EXPECT_EQ(light.ambient[0], -1.0f);
  EXPECT_EQ(light.ambient[1], -1.0f);
  EXPECT_EQ(light.ambient[2], -1.0f);
  EXPECT_EQ(light.ambient[3], 1.0f);
  EXPECT_EQ(light.diffuse[0], 1.0f);
  EXPECT_EQ(light.specular[0], 0.0f);
  EXPECT_EQ(light.specular[3], 1.0f);
  EXPECT_EQ(light.lightModelAmbient[3], 1.0f);
  EXPECT_TRUE(light.positional);
  EXPECT_EQ(light.direction, Vector3(0, 0, 1));
  EXPECT_EQ(light.spotExponent, 100.0f);
  EXPECT_EQ(light.spotCutoff, 90.0f);
  EXPECT_EQ(light.constantAttenuation, 1.0f);
  EXPECT_EQ(light.linearAttenuation, 0.0f);
  EXPECT_EQ(light.quadraticAttenuation, 0.0f);
  EXPECT_FALSE(light.castsShadow);
  EXPECT_EQ(light.shadowMapSize, 256);
  EXPECT_FLOAT_EQ(light.shadowNear, 0.1f);
  EXPECT_EQ(light.shadowFar, 100.0f);
  EXPECT_EQ(light.shadowFieldOfView, 60.0f);
  EXPECT_EQ(light.projectedTexture, 0u);
  EXPECT_TRUE(light.polygonOffset);
  EXPECT_FALSE(light.alphaTestShadow);
}

TEST(Light, EveryMeshIsBornWithALightRecord) {
  Mesh mesh;
  ASSERT_NE(mesh.light(), nullptr);
  EXPECT_FALSE(mesh.light()->enabled);
  EXPECT_EQ(mesh.light()->ambient[0], -1.0f);
}

TEST(Light, ShadowMapSizeIsTheLargestPowerOfTwoThatFitsTheWindow) {
  EXPECT_EQ(shadowMapSizeFitting(800, 600), 512);
  EXPECT_EQ(shadowMapSizeFitting(1024, 768), 512);
  EXPECT_EQ(shadowMapSizeFitting(1024, 1024), 1024);
  EXPECT_EQ(shadowMapSizeFitting(1280, 1024), 1024);
  EXPECT_EQ(shadowMapSizeFitting(320, 240), 128);
}

TEST(Light, MapTooLargeForTheWindowWithoutFramebuffersIsCutAndLogged) {
  REQUIRE_WORLD_GL();
  ScopedFlag noFramebuffers(hasFramebufferObject, false);
  World world;
  LightParameters parameters = wt::spotLight(Vector3(0, -1, 0.1f));
  parameters.shadowMapSize = 1024;
  testing::internal::CaptureStdout();
  const int index = world.addLight(parameters, 0.1f, 100.0f, 800, 600);
  const std::string log = testing::internal::GetCapturedStdout();
  EXPECT_EQ(log, "final shadowmap size is 512\n");
  EXPECT_EQ(world.objects[index]->light()->shadowMapSize, 512);
  EXPECT_EQ(world.objects[index]->light()->shadowFramebuffer, 0u);
  EXPECT_EQ(rtt::textureLevelSize(world.objects[index]->light()->shadowTexture, GL_TEXTURE_WIDTH), 512);
  testgl::drainErrors();
}

TEST(Light, MapKeepsItsSizeWithFramebuffers) {
  REQUIRE_WORLD_GL();
  REQUIRE_FRAMEBUFFERS();
  World world;
  LightParameters parameters = wt::spotLight(Vector3(0, -1, 0.1f));
  parameters.shadowMapSize = 1024;
  testing::internal::CaptureStdout();
  const int index = world.addLight(parameters, 0.1f, 100.0f, 800, 600);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "final shadowmap size is 1024\n");
  const Light& light = *world.objects[index]->light();
  EXPECT_EQ(light.shadowMapSize, 1024);
  EXPECT_NE(light.shadowFramebuffer, 0u);
  EXPECT_EQ(rtt::textureLevelSize(light.shadowTexture, GL_TEXTURE_WIDTH), 1024);
  EXPECT_EQ(rtt::textureLevelSize(light.shadowTexture, GL_TEXTURE_HEIGHT), 1024);
  GLint format = 0;
  glBindTexture(GL_TEXTURE_2D, light.shadowTexture);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_DEPTH_SIZE, &format);
  EXPECT_GT(format, 0) << "the map is a depth texture";
  testgl::drainErrors();
}

TEST(Light, LightWithoutShadowLogsNothingAndMakesNoMap) {
  REQUIRE_WORLD_GL();
  World world;
  LightParameters parameters = wt::spotLight(Vector3(0, -1, 0.1f));
  parameters.castsShadow = false;
  testing::internal::CaptureStdout();
  const int index = world.addLight(parameters, 0.1f, 100.0f, 800, 600);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(world.objects[index]->light()->shadowTexture, 0u);
}

TEST(Light, AddLightCopiesOnlyItsListOfFields) {
  REQUIRE_WORLD_GL();
  World world;
  LightParameters p = wt::spotLight(Vector3(0.2f, -1, 0.1f));
  p.ambient[0] = 0.5f;
  p.specular[1] = 0.25f;
  p.offset = Vector3(1, 2, 3);
  p.positional = false;
  p.quadraticAttenuation = 0.03f;
  // These stay at the defaults of a new mesh whatever the block says.
  p.lightModelAmbient[0] = 0.7f;
  p.lightModelLocalViewer = 1.0f;
  p.lightModelTwoSide = 1.0f;
  p.shadowNear = 1.0f;
  p.shadowFar = 20.0f;
  p.shadowFieldOfView = 90.0f;
  p.projectedTexture = 77;
  p.polygonOffset = false;
  p.alphaTestShadow = true;
  testing::internal::CaptureStdout();
  const int index = world.addLight(p, 0.1f, 100.0f, wt::windowW, wt::windowH);
  testing::internal::GetCapturedStdout();
  const Light& light = *world.objects[index]->light();
  EXPECT_TRUE(light.enabled);
  EXPECT_EQ(light.ambient[0], 0.5f);
  EXPECT_EQ(light.diffuse[0], 1.5f);
  EXPECT_EQ(light.specular[1], 0.25f);
  EXPECT_EQ(light.direction, Vector3(0.2f, -1, 0.1f));
  EXPECT_FALSE(light.positional);
  EXPECT_EQ(light.offset, Vector3(1, 2, 3));
  EXPECT_EQ(light.spotExponent, 4.0f);
  EXPECT_EQ(light.spotCutoff, 60.0f);
  EXPECT_EQ(light.constantAttenuation, 0.5f);
  EXPECT_EQ(light.linearAttenuation, 0.01f);
  EXPECT_EQ(light.quadraticAttenuation, 0.03f);
  EXPECT_TRUE(light.castsShadow);

  EXPECT_EQ(light.lightModelAmbient[0], 0.0f);
  EXPECT_EQ(light.lightModelLocalViewer, 0.0f);
  EXPECT_EQ(light.lightModelTwoSide, 0.0f);
  EXPECT_FLOAT_EQ(light.shadowNear, 0.1f);
  EXPECT_EQ(light.shadowFar, 100.0f);
  EXPECT_EQ(light.shadowFieldOfView, 60.0f);
  EXPECT_EQ(light.projectedTexture, 0u);
  EXPECT_TRUE(light.polygonOffset);
  EXPECT_FALSE(light.alphaTestShadow);

  // The map's projection is the fixed 60-degree one over 0.1..100.
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  gluPerspective(60.0, 1.0, 0.1, 100.0);
  float expected[16];
  glGetFloatv(GL_MODELVIEW_MATRIX, expected);
  glPopMatrix();
  expectMatrixNear(light.projectionMatrix, expected);
  testgl::drainErrors();
}

TEST(Light, AddLightLeavesUnitZeroActiveAndUnitOneWithoutTexturing) {
  REQUIRE_WORLD_GL();
  World world;
  LightParameters p = wt::spotLight(Vector3(0.2f, -1, 0.1f));
  testing::internal::CaptureStdout();
  world.addLight(p, 0.1f, 100.0f, wt::windowW, wt::windowH);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(rtt::getInt(GL_ACTIVE_TEXTURE_ARB), GL_TEXTURE0_ARB);
  glActiveTextureARB(GL_TEXTURE1_ARB);
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Light, FirstShadowCameraIgnoresTheOffset) {
  REQUIRE_WORLD_GL();
  World world;
  LightParameters p = wt::spotLight(Vector3(0.2f, -1, 0.1f));
  p.offset = Vector3(5, 0, 0);
  testing::internal::CaptureStdout();
  const int index = world.addLight(p, 0.1f, 100.0f, wt::windowW, wt::windowH);
  testing::internal::GetCapturedStdout();
  float expected[16];
  lookAtMatrix(Vector3(0, 0, 0), p.direction, expected);
  expectMatrixNear(world.objects[index]->light()->viewMatrix, expected);
}

TEST(Light, ApplyLightPlacesTheGlLightAndFollowsWithTheShadowCamera) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  Light& light = *mesh.light();
  light.enabled = true;
  light.castsShadow = true;
  light.direction = Vector3(0.3f, -1, 0.2f);
  light.offset = Vector3(0, 1, 0);
  mesh.position = Vector3(1, 2, 3);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  int counter = 0;
  applyLight(mesh, &counter);
  testgl::drainErrors();
  EXPECT_EQ(counter, 1);

  float position[4];
  glGetLightfv(GL_LIGHT0, GL_POSITION, position);
  EXPECT_FLOAT_EQ(position[0], 1);
  EXPECT_FLOAT_EQ(position[1], 3);
  EXPECT_FLOAT_EQ(position[2], 3);
  EXPECT_FLOAT_EQ(position[3], 1);
  float expected[16];
  lookAtMatrix(Vector3(1, 3, 3), light.direction, expected);
  expectMatrixNear(light.viewMatrix, expected);

  float value[4];
  glGetLightfv(GL_LIGHT0, GL_SPOT_EXPONENT, value);
  EXPECT_EQ(value[0], 100.0f);
  glGetLightfv(GL_LIGHT0, GL_SPOT_CUTOFF, value);
  EXPECT_EQ(value[0], 90.0f);
  glGetLightfv(GL_LIGHT0, GL_AMBIENT, value);
  EXPECT_EQ(value[0], -1.0f) << "the negative default ambient reaches GL";
  glGetLightfv(GL_LIGHT0, GL_SPOT_DIRECTION, value);
  EXPECT_FLOAT_EQ(value[1], -1.0f);
  EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
  EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
  EXPECT_FALSE(glIsEnabled(GL_LIGHT1));
}

TEST(Light, PositionIsTakenThroughTheCurrentModelview) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.light()->enabled = true;
  mesh.position = Vector3(1, 0, 0);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslatef(0, 0, -5);
  int counter = 0;
  applyLight(mesh, &counter);
  glLoadIdentity();
  float position[4];
  glGetLightfv(GL_LIGHT0, GL_POSITION, position);
  EXPECT_FLOAT_EQ(position[0], 1);
  EXPECT_FLOAT_EQ(position[2], -5);
  testgl::drainErrors();
}

TEST(Light, DirectionalLightSendsWZeroYetPlacesTheShadowCameraAtTheSamePoint) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  Light& light = *mesh.light();
  light.enabled = true;
  light.castsShadow = true;
  light.positional = false;
  light.direction = Vector3(0, -1, 0.5f);
  mesh.position = Vector3(2, 5, -1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  int counter = 0;
  applyLight(mesh, &counter);
  testgl::drainErrors();
  float position[4];
  glGetLightfv(GL_LIGHT0, GL_POSITION, position);
  EXPECT_EQ(position[3], 0.0f);
  float expected[16];
  lookAtMatrix(Vector3(2, 5, -1), light.direction, expected);
  expectMatrixNear(light.viewMatrix, expected);
}

TEST(Light, DisabledLightIsSkippedAndNotOnTheWorldList) {
  REQUIRE_WORLD_GL();
  World world;
  LightParameters off = wt::spotLight(Vector3(0, -1, 0.1f));
  off.enabled = false;
  off.castsShadow = false;
  LightParameters on = off;
  on.enabled = true;
  const int a = world.addLight(off, 0.1f, 100.0f, wt::windowW, wt::windowH);
  const int b = world.addLight(on, 0.1f, 100.0f, wt::windowW, wt::windowH);
  world.refreshLights(false, false);
  ASSERT_EQ(world.lights.size(), 1u);
  EXPECT_EQ(world.lights.front(), world.objects[b]);

  const float marker[4] = {7, 7, 7, 1};
  glLoadIdentity();
  glLightfv(GL_LIGHT0, GL_POSITION, marker);
  glDisable(GL_LIGHTING);
  int counter = 0;
  world.objects[a]->position = Vector3(1, 1, 1);
  applyLight(*world.objects[a], &counter);
  EXPECT_EQ(counter, 0);
  float position[4];
  glGetLightfv(GL_LIGHT0, GL_POSITION, position);
  EXPECT_EQ(position[0], 7.0f);
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
}

TEST(Light, CounterChoosesTheGlLightAndStopsAtEight) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.light()->enabled = true;
  mesh.position = Vector3(4, 0, 0);
  glLoadIdentity();
  glDisable(GL_LIGHT3);
  int counter = 3;
  applyLight(mesh, &counter);
  EXPECT_EQ(counter, 4);
  EXPECT_TRUE(glIsEnabled(GL_LIGHT3));
  float position[4];
  glGetLightfv(GL_LIGHT3, GL_POSITION, position);
  EXPECT_EQ(position[0], 4.0f);

  counter = 8;
  mesh.position = Vector3(6, 0, 0);
  applyLight(mesh, &counter);
  EXPECT_EQ(counter, 8);
  glGetLightfv(GL_LIGHT0, GL_POSITION, position);
  EXPECT_EQ(position[0], 6.0f) << "out-of-range counters use GL_LIGHT0";
  glDisable(GL_LIGHT3);
  testgl::drainErrors();
}

TEST(Light, LightModelValuesAreRejectedByGlOnPurpose) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.light()->enabled = true;
  testgl::drainErrors();
  setGLErrorChecks(false);  // the refused calls' errors then stay pending, to be seen here
  int counter = 0;
  applyLight(mesh, &counter);
  const std::vector<unsigned> errors = testgl::drainErrors();
  setGLErrorChecks(true);
  ASSERT_FALSE(errors.empty());
  EXPECT_EQ(errors.front(), unsigned(GL_INVALID_ENUM));
}

// With the error checks on, the refused calls' own errors are dropped:
// nothing is reported and nothing stays pending.
TEST(Light, RefusedLightModelCallsAreNoReportedErrors) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.light()->enabled = true;
  setGLErrorChecks(true);
  testgl::drainErrors();
  const int32_t reportedBefore = reportedGLErrorCount();
  int counter = 0;
  applyLight(mesh, &counter);
  EXPECT_TRUE(testgl::drainErrors().empty());
  EXPECT_EQ(reportedGLErrorCount(), reportedBefore);
}

TEST(Light, TextureMatrixTakesTheLightAxisToTheMapCentre) {
  Light light;
  float projection[16], view[16];
  // Identity view, simple projection built by hand: x, y unchanged, w = -z.
  for (int i = 0; i < 16; ++i) projection[i] = view[i] = (i % 5 == 0) ? 1.0f : 0.0f;
  projection[11] = -1.0f;
  projection[15] = 0.0f;
  for (int i = 0; i < 16; ++i) {
    light.projectionMatrix[i] = projection[i];
    light.viewMatrix[i] = view[i];
  }
  float t[16];
  lightTextureMatrix(light, t);
  // The point (0, 0, -2): clip (0, 0, -2, 2) -> texture (1, 1, 0, 2) / 2.
  const float p[4] = {0, 0, -2, 1};
  float r[4];
  for (int row = 0; row < 4; ++row) r[row] = t[row] * p[0] + t[4 + row] * p[1] + t[8 + row] * p[2] + t[12 + row];
  EXPECT_FLOAT_EQ(r[0] / r[3], 0.5f);
  EXPECT_FLOAT_EQ(r[1] / r[3], 0.5f);
  EXPECT_FLOAT_EQ(r[2] / r[3], 0.0f);
}

TEST(Light, CompareSetsEyePlanesFromTheLightMatrixAndTheDepthCompare) {
  REQUIRE_WORLD_GL();
  World world;
  LightParameters p = wt::spotLight(Vector3(0.2f, -1, 0.1f));
  p.castsShadow = true;
  testing::internal::CaptureStdout();
  const int index = world.addLight(p, 0.1f, 100.0f, wt::windowW, wt::windowH);
  testing::internal::GetCapturedStdout();
  Mesh& mesh = *world.objects[index];
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glActiveTextureARB(GL_TEXTURE1_ARB);
  shadowCompareBegin(mesh);
  float t[16];
  lightTextureMatrix(*mesh.light(), t);
  const GLenum coords[4] = {GL_S, GL_T, GL_R, GL_Q};
  for (int row = 0; row < 4; ++row) {
    float plane[4];
    glGetTexGenfv(coords[row], GL_EYE_PLANE, plane);
    for (int c = 0; c < 4; ++c) EXPECT_NEAR(plane[c], t[c * 4 + row], 1e-5f);
    GLint mode = 0;
    glGetTexGeniv(coords[row], GL_TEXTURE_GEN_MODE, &mode);
    EXPECT_EQ(mode, GL_EYE_LINEAR);
  }
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_GEN_Q));
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_2D));
  EXPECT_EQ(rtt::getInt(GL_TEXTURE_BINDING_2D), GLint(mesh.light()->shadowTexture));
  GLint value = 0;
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE_ARB, &value);
  EXPECT_EQ(value, GL_COMPARE_R_TO_TEXTURE_ARB);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC_ARB, &value);
  EXPECT_EQ(value, GL_LEQUAL);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, &value);
  EXPECT_EQ(value, GL_CLAMP_TO_BORDER);
  glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &value);
  EXPECT_EQ(value, GL_LINEAR);
  EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
  shadowCompareEnd(mesh);
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_GEN_S));
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_GEN_Q));

  // With alphaTestShadow the compare result is alpha tested at 0.5.
  mesh.light()->alphaTestShadow = true;
  shadowCompareBegin(mesh);
  EXPECT_TRUE(glIsEnabled(GL_ALPHA_TEST));
  shadowCompareEnd(mesh);
  EXPECT_FALSE(glIsEnabled(GL_ALPHA_TEST));
  glDisable(GL_TEXTURE_2D);
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

TEST(Light, ProjectedTextureUsesTheSamePlanesWithoutCompare) {
  REQUIRE_WORLD_GL();
  Mesh mesh;
  mesh.light()->projectedTexture = 0;
  glActiveTextureARB(GL_TEXTURE2_ARB);
  glDisable(GL_DEPTH_TEST);
  projectedTextureBegin(mesh);
  EXPECT_TRUE(glIsEnabled(GL_TEXTURE_GEN_S));
  EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_EQ(rtt::getInt(GL_DEPTH_FUNC), GL_LEQUAL);
  EXPECT_EQ(rtt::getInt(GL_TEXTURE_BINDING_2D), 0);
  projectedTextureEnd(mesh);
  EXPECT_FALSE(glIsEnabled(GL_TEXTURE_GEN_T));
  glActiveTextureARB(GL_TEXTURE0_ARB);
  EXPECT_TRUE(testgl::drainErrors().empty());
}

// Draws the map of a light over a quad at depth `z` (in light space) and
// returns the map's centre depth.
float mapCentreDepthAfterDrawing(bool framebuffers) {
  ScopedFlag flag(hasFramebufferObject, framebuffers);
  World world;
  LightParameters p = wt::spotLight(Vector3(0, 0, -1));
  p.shadowMapSize = 128;
  testing::internal::CaptureStdout();
  const int index = world.addLight(p, 0.1f, 100.0f, wt::windowW, wt::windowH);
  testing::internal::GetCapturedStdout();
  Mesh& mesh = *world.objects[index];
  GLint viewport[4];
  glGetIntegerv(GL_VIEWPORT, viewport);
  int counter = 0;
  applyLight(mesh, &counter);
  shadowMapBegin(mesh);
  GLint inside[4];
  glGetIntegerv(GL_VIEWPORT, inside);
  EXPECT_EQ(inside[2], 128);
  EXPECT_EQ(rtt::getInt(GL_CULL_FACE_MODE), GL_FRONT);
  glClear(GL_DEPTH_BUFFER_BIT);
  glDisable(GL_CULL_FACE);
  glBegin(GL_QUADS);
  glVertex3f(-50, -50, -10);
  glVertex3f(50, -50, -10);
  glVertex3f(50, 50, -10);
  glVertex3f(-50, 50, -10);
  glEnd();
  shadowMapEnd(mesh);
  GLint after[4];
  glGetIntegerv(GL_VIEWPORT, after);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(after[i], viewport[i]);
  EXPECT_EQ(rtt::getInt(GL_CULL_FACE_MODE), GL_BACK);
  EXPECT_EQ(rtt::getInt(GL_SHADE_MODEL), GL_SMOOTH);
  EXPECT_FALSE(glIsEnabled(GL_POLYGON_OFFSET_FILL));
  EXPECT_EQ(rtt::getInt(GL_MATRIX_MODE), GL_MODELVIEW);

  std::vector<float> depth(128 * 128);
  glBindTexture(GL_TEXTURE_2D, mesh.light()->shadowTexture);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
  testgl::drainErrors();
  return depth[64 * 128 + 64];
}

TEST(Light, ShadowMapHoldsTheDepthSeenFromTheLightWithFramebuffers) {
  REQUIRE_WORLD_GL();
  REQUIRE_FRAMEBUFFERS();
  const float d = mapCentreDepthAfterDrawing(true);
  EXPECT_GT(d, 0.5f);
  EXPECT_LT(d, 0.999f);
}

TEST(Light, ShadowMapIsCopiedFromTheBackBufferWithoutFramebuffers) {
  REQUIRE_WORLD_GL();
  const float d = mapCentreDepthAfterDrawing(false);
  EXPECT_GT(d, 0.5f);
  EXPECT_LT(d, 0.999f);
  if (hasFramebufferObject) {
    ScopedFlag on(hasFramebufferObject, true);
    EXPECT_NEAR(mapCentreDepthAfterDrawing(true), d, 1e-3f) << "both ways give the same map";
  }
}

}  // namespace
