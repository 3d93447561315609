// Which token may follow which.
#pragma once

#include "xpath/errors.h"
#include "xpath/tokenizer.h"

namespace qelm::xpath {

// kNoError when `next` may stand behind `previous`, else the error of that pair.
ErrorCode CheckSuccession(TokenKind previous, TokenKind next);

}  // namespace qelm::xpath
