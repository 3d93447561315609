// Loading schemes by category and name from the open main settings document.
#pragma once

#include "common/result_codes.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "schemes/scheme.h"
#include "xpath/engine.h"

namespace qelm::schemes {

// Results of LoadScheme.
inline constexpr std::int32_t kLoaded = common::kDone;
inline constexpr std::int32_t kSchemeNotFound = common::kSchemeNotFound;
inline constexpr std::int32_t kInvalidNames = common::kInvalidSchemeNames;

// Whether a category or scheme can be loaded by that name: not empty, "<none>" or the text that stands for a
// name that could not be read.
bool IsSchemeName(std::string_view name);

// Loads a scheme of `scheme->kind` into `scheme`. Returns kLoaded; kInvalidNames for names that are empty,
// "<none>" or no names at all, nothing changed; kSchemeNotFound, with the scheme emptied and its name
// "<none>", when the document holds none of that name, and then says so when `report` is set.
std::int32_t LoadScheme(xpath::Engine& engine, messages::Messenger& messenger, host::Id main_settings,
                        std::string_view category, std::string_view name, bool report, Scheme* scheme);

// Categories and schemes of a main settings document in document order, for lists and messages.
struct SchemeListing {
  std::string category;
  std::string name;
  SchemeKind kind = SchemeKind::kFilter;
  bool is_xpath = false;
};
std::vector<SchemeListing> ListSchemes(xpath::Engine& engine, host::Id main_settings);

}  // namespace qelm::schemes
