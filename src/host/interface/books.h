// Books: their components in order, and updating them.
#pragma once

#include "host/interface/types.h"

namespace qelm::host {

// What UpdateBook updates. Values combine.
enum BookUpdate : std::uint32_t {
  kUpdateNumbering = 1U << 0,
  kUpdateGeneratedFiles = 1U << 1,
  kUpdateMasterPages = 1U << 2,
  kUpdateCrossReferences = 1U << 3,
  kUpdateTextInsets = 1U << 4,
  kUpdateOleLinks = 1U << 5,
};

class Books {
 public:
  virtual ~Books() = default;

  // Whether the id names an open book.
  virtual bool IsBook(Id id) = 0;

  // The components in book order; groups and folders are passed over. 0 at the end.
  virtual Id FirstComponent(Id book) = 0;
  virtual Id NextComponent(Id book, Id component) = 0;

  // The component's file in the platform's form, made absolute against the book's folder. It need not exist.
  // Empty for an invalid id. The view holds until the next call.
  virtual std::string_view ComponentPath(Id book, Id component) = 0;

  virtual bool IsGenerated(Id book, Id component) = 0;
  virtual bool IsExcluded(Id book, Id component) = 0;

  // The component's document when it is open, else 0.
  virtual Id ComponentDocument(Id book, Id component) = 0;

  // The text that the book shows for the component. Reading gives nothing for an invalid id, and the view
  // holds until the book is next changed; writing gives false with the error code set.
  virtual std::string_view EntryText(Id book, Id component) = 0;
  virtual bool SetEntryText(Id book, Id component, std::string_view text) = 0;

  // Lets the component be another file (absolute, the platform's form). It is written relative to the place
  // that the book's own path says. False with the error code set when the id is invalid.
  virtual bool SetComponentPath(Id book, Id component, const std::string& path) = 0;

  // Takes the component and its element out of the book; its file stays. False with the error code set. The
  // ids of the other components stay what they are.
  virtual bool RemoveComponent(Id book, Id component) = 0;

  // Updates the book as BookUpdate flags say; its components need not be open. False with the error code set
  // when something could not be updated; the rest is updated all the same.
  virtual bool Update(Id book, std::uint32_t flags) = 0;
  virtual void ShowErrorLog(Id book) = 0;
};

}  // namespace qelm::host
