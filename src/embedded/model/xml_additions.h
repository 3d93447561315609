// Writing what was added to an XML document (additions.h): where in the source which bytes are replaced.
//
// A new element stands as its neighbours do: on a line of its own with their indentation where they have
// that, else directly beside them. What a paragraph is in FrameMaker has a mark before it; its format is
// nothing that XML could hold.
#pragma once

#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/xml_saver_plan.h"
#include "embedded/xml/encoding.h"

namespace qelm::embedded::model {

// In the order of their places.
std::vector<XmlEdit> AdditionEdits(const Document& document, xml::Encoding encoding);

}  // namespace qelm::embedded::model
