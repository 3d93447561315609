// The text that a variable shows.
//
// A variable's definition is text with building blocks in it: `Page <$curpagenum> of <$lastpagenum>`. Those
// about the document and about time are known here; those about the page that is being laid out (`$paratext`,
// `$marker1`, `$tblsheetnum` ...) are asked for. `<Emphasis>` switches the character format and is no text.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/model/document.h"
#include "embedded/model/numbering.h"
#include "embedded/model/reference_text.h"

namespace qelm::embedded::render {

// One moment for a whole print, so that all of its pages say the same. Parts as people say them: months and
// days from 1, weekday 0 is Sunday.
struct PrintTime {
  int year = 1970;
  int month = 1;
  int day = 1;
  int weekday = 4;
  int hour = 0;
  int minute = 0;
  int second = 0;
};
// Seconds since 1970, in UTC.
PrintTime TimeOfSeconds(std::int64_t seconds);
// Now in local time; SOURCE_DATE_EPOCH in the environment, in UTC, where it is set, so that output can be
// reproduced.
PrintTime CurrentTime();

// What is only known on a page.
struct PageFacts {
  std::string number;          // of the page, in its style
  std::string last;            // of the last page
  std::string count;           // of pages; empty: not known
  model::PlaceNumbers places;  // volume, chapter, section, subsection
  // The value of a block that depends on what is on the page, by its name without `$` ("paratext",
  // "marker1", "tblsheetnum") and what is in its brackets. Missing: empty.
  std::function<std::string(std::string_view block, std::string_view argument)> running;
};

// The text of the variable of that name, with its switches of the character format. A name that the document
// does not define shows itself.
std::vector<model::StyledRun> VariableRuns(const model::Document& document, std::string_view name,
                                           const PageFacts& facts, const PrintTime& time);
// The same as plain text.
std::string VariableText(const model::Document& document, std::string_view name, const PageFacts& facts,
                         const PrintTime& time);

}  // namespace qelm::embedded::render
