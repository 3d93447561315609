// Bringing a main settings document of an earlier format up to date, in place.
//
// Before format 3.00 names, switches, values and expressions were attributes of the elements, lists of
// strings some of them; from 3.00 on they are elements inside. 3.04 gave rules a background color. A
// conversion works on the open document and saves it at its end; before that a backup is kept beside it. When
// it fails the document is left open as far as it was converted, and its file as it was.
//
//   ConversionOptions options{.plugin_folder = folder};
//   while (FormatOf(host, document) == SettingsFormat::kBefore300) ...
#pragma once

#include <cstdint>
#include <string>

#include "host/interface/host.h"
#include "messages/messenger.h"

namespace qelm::schemes {

enum class SettingsFormat : std::uint8_t {
  kBefore300,  // values are in attributes
  k300,        // rules have no background color
  kCurrent,
};

// The format of an open main settings document. The highest element's name tells those from before 3.00. A
// document without any rule is of format 3.00 only where its definitions say so.
SettingsFormat FormatOf(host::Host& host, host::Id document);

struct ConversionOptions {
  bool show_progress = true;
  bool backup = true;
  bool save = true;           // false: the caller saves the document
  std::string plugin_folder;  // where the template lies
};

struct ConversionResult {
  std::string error;   // in words; empty when the document was converted
  std::string backup;  // the file that was kept; empty: none

  bool Done() const { return error.empty(); }
};

// The two conversions. `document` is another id afterwards when a backup was made, and 0 when the document
// could not be opened again after it. Elements that have the new form already stay as they are.
ConversionResult ConvertTo300(host::Host& host, messages::Messenger& messenger,
                              const ConversionOptions& options, host::Id* document);
ConversionResult ConvertTo304(host::Host& host, messages::Messenger& messenger,
                              const ConversionOptions& options, host::Id* document);

}  // namespace qelm::schemes
