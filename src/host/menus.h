// The menus of the plug-in in its host: one menu with a sub-menu for each kind of work, in the menu bars of
// documents and books, and the commands on the selection in the host's context menus.
#pragma once

namespace qelm {

class Plugin;

// Defines the commands that exist in this session (CommandExists), in their order, and the menus, with labels
// in the current language. From then on the commands can be run. What the host did not take is told once, by
// its names; the rest works.
void DefineMenus(Plugin& plugin);

}  // namespace qelm
