#pragma once

#include "motherboard/CalibrationFile.h"

#include <string>

namespace vrk {

/// A text that the supply's DAC takes as a code: 00 to 7F.
bool isSupplyCode(const std::string& hex);

/// The first level of a calibration file that no panel can set, in words; empty if there is none.
std::string calibrationDamage(const CalibrationFile& file);

} // namespace vrk
