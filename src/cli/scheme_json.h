// A scheme as a JSON object: names, kind, family, switches, and its rules, attributes or expressions.
#pragma once

#include <nlohmann/json.hpp>

#include "schemes/scheme.h"

namespace qelm::cli {

nlohmann::ordered_json SchemeJson(const schemes::Scheme& scheme);

}  // namespace qelm::cli
