// What a document points to: cross-references, hypertext links, text insets and graphics by reference.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

enum class LinkKind : std::uint8_t { kCrossReference, kHypertext, kTextInset, kGraphic };

struct Link {
  LinkKind kind = LinkKind::kCrossReference;
  Id object = kNone;    // the cross-reference, marker, inset or graphic
  Id element = kNone;   // the element that it is or stands in; none outside the structure
  std::string path;     // the file, absolute and in the platform's form; empty: the document itself
  std::string target;   // the name in that file; empty: the file as a whole
  std::string command;  // of a hypertext link: its command word ("gotolink"); "URL": `target` is an address
  bool hidden = false;  // it stands in text that is not shown
};

// Something in a document that links may name.
struct LinkTarget {
  enum class State : std::uint8_t {
    kShown,
    kHidden,
    kDeleted,  // it was there when the document was opened
  };
  LinkKind kind = LinkKind::kCrossReference;  // of the links that may name it
  std::string name;
  Id element = kNone;  // the element that it is or stands in
  State state = State::kShown;
};

class Links {
 public:
  virtual ~Links() = default;

  // All links of a document, in document order, those outside the structure after the others of their flow.
  // False with the error code set for an invalid id. `links` is replaced.
  virtual bool Read(Id document, std::vector<Link>* links) = 0;

  // Points a link to another file (absolute, the platform's form). It is written relative to the place that
  // the document's own path says. False with the error code set when that is not possible.
  virtual bool SetPath(Id document, const Link& link, const std::string& path) = 0;

  // What links may name in a document, in document order. A name may be there several times. False with the
  // error code set for an invalid id. `targets` is replaced.
  virtual bool ReadTargets(Id document, std::vector<LinkTarget>* targets) = 0;

  // Both at once, for hosts that go over the document for each.
  virtual bool ReadAll(Id document, std::vector<Link>* links, std::vector<LinkTarget>* targets) {
    return Read(document, links) && ReadTargets(document, targets);
  }

  // Whether the document holds what a link of this kind may name as its target, shown or hidden.
  virtual bool HasTarget(Id document, LinkKind kind, std::string_view target) = 0;
};

}  // namespace qelm::host
