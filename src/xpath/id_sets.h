// Sets and maps over element ids. Ids are dense, so a set is a bitmap and a map an array, both in pages that
// are made when they are first written to: a search that touches a few elements of a large document costs
// only these.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/interface/types.h"

namespace qelm::xpath {

class IdSet {
 public:
  bool Contains(host::Id id) const {
    const std::size_t page = id / kPageBits;
    return page < pages_.size() && pages_[page] != nullptr && (pages_[page]->words[Word(id)] & Bit(id)) != 0;
  }

  // False when the id was in the set already.
  bool Insert(host::Id id) {
    std::uint64_t& word = Writable(id / kPageBits).words[Word(id)];
    if ((word & Bit(id)) != 0) return false;
    word |= Bit(id);
    return true;
  }

  // Empties the set. The pages stay, for the next use.
  void Clear() {
    for (Page* page : used_) *page = Page();
    used_.clear();
  }

 private:
  static constexpr std::size_t kPageBits = 4096;
  struct Page {
    std::array<std::uint64_t, kPageBits / 64> words{};
    bool used = false;
  };

  static std::size_t Word(host::Id id) { return id % kPageBits / 64; }
  static std::uint64_t Bit(host::Id id) { return std::uint64_t{1} << (id % 64); }

  Page& Writable(std::size_t number) {
    if (number >= pages_.size()) pages_.resize(number + 1);
    if (pages_[number] == nullptr) pages_[number] = std::make_unique<Page>();
    Page& page = *pages_[number];
    if (!page.used) {
      page.used = true;
      used_.push_back(&page);
    }
    return page;
  }

  std::vector<std::unique_ptr<Page>> pages_;
  std::vector<Page*> used_;
};

// A 32-bit value for each id, 0 where none was set.
class IdMap {
 public:
  std::uint32_t Get(host::Id id) const {
    const std::size_t page = id / kPageSize;
    return page < pages_.size() && pages_[page] != nullptr ? (*pages_[page])[id % kPageSize] : 0;
  }

  void Set(host::Id id, std::uint32_t value) {
    const std::size_t page = id / kPageSize;
    if (page >= pages_.size()) pages_.resize(page + 1);
    if (pages_[page] == nullptr) pages_[page] = std::make_unique<Page>();
    (*pages_[page])[id % kPageSize] = value;
  }

 private:
  static constexpr std::size_t kPageSize = 1024;
  using Page = std::array<std::uint32_t, kPageSize>;
  std::vector<std::unique_ptr<Page>> pages_;
};

}  // namespace qelm::xpath
