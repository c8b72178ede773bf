#include <gtest/gtest.h>

#include "scenes/Scene.h"

namespace {
class StepScene : public Scene {
 public:
  StepScene() : Scene("stepper") {}
  void render(int32_t, int32_t stepMs) override { sceneTimeMs += stepMs; }
  float zoom = 0.5f;
  float fov = 45;
};
}  // namespace

TEST(Scene, StartsAtZero) {
  StepScene s;
  EXPECT_EQ(s.name, "stepper");
  EXPECT_EQ(s.sceneTimeMs, 0);
  EXPECT_EQ(s.selectedParameter, 0);
  EXPECT_EQ(s.blendMode, 0);
  EXPECT_TRUE(s.parameters.empty());
}

TEST(Scene, DefaultIsTheValueAtRegistration) {
  StepScene s;
  s.addParameter("cameraZoom", &s.zoom, 0.0025f, 0, 0);
  s.zoom = 2.0f;
  Parameter* p = s.parameterByName("cameraZoom");
  ASSERT_NE(p, nullptr);
  EXPECT_FLOAT_EQ(p->defaultValue, 0.5f);
  EXPECT_FLOAT_EQ(*p->value, 2.0f);
  EXPECT_EQ(p->value, &s.zoom);
  EXPECT_FLOAT_EQ(p->step, 0.0025f);
}

TEST(Scene, ParametersKeepRegistrationOrderAndFirstMatchWins) {
  StepScene s;
  s.addParameter("a", &s.zoom, 1, 0, 0);
  s.addParameter("b", &s.fov, 0.25f, 0, 0);
  s.addParameter("a", &s.fov, 2, 0, 0);
  ASSERT_EQ(s.parameters.size(), 3u);
  EXPECT_EQ(s.parameters.front().name, "a");
  EXPECT_EQ(s.parameterByName("a")->value, &s.zoom);
  EXPECT_EQ(s.parameterByName("missing"), nullptr);
}

TEST(Scene, ParameterPointersSurviveMoreRegistrations) {
  StepScene s;
  s.addParameter("a", &s.zoom, 1, 0, 0);
  Parameter* first = s.parameterByName("a");
  for (int i = 0; i < 100; ++i) s.addParameter("p" + std::to_string(i), &s.fov, 1, 0, 0);
  EXPECT_EQ(first, s.parameterByName("a"));
}

TEST(Scene, NegativeStepMovesTheClockBack) {
  StepScene s;
  s.render(0, 300);
  s.render(0, -700);
  EXPECT_EQ(s.sceneTimeMs, -400);
}

TEST(VirtualScene, DrawsNothingAndKeepsTheDemo) {
  VirtualScene v(nullptr, "virtual0_a");
  v.render(100, 100);
  EXPECT_EQ(v.sceneTimeMs, 0);
  EXPECT_EQ(v.demo, nullptr);
}
