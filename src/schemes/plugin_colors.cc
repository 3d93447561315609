#include "schemes/plugin_colors.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

namespace qelm::schemes {
namespace {

constexpr std::string_view kBackground = "BkgdColor";

// How files begin that can hold the definition of a color: MIF, and FrameMaker's own form.
constexpr std::array<std::string_view, 2> kFormats = {"<MIFFile", "<MakerFile"};

// By their parts in percent: what the shipped documents define.
struct PluginColor {
  std::string_view name;
  double cyan;
  double magenta;
  double yellow;
  double black;
};
constexpr std::array kColors = {
    PluginColor{kBackground, 0, 0, 20, 5}, PluginColor{"Red", 0, 100, 100, 0},
    PluginColor{"Green", 100, 0, 100, 0},  PluginColor{"Blue", 100, 100, 0, 0},
    PluginColor{"Cyan", 100, 0, 0, 0},     PluginColor{"Magenta", 0, 100, 0, 0},
    PluginColor{"Yellow", 0, 0, 100, 0},
};

}  // namespace

bool LacksColors(host::Host& host, host::Id document) {
  if (host.catalogs.FindColor(document, kBackground) != host::kNone) return false;
  const std::optional<std::string> content =
      host.platform.ReadFile(std::string(host.documents.Path(document)));
  return content && std::any_of(kFormats.begin(), kFormats.end(),
                                [&content](std::string_view start) { return content->starts_with(start); });
}

bool AddPluginColors(host::Catalogs& catalogs, host::Id document) {
  return std::all_of(kColors.begin(), kColors.end(), [&](const PluginColor& color) {
    return catalogs.CreateColor(document, color.name, color.cyan, color.magenta, color.yellow, color.black) !=
           host::kNone;
  });
}

}  // namespace qelm::schemes
