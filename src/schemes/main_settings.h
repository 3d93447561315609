// The main settings document: the structured document that holds all schemes, the attribute library, the
// color list and the history of expressions. It is opened without being shown and stays open for the session.
#pragma once

#include <string>
#include <string_view>

#include "config/read_settings.h"
#include "host/interface/host.h"
#include "messages/messenger.h"
#include "xpath/engine.h"

namespace qelm::schemes {

// Whether an open document is a main settings document: it has scheme categories where they belong, or its
// highest element bears one of the two names that main settings have had.
bool IsMainSettings(host::Host& host, xpath::Engine& engine, host::Id document);

// Whether an open document has the format of before 3.00, in which no schemes are found: they have to be
// converted (format_conversion.h).
bool IsOldMainSettings(host::Host& host, host::Id document);

// Whether it has categories of XPath schemes where they belong: what a document must have to be chosen as the
// main settings document.
bool HasXPathCategories(xpath::Engine& engine, host::Id document);

// Opens the main settings document at `path`, not shown. 0, after an alert when `report` is set and with
// `status` (may be null) saying why, when it cannot be opened or is no main settings document; in the second
// case it is closed again, unless it was open before, and the status is kOpened. One of an old format is
// opened with an alert that says how to convert it, when `report` is set and it was not open before.
host::Id OpenMainSettings(host::Host& host, xpath::Engine& engine, messages::Messenger& messenger,
                          const std::string& path, bool report, host::OpenStatus* status = nullptr);

// The check by which the local settings choose their main settings path. A document that passes stays open.
config::MainSettingsCheck CheckMainSettingsFile(host::Host& host, xpath::Engine& engine,
                                                messages::Messenger& messenger, bool report);

// A name as a literal of an expression, in the quotation marks that it does not hold itself. Empty for a name
// that holds both: no expression can name it.
std::string NameLiteral(std::string_view name);

}  // namespace qelm::schemes
