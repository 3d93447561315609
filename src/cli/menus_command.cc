// qelm menus: the menus and commands as the plug-in has defined them with the host.
#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/command.h"
#include "cli/session.h"
#include "host/menus.h"

namespace qelm::cli {
namespace {

using embedded::adapter::MenuEntry;
using embedded::adapter::MenuItem;
using Json = nlohmann::ordered_json;

// Menus hold menus; a plug-in that put one into itself would never come to an end.
constexpr std::size_t kDeepest = 8;

Json CommandJson(const MenuItem& item) {
  return {{"kind", "command"},
          {"number", item.number},
          {"name", item.name},
          {"label", item.label},
          {"shortcut", item.shortcut.empty() ? Json(nullptr) : Json(item.shortcut)}};
}

class MenuTree {
 public:
  explicit MenuTree(const embedded::adapter::ScriptedUserInterface& user) : user_(user) {}

  // The menus of the host to which something was added, in the order in which that happened first.
  std::vector<std::string> HostMenus() const {
    std::vector<std::string> names;
    for (const MenuEntry& entry : user_.Entries()) {
      if (!entry.menu.starts_with('!')) continue;
      if (std::find(names.begin(), names.end(), entry.menu) == names.end()) names.push_back(entry.menu);
    }
    return names;
  }

  Json EntriesOf(const std::string& menu, std::size_t depth = 0) const {
    Json list = Json::array();
    for (const MenuEntry& entry : user_.Entries()) {
      if (entry.menu == menu && depth < kDeepest) list.push_back(EntryJson(entry, depth));
    }
    return list;
  }

  void AppendText(const std::string& menu, std::size_t depth, std::string* text) const {
    for (const MenuEntry& entry : user_.Entries()) {
      if (entry.menu == menu && depth < kDeepest) AppendLine(entry, depth, text);
    }
  }

 private:
  const MenuItem& Item(const MenuEntry& entry) const { return user_.Items()[entry.item - 1]; }

  Json EntryJson(const MenuEntry& entry, std::size_t depth) const {
    if (entry.item == host::kNone) return {{"kind", "separator"}};
    const MenuItem& item = Item(entry);
    if (item.number != 0) return CommandJson(item);
    return {{"kind", "menu"},
            {"name", item.name},
            {"label", item.label},
            {"entries", EntriesOf(item.name, depth + 1)}};
  }

  void AppendLine(const MenuEntry& entry, std::size_t depth, std::string* text) const {
    constexpr std::size_t kColumn = 58;
    std::string line(2 * depth + 2, ' ');
    if (entry.item == host::kNone) {
      *text += line + "---\n";
      return;
    }
    const MenuItem& item = Item(entry);
    line += item.label;
    if (item.number == 0) {
      *text += line + "\n";
      return AppendText(item.name, depth + 1, text);
    }
    line.resize(std::max(line.size(), kColumn), ' ');
    *text += line + "  " + std::to_string(item.number) + "  " + item.name + "\n";
  }

  const embedded::adapter::ScriptedUserInterface& user_;
};

class MenusCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override {
    return AddCommand(program, {"menus", "Print the menus and commands of the plug-in",
                                "Labels are in the language in force; behind them stand number and name.",
                                "qelm menus --set QELM_LICENSE_TYPE=INTERNAL"});
  }

  Outcome Run(Session& session) override {
    // The start of a user's session has defined them, but is not needed to look at them.
    if (!session.options().install) DefineMenus(session.plugin());
    const MenuTree tree(session.user());
    Outcome outcome;
    Json menus = Json::array();
    for (const std::string& menu : tree.HostMenus()) {
      menus.push_back({{"menu", menu}, {"entries", tree.EntriesOf(menu)}});
      outcome.text += menu + "\n";
      tree.AppendText(menu, 0, &outcome.text);
    }
    Json commands = Json::array();
    for (const MenuItem& item : session.user().Items()) {
      if (item.number != 0) commands.push_back(CommandJson(item));
    }
    outcome.members = {{"menus", std::move(menus)}, {"commands", std::move(commands)}};
    return outcome;
  }
};

}  // namespace

std::unique_ptr<Command> MakeMenusCommand() { return std::make_unique<MenusCommand>(); }

}  // namespace qelm::cli
