// Telling the user why an expression was rejected: the expression in lines of 60 characters, each with a line
// under it that marks the place with a caret, and the message of the error.
//
// The report is a document, made from a template of the plug-in's folder whose elements say how it looks.
// While it is open, later rejections are added to it: each behind a heading of its own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xpath/engine_state.h"

namespace qelm::xpath {

// A line of the expression and the line that marks it: "." up to the place, "^" at it, nothing behind it.
struct MarkedLine {
  std::string text;
  std::string marker;
};

// `position` is a character index.
std::vector<MarkedLine> MarkPosition(std::string_view expression, std::int32_t position);

// The report, when it is open; 0 otherwise.
host::Id OpenErrorReport(const Engine::State& state);

// Writes a rejected expression into the report, which is opened where it is not, and shows it. Without a
// template, or with one that lacks the heading, an alert says so instead.
void bw_ReportXPathError(Engine::State& state, std::string_view expression, const ParseError& error);

}  // namespace qelm::xpath
