// Changing the main settings document element by element, for conversions: definitions, elements with a text,
// and attributes that are taken out.
//
// The first thing that fails is remembered, and nothing is done after it: callers join the steps by && and
// ask for the failure at the end. Nothing here reads a text, so that a host which brings its text up to date
// for readers does so once and not for every element.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/host.h"
#include "schemes/element_forms.h"

namespace qelm::schemes {

class SettingsWriter {
 public:
  SettingsWriter(host::Host& host, host::Id document) : host_(host), document_(document) {}

  // What failed: a message, and the tag of the element concerned, its only argument. Empty while all is well.
  struct Failure {
    std::string_view message;
    std::string_view tag;
  };
  const Failure& failure() const { return failure_; }
  bool Failed() const { return !failure_.message.empty(); }

  // The highest element; 0 when there is none. The elements of a tag in document order, as the document was
  // when it was first asked for any.
  host::Id Root();
  std::vector<host::Id> All(std::string_view tag);
  // The first child with the tag; 0 when there is none.
  host::Id Child(host::Id parent, std::string_view tag);

  // Makes definitions, those that exist included.
  bool Define(std::span<const ElementForm> forms);
  // Changes a definition that has to be there.
  bool Redefine(const ElementForm& form);

  // A new child before `before` (0: as the last), with a text. 0 when it cannot be made.
  host::Id Insert(host::Id parent, host::Id before, std::string_view tag, std::string_view text = {});
  // One child with a text for each entry.
  bool InsertEach(host::Id parent, std::string_view tag, const std::vector<std::string>& texts);

  // The values of an element's attribute; none when it has no such attribute.
  std::vector<std::string> Values(host::Id element, std::string_view attribute);
  // The first of them.
  std::string Value(host::Id element, std::string_view attribute);
  // Takes attributes away; the others stay as they are.
  bool Clear(host::Id element, std::span<const std::string_view> attributes);

  bool Fail(std::string_view message, std::string_view tag);

 private:
  host::Id Definition(std::string_view tag);

  host::Host& host_;
  host::Id document_;
  Failure failure_;
  host::ElementColumns tree_;
  bool tree_read_ = false;
  host::AttributeBuffer attributes_;
};

// The messages of failures.
inline constexpr std::string_view kCannotCreateElement = "QELM_MSG_CONVERT_2";
inline constexpr std::string_view kCannotFindElement = "QELM_MSG_CONVERT_3";
inline constexpr std::string_view kCannotFindDefinition = "QELM_MSG_CONVERT_4";
inline constexpr std::string_view kCannotChangeDefinition = "QELM_MSG_CONVERT_5";
inline constexpr std::string_view kCannotChangeElement = "QELM_MSG_CONVERT_6";

}  // namespace qelm::schemes
