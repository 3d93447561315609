#include "cli/program.h"

#include <filesystem>
#include <regex>
#include <sstream>

#include "cli/cli.h"
#include "support/mif_files.h"

namespace qelm::testing {
namespace {

constexpr char kDocument[] = R"(
<Doc>
  [Heading]<Title>Pump</Title>
  <Section Audience="admin">
  <P>for admins</P>
  </Section>
  <Section Audience="user">
  <P>for users</P>
  </Section>
  <Section>
  <P>for {Red,Underline}all{} of them</P>
  </Section>
</Doc>)";

std::string Settings(const std::string& name, bool negative) {
  return "<SchemeSettings><Name>" + name + "</Name><UseNegativeLogic>" + (negative ? "True" : "False") +
         "</UseNegativeLogic></SchemeSettings>";
}

std::string XPathScheme(const std::string& name, bool negative, const std::string& expression) {
  return "<Scheme>" + Settings(name, negative) + "<XPathExpressions><XPathExpression>" + expression +
         "</XPathExpression></XPathExpressions></Scheme>";
}

std::string MainSettings() {
  const std::string classic = "<Scheme>" + Settings("Admin", false) +
                              "<Attribute><Name>Audience</Name><Value>admin</Value></Attribute></Scheme>";
  const std::string xpath = XPathScheme("No users", true, "//Section[@Audience='user']") +
                            XPathScheme("Title only", false, "//Title") +
                            XPathScheme("Broken", false, "//Section[@Audience=='x']") +
                            XPathScheme("No cells", true, "//Cell");
  const auto category = [](const std::string& name, const std::string& filters) {
    return "<SchemeCategory><CategorySettings><Name>" + name + "</Name></CategorySettings><FilterSchemes>" +
           filters + "</FilterSchemes><ColoringSchemes/><ValidationSchemes/></SchemeCategory>";
  };
  return "<QELM_MainSettings><SchemeCategories>" + category("Audience", classic) +
         "</SchemeCategories><SchemeCategories_XPath>" + category("By/path", xpath) +
         "</SchemeCategories_XPath><AttributeList/><ColorList/><XPathHistory/></QELM_MainSettings>";
}

}  // namespace

Program::Program()
    : plugin_folders({QELM_SOURCE_DIR "/assets"}),
      document_(folder.Write("doc.mif", Mif(kDocument))),
      main_settings_(folder.Write("main.xml", MainSettings())) {}

ProgramResult Program::RunPlain(std::vector<std::string> arguments, const std::string& input) {
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  cli::Environment environment{in, out, err};
  environment.version = "1.2.3";
  environment.plugin_folders = plugin_folders;
  environment.esc = esc;
  ProgramResult result;
  result.status = cli::Main(std::move(arguments), environment);
  result.out = out.str();
  result.err = err.str();
  return result;
}

ProgramResult Program::Run(std::vector<std::string> arguments, const std::string& input) {
  arguments.insert(arguments.end(), {"--profile", folder.File("profile"), "--main-settings", main_settings_});
  return RunPlain(std::move(arguments), input);
}

std::string Program::Dump(const std::string& path) { return Run({"dump", path}).out; }

std::map<std::string, std::string> BatchOutput(const TempFolder& folder, const std::string& out) {
  static const std::regex time(R"(\d+ min \d+ s)");
  const std::filesystem::path root = folder.File(out);
  std::map<std::string, std::string> tree;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string name = entry.path().lexically_relative(root);
    if (!entry.is_regular_file() || name.starts_with(".qelm-batch")) continue;
    std::string text = folder.Read(out + "/" + name);
    if (name.ends_with(".fm")) text = std::regex_replace(text, time, "TIME");
    for (std::size_t at; (at = text.find(root.string())) != std::string::npos;) {
      text.replace(at, root.string().size(), "OUT");
    }
    tree[name] = std::move(text);
  }
  return tree;
}

}  // namespace qelm::testing
