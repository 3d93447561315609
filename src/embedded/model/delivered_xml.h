// The XML that a document is delivered as: for readers who have neither QELM nor FrameMaker.
//
// What conversion to XML keeps in processing instructions, so that it comes back, becomes part of the tree or
// goes: hidden text is left out, and elements of which nothing else was there with it; cross-references and
// images get their paths as attributes, or become elements where they were none; properties of text, colors
// and conditions go. All other markup stays as it is, the document type and namespaces of an XML file
// included. A document from MIF gets a document type in which all that it uses is declared, so that it is
// valid.
//
// One pass over the markup, with a stack of the elements that are open: what is written of an element is
// taken back at its end when it turned out to be hidden.
#pragma once

#include <map>
#include <set>
#include <string>

#include "embedded/model/document.h"

namespace qelm::embedded::model {

// What a document type has to declare.
struct Declarations {
  std::map<std::string, std::set<std::string>> used;                     // attributes by element
  std::map<std::string, std::map<std::string, std::string>> attributes;  // what is declared of them

  // The document type, empty when nothing was used.
  std::string Text(const std::string& root) const;
};

struct DeliveredXml {
  bool is_own = false;  // the document is XML itself, and
  std::string prolog;   // this stands before its highest element
  std::string body;
  std::string root;  // its name
};

// Where delivered XML stands.
struct Delivery {
  std::string path;             // the file, from which relative paths are written
  std::set<std::string> files;  // documents that stand in it: a path to one of them is a place in the file
};

// The document as it is to stand there; `text` is the document converted to XML, or saved as the XML that it
// is. What it uses is added to `declarations`; a document that is XML itself brings a document type of its
// own.
DeliveredXml Deliver(const Document& document, std::string text, const Delivery& delivery,
                     Declarations* declarations);

// A whole file.
std::string FileOf(const DeliveredXml& xml, const Declarations& declarations);

}  // namespace qelm::embedded::model
