#include "scenes/Scene.h"

Scene::Scene(const std::string& name_) : name(name_), sceneTimeMs(0), selectedParameter(0), blendMode(0) {}

Scene::~Scene() = default;

void Scene::addParameter(const std::string& parameterName, float* target, float step, float rangeLow,
                         float rangeHigh) {
  parameters.push_back(Parameter{parameterName, target, *target, step, rangeLow, rangeHigh});
}

Parameter* Scene::parameterByName(const std::string& parameterName) {
  for (Parameter& p : parameters)
    if (p.name == parameterName) return &p;
  return nullptr;
}

VirtualScene::VirtualScene(Demo* demo_, const std::string& name_) : Scene(name_), demo(demo_) {}

void VirtualScene::render(int32_t, int32_t) {}
