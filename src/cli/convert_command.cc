// qelm convert: writes a document in the format that the name of the output asks for.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/session.h"
#include "common/paths.h"
#include "common/text.h"

namespace qelm::cli {
namespace {

// The ending of a file's name in small letters, with its dot; empty when there is none.
std::string Ending(const std::string& path) {
  const std::string_view name = common::FileName(path);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string() : common::AsciiLower(name.substr(dot));
}

class ConvertCommand : public Command {
 public:
  CLI::App* Define(CLI::App& program) override;
  Outcome Run(Session& session) override;

 private:
  std::string input_;
  std::string output_;
};

CLI::App* ConvertCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program, {"convert", "Write a document as MIF or XML",
                "The ending of OUT says the format: .mif and .fm for MIF, .xml for XML. In its own format\n"
                "a document is written byte for byte as it is.",
                "qelm convert operation.mif operation.xml"});
  command->add_option("IN", input_, "The document (MIF or XML)")->required();
  command->add_option("OUT", output_, "Where the result goes; its ending says the format")->required();
  return command;
}

Outcome ConvertCommand::Run(Session& session) {
  const std::string ending = Ending(output_);
  if (ending == ".pdf" || ending == ".png") {
    throw Failure(ExitStatus::kUsage,
                  output_ + ": this version cannot write pages (PDF, PNG); it writes MIF and XML");
  }
  if (ending != ".mif" && ending != ".fm" && ending != ".xml") {
    throw Failure(ExitStatus::kUsage,
                  output_ + ": the format is not clear from the name; it has to end in .mif, .fm or .xml");
  }
  const host::Id document = session.OpenDocument(input_);
  Outcome outcome;
  outcome.output = session.Save(document, output_);
  outcome.text = input_ + " -> " + outcome.output + "\n";
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeConvertCommand() { return std::make_unique<ConvertCommand>(); }

}  // namespace qelm::cli
