// qelm convert: writes a document in the format that the name of the output asks for.
#include <CLI/CLI.hpp>

#include "cli/command.h"
#include "cli/file_names.h"
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
  std::size_t page_ = 0;
  double dpi_ = 96;
};

CLI::App* ConvertCommand::Define(CLI::App& program) {
  CLI::App* command = AddCommand(
      program,
      {"convert", "Write a document as MIF, XML, PDF or PNG",
       "The ending of OUT says the format: .mif and .fm for MIF, .xml for XML, .pdf for pages, .png for\n"
       "one page. In its own format a document is written byte for byte as it is. Books become PDF.",
       "qelm convert operation.mif operation.pdf"});
  command->add_option("IN", input_, "The document (MIF or XML), for PDF a book as well")->required();
  command->add_option("OUT", output_, "Where the result goes; its ending says the format")->required();
  command->add_option("--page", page_, "For .png: which page, from 1")->check(NumberBetween(1, 4294967295.0));
  command->add_option("--dpi", dpi_, "For .png: dots an inch")
      ->check(NumberBetween(10, 1200, /*whole=*/false))
      ->capture_default_str();
  return command;
}

Outcome ConvertCommand::Run(Session& session) {
  const std::string ending = Ending(output_);
  const bool known =
      ending == ".mif" || ending == ".fm" || ending == ".xml" || ending == ".pdf" || ending == ".png";
  if (!known) {
    throw Failure(ExitStatus::kUsage, output_ +
                                          ": the format is not clear from the name; it has to end in .mif, "
                                          ".fm, .xml, .pdf or .png");
  }
  if (page_ != 0 && ending != ".png") throw Failure(ExitStatus::kUsage, "--page is for one page as .png");
  const host::Id document = session.Open(input_);
  if (ending != ".pdf" && session.roles().books.IsBook(document)) {
    throw Failure(ExitStatus::kUsage, input_ + ": this is a book, which is converted to .pdf only");
  }
  Outcome outcome;
  if (ending == ".png") {
    outcome.output = session.SavePage(document, output_, page_ == 0 ? 1 : page_, dpi_);
  } else {
    outcome.output = session.Save(document, output_,
                                  ending == ".pdf" ? host::SaveFormat::kPdf : host::SaveFormat::kDocument);
  }
  outcome.text = input_ + " -> " + outcome.output + "\n";
  outcome.members["left_out"] = nlohmann::ordered_json::array();
  for (const std::string& path : session.host().LeftOut()) {
    outcome.status = ExitStatus::kFound;
    outcome.text += "  " + ShownPath(path) + ": left out, as it cannot be opened or printed\n";
    outcome.members["left_out"].push_back(ShownPath(path));
  }
  return outcome;
}

}  // namespace

std::unique_ptr<Command> MakeConvertCommand() { return std::make_unique<ConvertCommand>(); }

}  // namespace qelm::cli
