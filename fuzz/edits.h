// Random changes to a document, driven by the fuzzer's bytes, and what must hold of every document.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

#include "embedded/model/files.h"

namespace qelm::fuzz {

// Ends the program, so that the fuzzer keeps the input, unless `holds`.
void Check(bool holds, const char* what, const std::string& details = {});

// A few edits of a few elements: conditions, character properties, attributes, deletions.
void EditAtRandom(embedded::model::Document* document, FuzzedDataProvider* bytes);

// Of a document as it was read: saved, it is the bytes that it was read from.
void CheckUntouched(const embedded::model::Document& document);

// Of an edited one: what is saved can be read, and reads like the document.
void CheckSaved(const embedded::model::Document& document);

}  // namespace qelm::fuzz
