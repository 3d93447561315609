// Real documents: nothing that they show is lost or doubled on the way to pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "embedded/model/text_access.h"
#include "embedded/render/print.h"
#include "render/laid_out.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace qelm::embedded::render {
namespace {

// Without blanks, soft hyphens and forced line ends, of which some come back from a PDF as others.
void AppendVisible(std::string_view text, std::string* out) {
  const auto byte = [text](std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int second = byte(i + 1);
    const int third = byte(i + 2);
    if (byte(i) == 0xC2 && (second == 0xA0 || second == 0xAD)) {
      i += 1;
    } else if (byte(i) == 0xE2 && second == 0x80 && (third <= 0x8F || third == 0xA8 || third == 0xAF)) {
      i += 2;
    } else if (byte(i) > ' ') {
      out->push_back(text[i]);
    }
  }
}

// The text of a flow as its items have it, with the numbers of paragraphs and notes.
std::string VisibleText(const LaidOut& laid, const model::Flow& flow) {
  const model::Document& document = *laid.document;
  std::string text;
  for (std::uint32_t i = flow.first_item; i < flow.end_item; ++i) {
    const model::Item& item = document.items[i];
    if (model::HasConditions(item.kind) && !model::IsShown(document, item.conditions)) {
      i = model::EndOfItem(document, i) - 1;
      continue;
    }
    std::string piece;
    const bool hidden_row = item.kind == model::ItemKind::kPartBegin &&
                            !model::IsShown(document, document.parts[item.ref].conditions);
    if (hidden_row) i = document.parts[item.ref].end_item - 1;
    if (item.kind == model::ItemKind::kVariable) {
      piece = VariableText(document, model::Substatement(document, item, "VariableName"), {}, {});
    } else if (item.kind == model::ItemKind::kParagraphBegin && laid.setting->numbers[item.ref].numbered) {
      piece = laid.setting->numbers[item.ref].text;
    } else if (item.kind == model::ItemKind::kNoteAnchor && item.ref != 0) {
      piece = laid.setting->note_numbers.at(item.ref) + laid.setting->note_numbers.at(item.ref) +
              laid.setting->notes.number_suffix;
    } else if (!hidden_row) {
      model::AppendItemText(document, item, &piece);
    }
    AppendVisible(piece, &text);
  }
  return text;
}

constexpr const char* kSymbolFonts[] = {"<FFamily `Wingdings'>", "<FFamily `ZapfDingbats'>",
                                        "<FFamily `Symbol'>"};

std::ptrdiff_t Characters(const std::string& text) {
  return std::count_if(text.begin(), text.end(),
                       [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; });
}

std::string SeenText(const LaidOut& laid, model::Id flow) {
  std::string seen;
  for (const SeenPage& page : laid.pages) {
    for (const SeenLine& line : page.lines) {
      if (line.flow == flow && !line.repeated) AppendVisible(line.text, &seen);
    }
  }
  return seen;
}

// From where two texts differ; empty when they do not.
std::string Difference(const std::string& seen, const std::string& visible) {
  const auto [one, other] = std::mismatch(seen.begin(), seen.end(), visible.begin(), visible.end());
  if (one == seen.end() && other == visible.end()) return {};
  return "'" + std::string(one, seen.end()).substr(0, 80) + "' for '" +
         std::string(other, visible.end()).substr(0, 80) + "'";
}

// The text of the pages of a PDF in the order in which they are drawn; nothing where there is no program to
// read it.
std::vector<std::string> ExtractedPages(const std::string& pdf) {
  testing::TempFolder folder;
  folder.Write("a.pdf", pdf);
  const std::string command =
      "pdftotext -raw -enc UTF-8 " + folder.File("a.pdf") + " " + folder.File("a.txt");
  std::vector<std::string> pages;
  if (std::system(command.c_str()) != 0) return pages;
  const std::string text = folder.Read("a.txt");
  for (std::size_t begin = 0, end = 0; (end = text.find('\f', begin)) != std::string::npos; begin = end + 1) {
    AppendVisible(std::string_view(text).substr(begin, end - begin), &pages.emplace_back());
  }
  return pages;
}

// What stands on a page is in the PDF, in order; names of images and the texts in graphics come between.
void ExpectInPdf(const LaidOut& laid, const std::string& path) {
  PdfPrint print({});
  PrintSource source;
  source.document = laid.document.get();
  source.path = path;
  source.numbers = laid.setting->numbers;
  print.Add(source);
  std::string why;
  const std::vector<std::string> pages = ExtractedPages(print.Finish(&why));
  if (pages.empty()) return;
  ASSERT_EQ(pages.size(), laid.pages.size());
  for (std::size_t i = 0; i < pages.size(); ++i) {
    std::string seen;
    for (const SeenLine& line : laid.pages[i].lines) AppendVisible(line.text, &seen);
    std::size_t found = 0;
    for (const char c : pages[i]) found += found < seen.size() && seen[found] == c ? 1 : 0;
    EXPECT_EQ(seen.substr(found, 80), "") << "page " << i + 1;
  }
}

TEST(Samples, EveryCharacterIsOnAPageOnce) {
  testing::EachSample([](const std::filesystem::path& path, const std::string& bytes) {
    SCOPED_TRACE(path.string());
    const LaidOut laid(bytes);
    EXPECT_EQ(laid.setting->notices, std::vector<std::string>());
    const auto records = PageDesigns(*laid.document).recorded();
    if (records > 5) {
      EXPECT_NEAR(static_cast<double>(laid.pages.size()), static_cast<double>(records),
                  static_cast<double>(records) * 0.15);
    }
    ExpectInPdf(laid, path.string());
    // Symbols are other characters than the letters that the file has for them, and as many.
    const bool symbols =
        std::any_of(std::begin(kSymbolFonts), std::end(kSymbolFonts),
                    [&](const char* family) { return bytes.find(family) != std::string::npos; });
    for (model::Id id = 1; id < laid.document->flows.size(); ++id) {
      if (laid.document->flows[id].kind != model::FlowKind::kBody) continue;
      SCOPED_TRACE(id);
      std::string seen = SeenText(laid, id);
      std::string visible = VisibleText(laid, laid.document->flows[id]);
      if (symbols) {
        EXPECT_EQ(Characters(seen), Characters(visible));
        continue;
      }
      // Footnotes stand elsewhere than in the order of the text.
      if (!laid.setting->note_numbers.empty()) {
        std::sort(seen.begin(), seen.end());
        std::sort(visible.begin(), visible.end());
      }
      EXPECT_EQ(Difference(seen, visible), "");
    }
  });
}

}  // namespace
}  // namespace qelm::embedded::render
