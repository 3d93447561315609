// The copy of a main settings document that is kept before its format is converted.
#pragma once

#include <string>
#include <string_view>

#include "host/interface/host.h"

namespace qelm::schemes {

// The name under which the document at `path` is kept before its conversion to `version` ("3.00"): the path
// with an ending of its own, and a number from 2 to 99 where there are such files already. Empty when all
// these names are taken.
std::string BackupName(host::Platform& platform, const std::string& path, std::string_view version);

// Saves the document under that name and then under its own, and opens it again from there, so that what is
// converted is what lies in the file: `document` is then another id, 0 when it could not be opened again.
// `backup` is the file that was made; empty when no name was free, which is no failure. False when something
// could not be saved or opened, and for a document that was never saved.
bool BackUp(host::Host& host, std::string_view version, host::Id* document, std::string* backup);

}  // namespace qelm::schemes
