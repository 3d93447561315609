#include "cli/options.h"

#include <CLI/CLI.hpp>

#include "cli/command.h"

namespace qelm::cli {

void DefineOptions(CLI::App& program, Options* options) {
  const auto once_each = [](CLI::Option* option, const char* type) {
    option->type_name(type)->allow_extra_args(false);
    return option;
  };
  program
      .add_option("--plugin-dir", options->plugin_folder,
                  "The plug-in's folder: settings, templates, languages")
      ->type_name("DIR");
  program.add_option("--profile", options->profile, "Stands for APPDATA, the folder of the user's settings")
      ->type_name("DIR");
  program.add_option("--local-settings", options->local_settings, "Use this local settings file")
      ->type_name("FILE");
  program
      .add_option("--main-settings", options->main_settings, "Use this main settings document (MIF or XML)")
      ->type_name("FILE");
  program.add_flag("--install", options->install,
                   "Start as in FrameMaker: prepare the user's folder, open FILES_TO_OPEN_ON_STARTUP");
  once_each(
      program.add_option("--set", options->settings, "One local setting for this run (may be repeated)"),
      "KEY=VALUE");
  once_each(program.add_option("--param", options->parameters,
                               "The value of the parameter $NAME in expressions (may be repeated)"),
            "NAME=VALUE");
  program
      .add_option("--host-version", options->host_version,
                  "The major version that the host says it has. Default: 18")
      ->type_name("N")
      ->check(NumberBetween(1, 99));
  program.add_flag("--ignore-lock", options->ignore_lock,
                   "Replace files although their lock files (NAME.lck) say that they are open elsewhere");
  program.add_flag("--overwrite", options->overwrite,
                   "Replace files although they were changed on disk since they were opened, or lie in an "
                   "output folder and are of no earlier copy");
  CLI::Option* yes = program.add_flag("--yes", options->yes, "Answer every question with yes");
  program.add_flag("--no", options->no, "Answer every question with no")->excludes(yes);
  program
      .add_option("--answers", options->answers, "Answer questions from a file of lines PATTERN -> yes|no")
      ->type_name("FILE");
  program
      .add_option("--events", options->events,
                  "Append what is shown and answered to a file, one JSON object a line (-: standard error)")
      ->type_name("FILE");
  program.add_flag("--json", options->json, "Print the result as one JSON object");
  program.add_option("--progress", options->progress, "Show progress: auto (on a terminal), always, never")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  program.add_flag("-q,--quiet", options->quiet, "Do not show alerts and progress; errors are always shown");
  program.add_flag("-v,--verbose", options->verbose, "Say which settings are used and how long things took");
}

}  // namespace qelm::cli
