// Main settings documents from before format 3.00 as FrameMaker saved them: values in attributes, lists of
// strings some of them, one paragraph for each element that holds no other, and the element definitions of
// that time.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qelm::testing {

struct OldElement {
  std::string tag;
  std::vector<std::pair<std::string, std::vector<std::string>>> attributes = {};
  std::vector<OldElement> children = {};
};

// The document in MIF.
std::string OldSettings(const OldElement& root);

// A document with everything that conversions meet: classic and XPath schemes of all kinds, lists, attributes
// that are empty or missing, and others that have nothing to do with it.
OldElement OldSettingsExample();

}  // namespace qelm::testing
