// Fuzz target: the AC3D converter. Any bytes are parsed as an AC3D text; an
// object that parses is dumped as source and encoded in every storage form,
// and each encoded model is decoded again.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "geometry/A3dFile.h"
#include "geometry/Ac3dConverter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  Ac3dObject object;
  std::ostringstream messages;
  if (parseAc3d(text, "fuzz.ac", object, messages) != ac3dOk) return 0;
  volatile size_t dumped = ac3dSourceDump(object).size();
  (void)dumped;
  A3dModel model;
  model.creaseAngle = object.creaseAngle;
  for (int i = 0; i < 3; ++i) model.location[i] = object.location[i];
  model.positions = object.vertices;
  model.texCoords = object.verticeTextureCoords;
  model.indices = object.triangleIndices;
  for (int form = 0; form < 3; ++form) {
    // The converter's buffer of 2000000 bytes, as convertAc3d uses it.
    const std::vector<uint8_t> bytes = encodeA3d(model, form, form, 2000000);
    A3dModel again;
    decodeA3d(bytes, "fuzz.a3d", again);
  }
  return 0;
}
