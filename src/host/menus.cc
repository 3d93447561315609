#include "host/menus.h"

#include <array>
#include <map>
#include <string>

#include "host/plugin.h"

namespace qelm {
namespace {

// Labels of menus and commands in the language file.
constexpr std::string_view kSection = "Menus";

constexpr std::string_view kMain = "QELM_Menu_Main";
constexpr std::string_view kSchemes = "QELM_Menu_Schemes";
constexpr std::string_view kColoring = "QELM_Menu_Coloring";
constexpr std::string_view kFiltering = "QELM_Menu_Filtering";
constexpr std::string_view kValidation = "QELM_Menu_Validation";
constexpr std::string_view kLanguage = "QELM_Menu_Language";
constexpr std::string_view kTools = "QELM_Menu_Tools";

struct Menu {
  std::string_view name;
  std::string_view label;
};
constexpr std::array kMenus = {
    Menu{kMain, "QELM"},           Menu{kSchemes, "Schemes And Settings"}, Menu{kColoring, "Coloring"},
    Menu{kFiltering, "Filtering"}, Menu{kValidation, "Validation"},        Menu{kLanguage, "Language"},
    Menu{kTools, "Tools"},
};

// One line of a menu: a menu or a command by its name, or a separator. A separator with nothing behind it, as
// when the command there does not exist, is left out.
struct Line {
  std::string_view menu;
  std::string_view entry;
};
constexpr std::string_view kSeparator;
constexpr std::array kLines = {
    Line{kSchemes, "QELM_Cmd_ClassicSchemeEdit"},
    Line{kSchemes, "QELM_Cmd_XPathSchemeEdit"},
    Line{kSchemes, "QELM_Cmd_AttrListEdit"},
    Line{kSchemes, "QELM_Cmd_ColorListEdit"},
    Line{kSchemes, kSeparator},
    Line{kSchemes, "QELM_Cmd_SetMainSettingsFileLoc"},
    Line{kSchemes, "QELM_Cmd_OpenMainSettingsFile"},
    Line{kSchemes, "QELM_Cmd_OpenMainSettingsFileLocal"},
    Line{kSchemes, kSeparator},
    Line{kSchemes, "QELM_Cmd_ReadLocalSettings"},
    Line{kSchemes, "QELM_Cmd_OpenLocalSettings"},
    Line{kColoring, "QELM_Cmd_ColorSelection"},
    Line{kColoring, "QELM_Cmd_ColorDoc"},
    Line{kColoring, "QELM_Cmd_ColorBook"},
    Line{kColoring, kSeparator},
    Line{kColoring, "QELM_Cmd_UncolorDoc"},
    Line{kColoring, "QELM_Cmd_UncolorBook"},
    Line{kColoring, kSeparator},
    Line{kColoring, "QELM_Cmd_SetColoringScheme"},
    Line{kColoring, "QELM_Cmd_PrintColoringSchemeParms"},
    Line{kFiltering, "QELM_Cmd_FilterDoc"},
    Line{kFiltering, "QELM_Cmd_FilterBook"},
    Line{kFiltering, "QELM_Cmd_BatchFilter"},
    Line{kFiltering, kSeparator},
    Line{kFiltering, "QELM_Cmd_RestoreDoc"},
    Line{kFiltering, "QELM_Cmd_RestoreBook"},
    Line{kFiltering, kSeparator},
    Line{kFiltering, "QELM_Cmd_SetFilterScheme"},
    Line{kFiltering, "QELM_Cmd_PrintFilterSchemeParms"},
    Line{kValidation, "QELM_Cmd_ValidateSelection"},
    Line{kValidation, "QELM_Cmd_ValidateDoc"},
    Line{kValidation, "QELM_Cmd_ValidateBook"},
    Line{kValidation, kSeparator},
    Line{kValidation, "QELM_Cmd_SetValidationScheme"},
    Line{kValidation, "QELM_Cmd_PrintValSchemeParms"},
    Line{kLanguage, "QELM_Cmd_SetLanguage"},
    Line{kLanguage, kSeparator},
    Line{kLanguage, "QELM_Cmd_CreateDlgStringsFile"},
    Line{kLanguage, "QELM_Cmd_UpdateDlgStringsFile"},
    Line{kLanguage, "QELM_Cmd_OpenLanguageFile"},
    Line{kTools, "QELM_Cmd_CheckTabularScheme"},
    Line{kTools, kSeparator},
    Line{kTools, "QELM_int_Cmd_MigratePloverineSettings"},
    Line{kTools, "QELM_int_Cmd_MigrateVORB1.0Settings"},
    Line{kTools, kSeparator},
    Line{kTools, "QELM_int_Cmd_Test"},
    Line{kMain, kSchemes},
    Line{kMain, kColoring},
    Line{kMain, kFiltering},
    Line{kMain, kValidation},
    Line{kMain, kLanguage},
    Line{kMain, kTools},
    Line{kMain, kSeparator},
    Line{kMain, "QELM_Cmd_HelpAbout"},
    Line{kMain, "QELM_Cmd_VersionWarning"},
    Line{"!MakerMainMenu", kMain},
    Line{"!BookMainMenu", kMain},
    Line{"!StructureContextMenu", "QELM_Cmd_ColorSelection"},
    Line{"!StructureContextMenu", "QELM_Cmd_ValidateSelection"},
    Line{"!TableTextContextMenu", "QELM_Cmd_ColorSelection"},
    Line{"!TableTextContextMenu", "QELM_Cmd_ValidateSelection"},
    Line{"!StructuredTextContextMenu", "QELM_Cmd_ColorSelection"},
    Line{"!StructuredTextContextMenu", "QELM_Cmd_ValidateSelection"},
};

class MenuBuilder {
 public:
  explicit MenuBuilder(Plugin& plugin) : plugin_(plugin), user_(plugin.host.user) {}

  void DefineCommands() {
    for (const CommandRow& command : AllCommands()) {
      if (!CommandExists(command, plugin_)) continue;
      plugin_.defined_commands.set(static_cast<std::size_t>(command.number));
      Keep(command.name,
           user_.DefineCommand(command.number, command.name, Label(command.label), command.shortcut));
    }
  }
  void DefineMenus() {
    for (const Menu& menu : kMenus) Keep(menu.name, user_.DefineMenu(menu.name, Label(menu.label)));
  }
  void FillMenus() {
    for (const Line& line : kLines) Add(line);
  }
  void TellWhatFailed() {
    if (failed_.empty()) return;
    messages::Messenger& messenger = plugin_.messenger;
    messenger.AlertFormatted("QELM_MSG_GEN_21", messenger.Format("QELM_MSG_GEN_21", failed_));
  }

 private:
  std::string Label(std::string_view english) { return plugin_.messenger.Translated(kSection, english); }
  void Keep(std::string_view name, host::Id id) {
    if (id == host::kNone) return Failed(name);
    ids_.emplace(name, id);
  }
  void Failed(std::string_view name) { failed_.append(failed_.empty() ? "" : "\n").append(name); }

  void Add(const Line& line) {
    if (line.entry == kSeparator) {
      separator_due_ = true;
      return;
    }
    const auto found = ids_.find(line.entry);
    const bool other_menu = line.menu != menu_;
    if (other_menu) separator_due_ = false;
    menu_ = line.menu;
    if (found == ids_.end()) return;
    if (separator_due_ && !user_.AddSeparator(line.menu)) Failed(line.menu);
    separator_due_ = false;
    if (!user_.AddToMenu(line.menu, found->second)) Failed(line.entry);
  }

  Plugin& plugin_;
  host::UserInterface& user_;
  std::map<std::string_view, host::Id> ids_;
  std::string_view menu_;
  bool separator_due_ = false;
  std::string failed_;
};

}  // namespace

void DefineMenus(Plugin& plugin) {
  MenuBuilder builder(plugin);
  builder.DefineCommands();
  builder.DefineMenus();
  builder.FillMenus();
  builder.TellWhatFailed();
}

}  // namespace qelm
