#include "tree.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace qelm::bench {
namespace {

constexpr std::array<std::string_view, 48> kWords = {
    "pump",     "valve",    "pressure", "gasket", "rotor",    "housing", "inlet",   "outlet",
    "Dichtung", "Gehäuse",  "Öldruck",  "sensor", "operator", "before",  "after",   "switch",
    "check",    "replace",  "tighten",  "open",   "close",    "remove",  "install", "measure",
    "the",      "a",        "with",     "of",     "in",       "and",     "or",      "to",
    "flow",     "rate",     "maximum",  "value",  "maintain", "oil",     "level",   "shaft",
    "bearing",  "coupling", "motor",    "cable",  "ground",   "voltage", "display", "menu"};

// Five of eight name "beginner", the word that the benchmarks keep.
constexpr std::array<std::string_view, 8> kAudiences = {
    "beginner",       "expert",       "beginner expert",       "admin",
    "beginner admin", "expert admin", "beginner expert admin", "beginner"};
constexpr std::array<std::string_view, 3> kProducts = {"P100", "P200", "P100 P300"};

constexpr int kDeepestSection = 5;

// A small generator of our own: the standard library's distributions differ between implementations.
class Random {
 public:
  // A number below `limit`.
  std::uint32_t Below(std::uint32_t limit) {
    state_ += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebU;
    return static_cast<std::uint32_t>((mixed ^ (mixed >> 31)) % limit);
  }
  bool Percent(std::uint32_t share) { return Below(100) < share; }

 private:
  std::uint64_t state_ = 20;
};

class TreeMaker {
 public:
  TreeMaker(std::uint64_t elements, const Parts& parts, Writer& writer)
      : left_(elements), parts_(parts), writer_(writer) {}

  void Make() {
    Begin(Kind::kContainer, "manual", {});
    while (left_ > 0) {
      if (left_ >= 40) {
        Chapter();
      } else {
        Paragraph("para", 0);
      }
    }
    writer_.End(Kind::kContainer, "manual");
  }

 private:
  using Attributes = std::vector<Attribute>;

  void Begin(Kind kind, std::string_view tag, const Attributes& attributes) {
    --left_;
    writer_.Begin(kind, tag, attributes);
  }

  void TextElement(Kind kind, std::string_view tag, const Attributes& attributes, std::uint32_t words) {
    Begin(kind, tag, attributes);
    writer_.Text(Words(words));
    writer_.End(kind, tag);
  }

  std::string Words(std::uint32_t count) {
    std::string text;
    for (std::uint32_t i = 0; i < count; ++i) {
      if (i > 0) text += ' ';
      text += kWords[random_.Below(kWords.size())];
    }
    return text;
  }

  Attributes ForWhom(std::uint32_t share) {
    Attributes attributes;
    if (random_.Percent(share)) {
      attributes.push_back({"audience", kAudiences[random_.Below(kAudiences.size())]});
    }
    if (random_.Percent(10)) attributes.push_back({"product", kProducts[random_.Below(kProducts.size())]});
    if (random_.Percent(5)) attributes.push_back({"level", "advanced"});
    return attributes;
  }

  void Chapter() {
    Begin(Kind::kContainer, "chapter", {});
    TextElement(Kind::kParagraph, "title", {}, 3);
    const std::uint64_t end = left_ - std::min<std::uint64_t>(left_, 400 + random_.Below(400));
    while (left_ > end + 8) Section(1);
    if (parts_.threads && random_.Percent(15)) Thread();
    writer_.End(Kind::kContainer, "chapter");
  }

  // A chain of replies, each in the one before and with a remark of its own.
  void Thread() {
    const std::uint64_t most = 50 + random_.Below(100);
    std::uint64_t depth = 0;
    for (; depth < most && left_ > 2; ++depth) {
      Begin(Kind::kContainer, "reply", {});
      TextElement(Kind::kParagraph, "remark", ForWhom(10), 5);
    }
    for (; depth > 0; --depth) writer_.End(Kind::kContainer, "reply");
  }

  void Section(int level) {
    Attributes attributes = ForWhom(10);
    const std::string id = "s" + std::to_string(++sections_);
    attributes.insert(attributes.begin(), {"id", id});
    Begin(Kind::kContainer, "section", attributes);
    TextElement(Kind::kParagraph, "title", {}, 2 + random_.Below(4));
    const std::uint32_t blocks = 3 + random_.Below(6);
    for (std::uint32_t i = 0; i < blocks && left_ > 30; ++i) Block(level);
    writer_.End(Kind::kContainer, "section");
  }

  void Block(int level) {
    const std::uint32_t choice = random_.Below(100);
    if (choice < 15 && level < kDeepestSection) {
      Section(level + 1);
    } else if (choice < 23 && parts_.tables) {
      Table();
    } else if (choice < 35) {
      List();
    } else if (choice < 42) {
      Paragraph("note", 15);
    } else {
      Paragraph("para", 15);
    }
  }

  void List() {
    Begin(Kind::kContainer, "list", ForWhom(5));
    const std::uint32_t items = 2 + random_.Below(5);
    for (std::uint32_t i = 0; i < items && left_ > 0; ++i) {
      TextElement(Kind::kParagraph, "item", ForWhom(15), 4 + random_.Below(10));
    }
    writer_.End(Kind::kContainer, "list");
  }

  // The paragraph and what stands in it, never more elements than are left.
  void Paragraph(std::string_view tag, std::uint32_t share) {
    Begin(Kind::kParagraph, tag, ForWhom(share));
    writer_.Text(Words(6 + random_.Below(20)));
    if (parts_.inlines && left_ > 0 && random_.Percent(30)) {
      writer_.Text(" ");
      TextElement(Kind::kInline, "em", ForWhom(10), 1 + random_.Below(3));
      writer_.Text(" " + Words(4));
    }
    if (parts_.hidden && random_.Percent(2)) writer_.HiddenText(" " + Words(8));
    if (parts_.references) References();
    writer_.Text(".");
    writer_.End(Kind::kParagraph, tag);
  }

  void References() {
    if (left_ > 0 && sections_ > 0 && random_.Percent(6)) {
      const std::string target = "s" + std::to_string(1 + random_.Below(sections_));
      writer_.Text(", see ");
      TextElement(Kind::kReference, "ref", {{"linkend", target}}, 2);
    }
    if (left_ > 0 && random_.Percent(4)) {
      Begin(Kind::kMarker, "index", {{"term", kWords[random_.Below(kWords.size())]}});
      writer_.End(Kind::kMarker, "index");
    }
  }

  void Table() {
    const std::uint32_t rows = 2 + random_.Below(6);
    if (left_ < 8 + (rows + 1) * (kColumns + 1)) return;
    Begin(Kind::kTable, "table", ForWhom(10));
    TextElement(Kind::kTableTitle, "tabletitle", {}, 3);
    Begin(Kind::kTableHead, "head", {});
    Row({}, 1);
    writer_.End(Kind::kTableHead, "head");
    Begin(Kind::kTableBody, "body", {});
    for (std::uint32_t i = 0; i < rows; ++i) Row(i == 0 ? Attributes{} : ForWhom(15), 2 + random_.Below(5));
    writer_.End(Kind::kTableBody, "body");
    writer_.End(Kind::kTable, "table");
  }

  void Row(const Attributes& attributes, std::uint32_t words) {
    Begin(Kind::kRow, "row", attributes);
    for (int i = 0; i < kColumns; ++i) TextElement(Kind::kCell, "cell", {}, words);
    writer_.End(Kind::kRow, "row");
  }

  std::uint64_t left_;
  std::uint32_t sections_ = 0;
  Parts parts_;
  Writer& writer_;
  Random random_;
};

}  // namespace

void MakeTree(std::uint64_t elements, const Parts& parts, Writer& writer) {
  TreeMaker(elements, parts, writer).Make();
}

}  // namespace qelm::bench
