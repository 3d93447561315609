// One scheme of a batch: a filtered copy of the source in an output folder of its own, and what follows on
// it.
//
// The source is held open for the whole batch (BatchSource), so that it is read once; each scheme starts from
// it as it was opened, and nothing that a scheme does can reach the next one.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "filtering/batch_names.h"
#include "filtering/batch_run.h"
#include "filtering/copy_plan.h"
#include "schemes/scheme.h"

namespace qelm::filtering {

// The document or book that is filtered, open while this lives; a book's documents too.
class BatchSource {
 public:
  BatchSource(host::Host& host, const BatchRequest& request);
  ~BatchSource();
  BatchSource(const BatchSource&) = delete;
  BatchSource& operator=(const BatchSource&) = delete;

  // 0 when it cannot be opened, and `why` tells the reason.
  host::Id id() const { return id_; }
  bool is_book() const { return is_book_; }
  const std::string& path() const { return path_; }
  const std::string& why() const { return why_; }

  // What a copy of the document would refer to, read when it is first asked for; null when that cannot be
  // told. Copies choose their targets in copies of it.
  const CopyPlan* Plan() const;

  // The files of the source and those that it refers to, its insets too, read when they are first asked for.
  const std::set<std::string>& Files() const;

 private:
  host::Id Open(const std::string& path);

  host::Host& host_;
  std::string path_;
  std::string why_;
  host::Id id_ = host::kNone;
  bool is_book_ = false;
  std::vector<host::Id> opened_;
  mutable std::optional<CopyPlan> plan_;
  mutable bool planned_ = false;
  mutable std::optional<std::set<std::string>> files_;
};

// Filters by one scheme, which is read from the open settings document.
BatchOutcome RunBatchScheme(BatchContext& context, const BatchRequest& request, const BatchSource& source,
                            host::Id settings_document, const BatchScheme& scheme);

}  // namespace qelm::filtering
