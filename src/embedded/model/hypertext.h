// The commands of hypertext markers: what a marker names as its place, and what it points to.
//
//   newlink NAME              this place is called NAME
//   gotolink FILE:NAME        goes to a place; without a file to one in the same document
//   openlink FILE:firstpage   the same, in a window of its own
//   gotopage FILE:3           goes to a page
//   openObjectId FILE:5 NUMBER  goes to the object of that number
//   message openfile FILE       opens a file
//   message URL http://...    opens an address; an address alone means the same
//
// A name may have colons (`openlink b.fm:one: two`): the file ends behind its extension.
#pragma once

#include <string>
#include <string_view>

namespace qelm::embedded::model {

struct Hypertext {
  enum class Kind : unsigned char { kNone, kPlace, kLink, kAddress };
  Kind kind = Kind::kNone;  // kNone: a command that neither names a place nor points to one
  std::string_view command;
  std::string_view file;    // as written; empty: the same document
  std::string_view target;  // the place's name, or the address; empty for a page or a file as a whole
};

// The views are into `text`.
Hypertext ReadHypertext(std::string_view text);

// The command of a link with another file, which is written as the old one was: device-independent or with
// "/". Empty for what is no link to a place.
std::string WithFile(std::string_view text, std::string_view path);

// Whether every document has a place of that name.
bool IsPageName(std::string_view target);

}  // namespace qelm::embedded::model
