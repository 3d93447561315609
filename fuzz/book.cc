// Books: read, components renamed and taken out, saved, read again.
#include "edits.h"
#include "embedded/model/book_edit.h"

using namespace qelm::embedded::model;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  const auto component = bytes.ConsumeIntegral<std::uint8_t>();
  const int edit = bytes.ConsumeIntegralInRange(0, 3);
  std::string error;
  const std::unique_ptr<Book> book = BuildBook(bytes.ConsumeRemainingBytesAsString(), &error);
  if (!book) {
    qelm::fuzz::Check(!error.empty(), "a refusal does not say why");
    return 0;
  }
  const std::string source(book->tree.source);
  qelm::fuzz::Check(BookPieces(*book).Joined() == source, "saving changed a book that nobody edited");
  if (component >= book->components.size()) return 0;
  if (edit == 1) SetEntryText(book.get(), component, "a `text' with \\ in it");
  if (edit == 2) SetComponentFile(book.get(), component, "../other folder/file.fm");
  if (edit == 3) RemoveComponent(book.get(), component);
  const std::string saved = BookPieces(*book).Joined();
  qelm::fuzz::Check(BuildBook(saved, &error) != nullptr, "what was saved cannot be read",
                    error + "\n" + saved);
  return 0;
}
