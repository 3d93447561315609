// Local settings: read from a file's text, and one from a command line.
#include "config/read_settings.h"

#include <cstddef>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qelm::config;
  const std::string text(reinterpret_cast<const char*>(data), size);
  LocalSettings settings;
  ReadSettingsText(text, &settings);
  SettingOverride override;
  std::string error;
  ParseOverride(text, &override, &error);
  return 0;
}
