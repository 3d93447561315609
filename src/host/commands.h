// The commands of the plug-in: one table, in the order in which they are defined with the host. The host
// knows a command by its name and calls it by its number; the numbers are fixed and no positions in a menu.
//
// Some commands exist only for certain licence types (QELM_LICENSE_TYPE) or host versions. Which ones do is
// settled when the menus are defined; a number without a command, and one whose command does not exist, does
// nothing.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace qelm {

class Plugin;

// The values of QELM_LICENSE_TYPE that decide something; any other is as kNormalLicence.
inline constexpr std::string_view kNormalLicence = "NORMAL";
inline constexpr std::string_view kBatchLicence = "BATCH";
inline constexpr std::string_view kInternalLicence = "INTERNAL";

// The host's major version for which the plug-in is made.
inline constexpr std::int32_t kExpectedHostVersion = 18;

enum class CommandFor : std::uint8_t {
  kEveryone,
  kBatch,       // the batch licence, and the internal one
  kInternal,    // the internal licence
  kOtherHosts,  // host versions that the plug-in is not made for
};

struct CommandRow {
  std::int32_t number = 0;
  std::string_view name;
  std::string_view label;     // in English; the language file translates it
  std::string_view shortcut;  // in the host's notation; empty: none
  CommandFor exists_for = CommandFor::kEveryone;
  // Runs it on what is active. Returns kDone, 0 when the user declined or it failed, or another result code;
  // the user was told.
  std::int32_t (*run)(Plugin&) = nullptr;
};

// All commands, numbers below kCommandLimit.
std::span<const CommandRow> AllCommands();
inline constexpr std::int32_t kCommandLimit = 40;

// Null when there is none.
const CommandRow* FindCommand(std::int32_t number);
const CommandRow* FindCommand(std::string_view name);

// Whether the command is to be defined for the licence type and the host of this session.
bool CommandExists(const CommandRow& command, Plugin& plugin);

// Runs the command of that number. Returns what it came to; kDone, with nothing done, for a number without a
// command that was defined.
std::int32_t RunCommand(Plugin& plugin, std::int32_t number);

}  // namespace qelm
