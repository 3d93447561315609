// Choosing a scheme by "CATEGORY/NAME", as the command line writes it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "schemes/scheme.h"

namespace qelm::cli {

class Failure;
class Session;

// "filter", "coloring", "validation".
std::string_view KindName(schemes::SchemeKind kind);

// "CATEGORY/NAME" of a scheme.
std::string FullName(std::string_view category, std::string_view name);

// Throws Failure when no main settings document is open.
void RequireMainSettings(Session& session);

// Loads the scheme of that kind. A name without "/" is looked for in the default category of the local
// settings. Both names may hold a "/" themselves. False when there is none.
bool LoadByName(Session& session, std::string_view full_name, schemes::SchemeKind kind,
                schemes::Scheme* scheme);

// The failure for a name under which there is no scheme of these kinds, with the nearest name that there is.
Failure NoSuchScheme(Session& session, std::string_view full_name,
                     const std::vector<schemes::SchemeKind>& kinds);

// Makes the scheme the active one of its kind and tries its expressions. Throws Failure when there is no such
// scheme, or when the engine refuses an expression.
schemes::Scheme& ActivateScheme(Session& session, std::string_view full_name, schemes::SchemeKind kind);

}  // namespace qelm::cli
