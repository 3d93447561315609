// The string operations that the XPath engine and the rest of the plug-in stand on.
//
// Text is UTF-8. Positions are 0-based indexes of characters (see utf8.h) in signed 32 bits; -1 means "not
// found". Letter case is compared by folding each character, which never changes a position.
//
// Operations that scan carry a guard: after 10000 steps they stop and tell `guard` (where given) why, instead
// of running on over text that cannot be meant.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace qelm::common {

// Shows the text of a guard that fired, as an alert.
using GuardSink = std::function<void(std::string_view)>;

inline constexpr std::int32_t kNotFound = -1;

inline bool Equals(std::string_view left, std::string_view right) { return left == right; }
bool EqualsIgnoreCase(std::string_view left, std::string_view right);

// True for a missing text (null) and for the empty one.
inline bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }
inline bool IsEmpty(std::string_view text) { return text.empty(); }

// The first position at or after `start` (below 0: 0) at which `needle` occurs. An empty needle is found
// where the search starts, as long as that is not beyond the end.
std::int32_t IndexOf(std::string_view text, std::string_view needle, std::int32_t start, bool case_sensitive);

// The last position at or before `last` (below 1: anywhere) at which `needle` occurs. -1 as well when the
// guard fired.
std::int32_t bw_StrRIndexOf(std::string_view text, std::string_view needle, std::int32_t last,
                            bool case_sensitive, const GuardSink& guard = {});

// False when either text is empty.
bool StartsWith(std::string_view text, std::string_view prefix, bool case_sensitive);

// -1 when every opening mark has its closing mark. Else the position of the first closing mark that closes
// nothing, or of the outermost opening mark that is left open; where both marks are the same, of the last one
// that is left open. When the guard fires, the position that was reached.
std::int32_t ClausesAreTerminated(std::string_view text, std::string_view opening, std::string_view closing,
                                  const GuardSink& guard = {});

// Cuts the text to `keep` characters (below 1: to none). `cut_from_end` of 0 or more counts from the end
// instead: so many characters are cut off.
void Truncate(std::string& text, std::int32_t keep, std::int32_t cut_from_end = -1);

// Removes the first `count` characters; below 1 none.
void RemoveFirst(std::string& text, std::int32_t count);

// Overwrites every character inside quoted literals by `filler`, which must be one character; the marks stay.
// A literal begins at an apostrophe (`single_quotes`) or a double quotation mark (`double_quotes`), whichever
// comes first, and ends at the next of the same or with the text. When the guard fires, what follows stays.
void bw_XOutLiterals(std::string& text, std::string_view filler, bool single_quotes, bool double_quotes,
                     const GuardSink& guard = {});

// The quotation mark of a code: 1 and 2 the double curly ones, left and right, 3 and 4 the single curly ones,
// 5 the double quotation mark, 6 the apostrophe. Empty for other codes.
std::string_view QuoteCharacter(std::int32_t code);

}  // namespace qelm::common
