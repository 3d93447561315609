// Reads XML that needs no more of XML than most files do, without expat and several times as fast: UTF-8,
// ASCII names, no entities but XML's own five and references by number, and of a document type no more than
// declarations of elements and of attributes without defaults, which expat reads.
//
// Nothing is decided here that expat would decide otherwise: a file that is not well-formed, or of which that
// is not plain to see, is not read, and expat says what is wrong with it. So the file is gone through twice:
// the first time nobody is told of what is found. Events, places and texts are those of reader.h.
#pragma once

#include <string_view>

#include "embedded/xml/reader.h"

namespace qelm::embedded::xml {

// Reads the whole file, or false when it is not of this kind; then the handler has heard nothing.
bool ReadPlain(std::string_view bytes, Handler* handler);

}  // namespace qelm::embedded::xml
