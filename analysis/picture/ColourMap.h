// Levels and differences as colours.
#pragma once

#include "analysis/picture/Canvas.h"

namespace synth::analysis {

// From night blue (0, the faintest) through violet and orange to white (1, the loudest); outside it is held.
Colour levelColour(double level);

// From blue (-1, less) through black (0, alike) to red (1, more); outside it is held.
Colour differenceColour(double difference);

}  // namespace synth::analysis
