// Scripts used by the script tests: one that uses every construct the reader
// knows, in the writer's form, for the scenes of FlowFixture.
#pragma once
#include <string>

namespace flowtest {

// Defaults of every parameter, three pulses (one without input), an
// out. source, a pulse used in two charts (its input written at both places),
// sin, mul, sum, float and demotime, a sink whose chart is a lone float.
inline const std::string& everyConstructScript() {
  static const std::string text =
      "parameter_defaults {\n"
      " bordersWithin.cameraZoom = ( 1.25 )\n"
      " bordersWithin.cameraFOV = ( 70 )\n"
      " bordersWithin.glowBlurAmount = ( 0.0025 )\n"
      " bordersWithme.cameraZoom = ( 1e+06 )\n"
      " bordersWithme.cameraFOV = ( -30 )\n"
      "}\n"
      "pulses {\n"
      " pulse[ 0 ] = ( 0.25, 0.5, 0.25, 0, 0, 2 )\n"
      " pulse[ 1 ] = ( 0.05, 0.1, 0.3, 12, 4, 0.46875 )\n"
      " pulse[ 2 ] = ( 0, 1, 0, 1e-05, 1, 3 )\n"
      "}\n"
      "parameters {\n"
      " in.bordersWithin.cameraFOV = sum ( float ( 75 ) , mul ( float ( 5 ) , pulse[ 0 ] ( demotime (  )  )  )  )  \n"
      " in.bordersWithin.cameraZoom = mul ( out.bordersWithin.cameraFOV (  ) , float ( 0.0133333 ) , sin ( mul ( "
      "demotime (  ) , float ( 3.14159 )  )  )  )  \n"
      " in.bordersWithme.cameraFOV = sum ( pulse[ 0 ] ( demotime (  )  ) , pulse[ 1 ] ( sum ( demotime (  ) , "
      "float ( -0.5 )  )  ) , pulse[ 2 ] (  )  )  \n"
      " in.bordersWithin.glowBlurAmount = float ( 0.123457 )  \n"
      "}\n";
  return text;
}

}  // namespace flowtest
