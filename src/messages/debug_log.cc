#include "messages/debug_log.h"

#include "common/paths.h"

namespace qelm::messages {
namespace {

constexpr std::string_view kBreak = "\r\n";
constexpr std::string_view kFileNameEnd = "_debug_log.txt";
constexpr std::size_t kHeaderLine = 50;
constexpr std::size_t kEntryLine = 40;
constexpr std::size_t kMostText = 50;  // characters of an element's text
constexpr std::string_view kNoPath = "<none>";

std::string Header(std::string_view product) {
  const std::string line(kHeaderLine, '-');
  std::string text = "This is a debug log for the ";
  text.append(product).append(" plugin. It was generated due to the ");
  text.append("activation of the \"write log\" debug mode. ");
  text.append("Please contact Brenwick for more information.").append(kBreak);
  // Entries come last in fact; those who read these logs know the sentence as it is.
  text.append(kBreak).append("Actions/events are listed in order with the most recent at the top.");
  text.append(kBreak).append(line);
  text.append(kBreak).append(line).append(kBreak);
  return text;
}

}  // namespace

void DebugLog::Open(const Options& options) {
  if (!open_ && options.mode == kDebugOff) return;
  options_ = options;
  open_ = true;
  const std::string folder =
      options.folder.empty() ? std::string(host_.session.PluginFolder()) : options.folder;
  const std::string name =
      options.file_name.empty() ? options.product + std::string(kFileNameEnd) : options.file_name;
  path_ = common::JoinPath(folder, name);
  written_ = 0;
  if (!Writes()) return;
  host_.platform.RemoveFile(path_);
  host_.platform.AppendFile(path_, Header(options.product));
}

void DebugLog::Event(host::Id document, host::Id object, std::string_view event) {
  if (!Writes()) return;
  std::string entry(kBreak);
  entry.append("** EVENT/ACTION: ").append(event);
  entry.append(kBreak).append("TIMESTAMP: ").append(std::to_string(host_.platform.CalendarSeconds()));
  entry.append(kBreak);
  AppendDocument(document, &entry);
  entry.append(kBreak);
  AppendObject(document, object, &entry);
  entry.append(kBreak).append(kBreak).append(kEntryLine, '-').append(kBreak).append(kBreak);
  written_ += entry.size();
  if (!Writes()) entry.append("THE LOG IS FULL: further events are not written.").append(kBreak);
  host_.platform.AppendFile(path_, entry);
}

void DebugLog::AppendDocument(host::Id document, std::string* entry) {
  if (document == host::kNone) {
    entry->append(kBreak).append("No doc ID sent");
    return;
  }
  const std::string_view path = host_.documents.Path(document);
  entry->append(kBreak).append("DOC: ").append(std::to_string(document));
  entry->append(kBreak).append("FILEPATH: ").append(path.empty() ? kNoPath : path);
}

void DebugLog::AppendObject(host::Id document, host::Id object, std::string* entry) {
  host::Elements& elements = host_.elements;
  entry->append(kBreak);
  if (!elements.IsElement(document, object)) {
    entry->append("NULL OR UNRECOGNIZABLE OBJECT SENT. ID: ").append(std::to_string(object));
    return;
  }
  const host::Id definition = elements.Definition(document, object);
  std::string buffer;
  entry->append("OBJECT TYPE: Element").append(kBreak);
  entry->append("ELEMENT TAG: ")
      .append(host_.definitions.DefinitionName(document, definition))
      .append(kBreak);
  entry->append("ELEMENT UID: ").append(std::to_string(elements.UniqueId(document, object))).append(kBreak);
  entry->append("ELEMENT TEXT: ").append(host_.text.ElementText(document, object, kMostText, &buffer));
}

void DebugLog::ShowMode() const {
  const std::int32_t mode = open_ ? options_.mode : kDebugOff;
  host_.user.Note(mode == kDebugWriteLog  ? "Write log debug mode is ON."
                  : mode == kDebugPrompts ? "Prompting debug mode is ON."
                                          : "Debug mode is off.");
}

}  // namespace qelm::messages
