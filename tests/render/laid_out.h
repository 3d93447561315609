// Documents laid out in tests: what stands on which page, line by line.
#pragma once

#include <string>
#include <vector>

#include "embedded/model/files.h"
#include "embedded/render/flow_layout.h"

namespace qelm::embedded::render {

struct SeenLine {
  std::string text;
  double x = 0;  // where its first character begins
  double baseline = 0;
  double width = 0;
  bool repeated = false;
  model::Id flow = 0;
};

struct SeenPage {
  std::vector<SeenLine> lines;   // of flows, tables and footnotes
  std::vector<SeenLine> around;  // headers, footers
  std::vector<LaidText> texts;   // where lines stand, without them
  std::string Text() const {
    std::string text;
    for (const SeenLine& line : lines) text += line.text + "\n";
    return text;
  }
};

class LaidOut : public PageSink {
 public:
  explicit LaidOut(const std::string& mif) {
    std::string error;
    document = model::BuildMif(mif, &error);
    if (!document) throw std::invalid_argument(error);
    graphics = std::make_unique<Graphics>(*document, "/");
    setting = std::make_unique<Setting>(*document, fonts, *graphics);
    model::Counters counters;
    setting->numbers = model::NumberParagraphs(*document, {}, &counters);
    const PageDesigns designs(*document);
    FlowLayout layout(*setting, designs, "Arabic", 1, this);
    layout.Run();
  }

  bool Take(LaidPage&& page) override {
    for (const auto& [part, number] : page.note_numbers) setting->note_numbers[part] = number;
    SeenPage& seen = pages.emplace_back();
    for (const LaidText& text : page.body) {
      seen.texts.push_back({text.place, text.angle, text.flow, {}});
      for (const Mark& mark : text.marks) See(mark, text.flow, &seen.lines);
    }
    for (const LaidText& text : page.around) {
      for (const Mark& mark : text.marks) See(mark, text.flow, &seen.around);
    }
    return true;
  }

  // The lines of all pages, one after the other, each page's behind its number: "1: one|two".
  std::string Pages() const {
    std::string text;
    for (const SeenPage& page : pages) {
      text += text.empty() ? "" : "\n";
      for (std::size_t i = 0; i < page.lines.size(); ++i) text += (i == 0 ? "" : "|") + page.lines[i].text;
    }
    return text;
  }

  std::unique_ptr<model::Document> document;
  Fonts fonts;
  std::unique_ptr<Graphics> graphics;
  std::unique_ptr<Setting> setting;
  std::vector<SeenPage> pages;

 private:
  static void See(const Mark& mark, model::Id flow, std::vector<SeenLine>* lines) {
    if (mark.kind != Mark::Kind::kLine) return;
    const LaidLine& line = mark.paragraph->lines()[mark.ref];
    lines->push_back(
        {mark.paragraph->LineText(mark.ref), mark.x + line.x, mark.y, line.width, mark.repeated, flow});
  }
};

}  // namespace qelm::embedded::render
