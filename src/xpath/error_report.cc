#include "xpath/error_report.h"

#include "common/utf8.h"

namespace qelm::xpath {
namespace {

constexpr std::size_t kLineCharacters = 60;

}  // namespace

std::vector<MarkedLine> MarkPosition(std::string_view expression, std::int32_t position) {
  std::vector<MarkedLine> lines;
  std::int64_t distance = position;
  while (!expression.empty() || lines.empty()) {
    const std::string_view text = common::FirstCharacters(expression, kLineCharacters);
    expression.remove_prefix(text.size());
    std::string marker;
    for (std::size_t left = common::CountCharacters(text); left > 0 && distance >= 0; --left, --distance) {
      marker.push_back(distance > 0 ? '.' : '^');
    }
    lines.push_back({std::string(text), marker});
  }
  return lines;
}

void bw_ReportXPathError(Engine::State& state, std::string_view expression, const ParseError& error) {
  std::string text;
  for (const MarkedLine& line : MarkPosition(expression, error.position)) {
    text.append(line.text).append("\n").append(line.marker).append("\n");
  }
  text.append("\n").append(state.messenger.Get(error.id));
  state.messenger.AlertFormatted(error.id, text);
}

}  // namespace qelm::xpath
