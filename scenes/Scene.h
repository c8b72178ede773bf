// Scene: the abstract base of everything the timeline plays, and the
// Parameters that connect a scene's numbers to the flow charts and the script.
//
// Time is in signed 32-bit milliseconds. render(timeMs, stepMs) receives the
// Demo's current time, rewind offset included; stepMs may be negative.
#pragma once
#include <cstdint>
#include <list>
#include <string>

class Demo;

struct Parameter {
  std::string name;     // unique within the scene, such as "cameraZoom"
  float* value;         // the bound member; always holds the live value
  float defaultValue;   // what *value held at registration; the script may rewrite it
  float step;           // editing step, as the scene gave it
  float rangeLow;       // passed by every scene as 0; read by nothing
  float rangeHigh;      // passed by every scene as 0; read by nothing
};

class Scene {
 public:
  explicit Scene(const std::string& name);
  virtual ~Scene();
  virtual void render(int32_t timeMs, int32_t stepMs) = 0;

  // Appends a Parameter bound to target; its default is *target now, so a
  // member must hold its default before it is registered.
  void addParameter(const std::string& name, float* target, float step, float rangeLow, float rangeHigh);
  // The first Parameter of that name, or null.
  Parameter* parameterByName(const std::string& name);

  std::string name;
  int32_t sceneTimeMs;        // the scene's own clock; stands still while the scene is off
  int32_t selectedParameter;  // the editor's selection
  // Registration order. A list, so that pointers to Parameters stay valid
  // while more are added.
  std::list<Parameter> parameters;
  int32_t blendMode;          // 0: alpha blended by the composition; else a drawSlot mode
};

// The stand-in of an effect's result on the timeline: a scene that draws nothing.
class VirtualScene : public Scene {
 public:
  VirtualScene(Demo* demo, const std::string& name);
  void render(int32_t timeMs, int32_t stepMs) override;

  Demo* demo;  // not owned
};
