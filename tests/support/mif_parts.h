// The parts of a test's MIF document that stand around its text: catalogs and pages, and how statements are
// laid out.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/mif_files.h"

namespace qelm::testing {

// Lines of MIF, indented by depth.
class Lines {
 public:
  std::string text;
  void Add(int depth, const std::string& line) {
    text += std::string(static_cast<std::size_t>(depth), ' ') + line + "\n";
  }
  void Open(int depth, const std::string& name) { Add(depth, "<" + name + " "); }
  void Close(int depth, const std::string& name) { Add(depth, "> # end of " + name); }
};

// Text as a string statement's data.
std::string Quoted(std::string_view text);

std::vector<std::string> Split(const std::string& text, char separator);

// Whether the color catalog has the name.
bool IsColor(const std::string& name);

struct MifCondition {
  std::string name;
  bool hidden = false;
};

// `definitions` gives the kind of each element by its tag.
std::string MifCatalogs(const std::vector<MifCondition>& conditions,
                        const std::map<std::string, std::string>& definitions, const MifFile& file);

// A page with one text frame each.
struct MifPage {
  MifFlow::Place place;
  int frame;  // the text frame's ID
};

// Master pages, reference pages, body pages with their numbers, and the hidden page (`hidden_frame` 0: none).
std::string MifPages(const std::vector<MifPage>& pages, int hidden_frame);

}  // namespace qelm::testing
