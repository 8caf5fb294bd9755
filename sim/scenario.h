// Scenario files: an installation and what happens in it, as YAML.
#pragma once

#include "sim/sim_options.h"

#include <string>

namespace k740::sim {

/// Reads a scenario. Its devices, timeline and reactions are added to the options; its other values are for what the
/// options leave open.
/// @throws UsageError with file, line and what is wrong
void LoadScenario(const std::string& file, SimOptions& options);

} // namespace k740::sim
