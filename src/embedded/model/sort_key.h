// The order of entries in an alphabetic list.
//
// Each text gets a key, and keys compare byte by byte. Letters come without regard to case and accents, so
// that "Élan" stands among the words in E; texts that differ in nothing else are told apart by what they
// are. Words are compared one by one: "pump room" comes before "pumping". Symbols, digits and letters
// are three groups, whose order the list may say.
#pragma once

#include <string>
#include <string_view>

namespace qelm::embedded::model {

class SortOrder {
 public:
  // `order` is the text of a list's sort order, with the blocks <$symbols>, <$numerics> and <$alphabetics>;
  // groups that it does not name come last. `ignored` are characters that do not count.
  explicit SortOrder(std::string_view order = {}, std::string_view ignored = {});

  // The key by which a text sorts. Keys of texts that read the same to a reader looking for a word are the
  // same.
  std::string Key(std::string_view text) const;

 private:
  char ranks_[3];  // of symbols, numbers and letters
  std::u32string ignored_;
};

}  // namespace qelm::embedded::model
