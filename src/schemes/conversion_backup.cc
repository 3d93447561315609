#include "schemes/conversion_backup.h"

#include "common/text.h"

namespace qelm::schemes {
namespace {

constexpr int kLastNumber = 99;

// Documents in XML stay what they are under a name that asks for another format.
host::SaveFormat FormatFor(std::string_view path) {
  return common::AsciiLower(path).ends_with(".xml") ? host::SaveFormat::kXml : host::SaveFormat::kDocument;
}

}  // namespace

std::string BackupName(host::Platform& platform, const std::string& path, std::string_view version) {
  const std::string ending = "before_" + std::string(version) + "_conversion.fm";
  for (int number = 1; number <= kLastNumber; ++number) {
    std::string name = path;
    name.append(".BACKUP_");
    if (number > 1) name.append("(").append(std::to_string(number)).append(")_");
    name.append(ending);
    if (!platform.FileExists(name) && !platform.FolderExists(name)) return name;
  }
  return {};
}

bool BackUp(host::Host& host, std::string_view version, host::Id* document, std::string* backup) {
  host::Documents& documents = host.documents;
  const std::string path(documents.Path(*document));
  if (path.empty()) return false;
  const std::string name = BackupName(host.platform, path, version);
  if (name.empty()) return true;
  host::SaveOptions options;
  options.format = FormatFor(path);
  options.path = name;
  if (!documents.Save(*document, options)) return false;
  *backup = name;
  options.path = path;
  if (!documents.Save(*document, options)) {
    documents.SetPath(*document, path);  // it bears the backup's name by now
    return false;
  }
  host::OpenOptions open;
  open.visible = documents.Switch(*document, host::DocumentSwitch::kOnScreen);
  open.suppress_alerts = true;
  documents.Close(*document, true);
  host::OpenStatus status = host::OpenStatus::kOpened;
  *document = documents.Open(path, open, &status);
  return *document != host::kNone;
}

}  // namespace qelm::schemes
