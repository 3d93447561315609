// A document's structure and text in a normal form: what a reader would see of them, whatever statements the
// file wrote them in. Two documents with the same elements, attributes, text and effective properties give
// the same events.
//
// A flow is told as a stream, so that its size and depth cost no memory: element by element in document
// order, with the text between them in runs, each as long as its properties stay the same.
#pragma once

#include <string_view>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// A stretch of text with one set of properties, or one object that is anchored in the text and is no element.
struct DumpRun {
  std::string_view text;    // decoded; holds until the next event
  std::string_view object;  // "table", "footnote", "frame", "marker", "cross-reference"; empty for text
  CharacterProperties properties;
  std::uint16_t conditions = 0;

  bool SameProperties(const DumpRun& other) const;
};

class DumpSink {
 public:
  virtual ~DumpSink() = default;
  // `row_conditions` is the condition set of a table row itself, 0 for none.
  virtual void BeginElement(Id element, std::uint16_t row_conditions) = 0;
  virtual void EndElement(Id element) = 0;
  virtual void Run(const DumpRun& run) = 0;
};

// Tells the sink a flow: its element tree, or for a flow without elements its text, with a line end behind
// each paragraph.
void DumpFlow(const Document& document, Id flow, DumpSink* sink);

}  // namespace qelm::embedded::model
