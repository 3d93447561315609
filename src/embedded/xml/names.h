// Names: what may be an XML name, and any other name as one; and the same for the data of processing
// instructions.
//
// A character that cannot be in an XML name is written `_xHHHH_`, with its code in hexadecimal. An underscore
// that would be read as the beginning of such an escape is written `_x005F_`, so that every name comes back
// as it was.
#pragma once

#include <string>
#include <string_view>

namespace qelm::embedded::xml {

// Whether a character may be in a name, or begin one. Beyond ASCII these are the letters that all editions of
// XML agree on.
bool IsNameStart(char32_t c);
bool IsNameCharacter(char32_t c);

bool IsName(std::string_view text);
// A name whose first character need not be one that begins names.
bool IsNameToken(std::string_view text);

// `name` as an XML name: itself when it is one.
std::string ToName(std::string_view name);
// The same for one of several values that blanks separate; an empty one is `_x_`.
std::string ToToken(std::string_view value);

// Takes the escapes back that ToName or ToToken made. What need not have been escaped stays as it is, so that
// names that only look like escapes are kept.
std::string FromName(std::string_view name);
std::string FromToken(std::string_view token);

// Text and attribute values with the characters that XML has no way to write escaped, and back.
std::string ToContent(std::string_view text);
std::string FromContent(std::string_view text);

// Any text as the data of a processing instruction, and back: `?>`, controls and blanks at the ends are
// escaped.
std::string ToData(std::string_view text);
std::string FromData(std::string_view data);

}  // namespace qelm::embedded::xml
