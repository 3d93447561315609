#include "host/commands.h"

#include <algorithm>
#include <array>

#include "host/document_commands.h"
#include "host/help_commands.h"
#include "host/language_commands.h"
#include "host/plugin.h"
#include "host/session_schemes.h"
#include "host/settings_commands.h"

namespace qelm {
namespace {

using enum CommandFor;
using coloring::Command;
using filtering::TargetKind;
using schemes::SchemeKind;

template <Command command>
std::int32_t Color(Plugin& plugin) {
  return ColorOnCommand(plugin, command);
}
template <SchemeKind kind>
std::int32_t PrintParameters(Plugin& plugin) {
  return PrintActiveScheme(plugin, kind);
}
template <SchemeKind kind>
std::int32_t SetScheme(Plugin& plugin) {
  return SetActiveScheme(plugin, kind);
}
template <TargetKind target>
std::int32_t Filter(Plugin& plugin) {
  return FilterOnCommand(plugin, target);
}
template <TargetKind target>
std::int32_t Restore(Plugin& plugin) {
  return RestoreOnCommand(plugin, target);
}
template <ValidationScope scope>
std::int32_t Validate(Plugin& plugin) {
  return ValidateOnCommand(plugin, scope);
}
template <MainSettingsPart part>
std::int32_t Edit(Plugin& plugin) {
  return EditMainSettings(plugin, part);
}

constexpr std::array<CommandRow, 38> kCommands = {{
    {1, "QELM_int_Cmd_Test", "TEST", "", kInternal, RunSelfTest},
    {27, "QELM_Cmd_SetMainSettingsFileLoc", "Set Main Settings File Location...", "", kEveryone,
     ChooseMainSettings},
    {36, "QELM_Cmd_OpenMainSettingsFile", "Open Main Settings File (Master Copy)...", "", kEveryone,
     OpenMasterCopy},
    {37, "QELM_Cmd_OpenMainSettingsFileLocal", "Open Main Settings File (Local Copy)...", "", kEveryone,
     OpenLocalCopy},
    {2, "QELM_Cmd_ClassicSchemeEdit", "\"Classic\" Schemes...", "", kEveryone,
     Edit<MainSettingsPart::kClassicSchemes>},
    {22, "QELM_Cmd_XPathSchemeEdit", "XPath Schemes...", "", kEveryone,
     Edit<MainSettingsPart::kXPathSchemes>},
    {3, "QELM_Cmd_AttrListEdit", "Attribute Library...", "", kEveryone,
     Edit<MainSettingsPart::kAttributeLibrary>},
    {4, "QELM_Cmd_ColorListEdit", "Colors...", "", kEveryone, Edit<MainSettingsPart::kColorList>},
    {26, "QELM_Cmd_ReadLocalSettings", "Read Local Settings From Settings File...", "", kEveryone,
     ReadLocalSettingsOnCommand},
    {15, "QELM_Cmd_OpenLocalSettings", "Open Local Settings File...", "", kEveryone, OpenLocalSettings},
    {5, "QELM_Cmd_ColorSelection", "Color Selection... (Esc 1 1)", "\\!11", kEveryone,
     Color<Command::kColorSelection>},
    {6, "QELM_Cmd_ColorDoc", "Color Document... (Esc 1 2)", "\\!12", kEveryone,
     Color<Command::kColorDocument>},
    {7, "QELM_Cmd_ColorBook", "Color Book...", "", kEveryone, Color<Command::kColorBook>},
    {20, "QELM_Cmd_UncolorDoc", "Uncolor Document... (Esc 1 3)", "\\!13", kEveryone,
     Color<Command::kUncolorDocument>},
    {21, "QELM_Cmd_UncolorBook", "Uncolor Book...", "", kEveryone, Color<Command::kUncolorBook>},
    {8, "QELM_Cmd_SetColoringScheme", "Set Active Scheme...", "", kEveryone,
     SetScheme<SchemeKind::kColoring>},
    {35, "QELM_Cmd_PrintColoringSchemeParms", "Print Active Scheme Parameters To Console", "", kEveryone,
     PrintParameters<SchemeKind::kColoring>},
    {9, "QELM_Cmd_FilterDoc", "Filter Document...", "", kEveryone, Filter<TargetKind::kDocument>},
    {10, "QELM_Cmd_FilterBook", "Filter Book...", "", kEveryone, Filter<TargetKind::kBook>},
    {39, "QELM_Cmd_BatchFilter", "Batch Filter...", "", kBatch, BatchOnCommand},
    {32, "QELM_Cmd_SetFilterScheme", "Set Active Scheme...", "", kEveryone, SetScheme<SchemeKind::kFilter>},
    {33, "QELM_Cmd_PrintFilterSchemeParms", "Print Active Scheme Parameters To Console", "", kEveryone,
     PrintParameters<SchemeKind::kFilter>},
    {11, "QELM_Cmd_ValidateSelection", "Validate Selection...", "", kEveryone,
     Validate<ValidationScope::kSelection>},
    {12, "QELM_Cmd_ValidateDoc", "Validate Document...", "", kEveryone, Validate<ValidationScope::kDocument>},
    {13, "QELM_Cmd_ValidateBook", "Validate Book...", "", kEveryone, Validate<ValidationScope::kBook>},
    {14, "QELM_Cmd_SetValidationScheme", "Set Active Scheme...", "", kEveryone,
     SetScheme<SchemeKind::kValidation>},
    {34, "QELM_Cmd_PrintValSchemeParms", "Print Active Scheme Parameters To Console", "", kEveryone,
     PrintParameters<SchemeKind::kValidation>},
    {16, "QELM_Cmd_RestoreDoc", "Restore Document...", "", kEveryone, Restore<TargetKind::kDocument>},
    {17, "QELM_Cmd_RestoreBook", "Restore Book...", "", kEveryone, Restore<TargetKind::kBook>},
    {25, "QELM_Cmd_CheckTabularScheme", "Check Tabular Scheme Data...", "", kEveryone, CheckTable},
    {18, "QELM_int_Cmd_MigratePloverineSettings", "Migrate Ploverine Settings (DEPRECATED)...", "", kInternal,
     TellNoMigration},
    {24, "QELM_int_Cmd_MigrateVORB1.0Settings", "Migrate VORB 1.0 Main Settings... (DEPRECATED)...", "",
     kInternal, TellNoMigration},
    {28, "QELM_Cmd_SetLanguage", "Set Language...", "", kEveryone, SetLanguage},
    {29, "QELM_Cmd_CreateDlgStringsFile", "Create Dialog Strings File...", "", kEveryone, CreateLanguageFile},
    {30, "QELM_Cmd_UpdateDlgStringsFile", "Update Dialog Strings File...", "", kEveryone, UpdateLanguageFile},
    {31, "QELM_Cmd_OpenLanguageFile", "Open Language File(s)...", "", kEveryone, OpenLanguageFiles},
    {19, "QELM_Cmd_HelpAbout", "About QELM...", "", kEveryone, ShowAbout},
    {38, "QELM_Cmd_VersionWarning", "FRAMEMAKER VERSION WARNING!...", "", kOtherHosts, WarnOfHostVersion},
}};

}  // namespace

std::span<const CommandRow> AllCommands() { return kCommands; }

const CommandRow* FindCommand(std::int32_t number) {
  const auto* row = std::find_if(kCommands.begin(), kCommands.end(),
                                 [number](const CommandRow& command) { return command.number == number; });
  return row != kCommands.end() ? row : nullptr;
}

const CommandRow* FindCommand(std::string_view name) {
  const auto* row = std::find_if(kCommands.begin(), kCommands.end(),
                                 [name](const CommandRow& command) { return command.name == name; });
  return row != kCommands.end() ? row : nullptr;
}

bool CommandExists(const CommandRow& command, Plugin& plugin) {
  const std::string& licence = plugin.settings.qelm_license_type;
  switch (command.exists_for) {
    case kEveryone:
      return true;
    case kBatch:
      return licence == kBatchLicence || licence == kInternalLicence;
    case kInternal:
      return licence == kInternalLicence;
    case kOtherHosts:
      return plugin.host.session.MajorVersion() != kExpectedHostVersion;
  }
  return false;
}

std::int32_t RunCommand(Plugin& plugin, std::int32_t number) {
  const CommandRow* command = FindCommand(number);
  if (command == nullptr || !plugin.defined_commands[static_cast<std::size_t>(number)]) return common::kDone;
  RefreshMainSettings(plugin);
  return command->run(plugin);
}

}  // namespace qelm
