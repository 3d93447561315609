// What follows on a filtered document or book of a batch: attributes of the root, variables, metadata,
// element boundaries, the update of the book, PDF and XML. Each step writes down what came of it, and none
// keeps the next from being done.
#pragma once

#include <string>

#include "filtering/batch_names.h"
#include "filtering/batch_run.h"
#include "filtering/copy_record.h"

namespace qelm::filtering {

class BatchSource;

// The file into which PDF or XML is saved for the scheme whose names these are.
std::string ExportPath(const config::LocalSettings& settings, const NameValues& names,
                       const std::string& output_folder, host::SaveFormat format);

// Does the steps on the open document or book. Documents that they change are saved before anything is made
// from them. The files of the source and those that it refers to stay. `record` is that of the output, which
// has begun. `outcome` gets the steps and the files that were written.
void FinishOutput(BatchContext& context, const BatchRequest& request, const BatchScheme& scheme,
                  const NameValues& names, const BatchSource& source, host::Id output, CopyRecord& record,
                  BatchOutcome* outcome);

}  // namespace qelm::filtering
