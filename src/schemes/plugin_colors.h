// The colors that a main settings document defines beside those that every document has: editors show rules
// in them.
#pragma once

#include "host/interface/host.h"

namespace qelm::schemes {

// Whether the open document lacks the color "BkgdColor" and could hold it. An XML file has no place for the
// definition of a color.
bool LacksColors(host::Host& host, host::Id document);

// Defines the colors that are missing and leaves the others as they are. Nothing is saved. False, with the
// host's error set, when one could not be defined.
bool AddPluginColors(host::Catalogs& catalogs, host::Id document);

}  // namespace qelm::schemes
