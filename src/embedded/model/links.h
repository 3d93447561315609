// What a document points to - cross-references, hypertext links, text insets, imported graphics - and what
// others may point to in it. The external part of an XML document's type and its external entities
// (xml_external.h) count as text insets, unparsed entities as graphics.
//
// Reading goes over the items once. A link keeps where its statement begins; pointing it to another file
// replaces the one string that holds the path, when the document is saved.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/link_statements.h"

namespace qelm::embedded::model {

struct Link {
  LinkKind kind = LinkKind::kCrossReference;
  std::uint32_t statement = kNoIndex;  // where it begins in the source
  Id element = 0;                      // that it is or stands in
  std::string file;                    // a path with "/", relative or not; empty: the document itself
  std::string target;                  // the name in that file; empty: the file as a whole
  std::string command;                 // of a hypertext link
  bool hidden = false;
  std::uint32_t item = kNoIndex;  // where it stands; a graphic on a page stands nowhere
};

// All links that are left, flow by flow; in a flow those outside its elements come last, and graphics that
// stand on pages and the external files of an XML document after all flows.
std::vector<Link> ReadLinks(const Document& document);

enum class TargetState : std::uint8_t { kShown, kHidden, kDeleted };

struct LinkTarget {
  LinkKind kind = LinkKind::kCrossReference;
  std::string name;
  Id element = 0;  // that it is or stands in
  TargetState state = TargetState::kShown;
  // Where it stands. A flow in a frame stands where the frame is anchored, others stand nowhere.
  std::uint32_t item = kNoIndex;
};

// What links may name, in the order of the document: unique ids of elements and markers of cross-references,
// named places of hypertext, names of flows. What was deleted since the document was read is among it.
std::vector<LinkTarget> ReadTargets(const Document& document);

// Both, by going over the document once.
struct LinksAndTargets {
  std::vector<Link> links;
  std::vector<LinkTarget> targets;
};
LinksAndTargets ReadLinksAndTargets(const Document& document);

// Points the link whose statement begins there to another file: a path with "/", relative to the document's
// folder or absolute, empty for the document itself. False when there is no such link in the source.
bool SetLinkFile(Document* document, LinkKind kind, std::uint32_t statement, std::string_view path);

}  // namespace qelm::embedded::model
