// The names that a batch gives to folders and files: patterns with placeholders.
//
// What a placeholder stands for is made safe for a file name before it goes in, so that a scheme called
// "A/B" gives one folder; the separators of the pattern itself stay separators.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/platform.h"

namespace qelm::filtering {

// What the placeholders stand for.
struct NameValues {
  std::string scheme_name;         // <scheme_name>
  std::int32_t scheme_number = 0;  // <scheme_num>
  std::string folder_name;         // <folder_name>: the output folder, without the folders above it
  std::string source_name;         // <book_name>, <src_file_name>: the source's file name, no extension
  host::LocalTime time;            // <year> <month> <day> <hour> <min> <minute> <sec> <second>
};

// The file name of a path without its last extension.
std::string NameWithoutExtension(std::string_view path);

// The text as part of a file name: what no system's names may hold becomes "_".
std::string SafeName(std::string_view text);

// A path by a pattern, in the platform's form. Placeholders that are not known stay, made safe.
std::string PathByPattern(std::string_view pattern, const NameValues& values);

// The first word in angle brackets that is no placeholder; empty when there is none.
std::string_view UnknownPlaceholder(std::string_view pattern);

// The name of one file by a pattern, with the extension (".pdf") behind it, once. A pattern that gives
// nothing gives the source's name.
std::string FileNameByPattern(std::string_view pattern, const NameValues& values, std::string_view extension);

// The folders of a pattern that are the same for all schemes: what stands before the first placeholder.
std::string FixedFolder(std::string_view pattern);

// `text` without each of the strings, and without white space at its ends.
std::string WithoutStrings(std::string_view text, const std::vector<std::string>& strings);

}  // namespace qelm::filtering
