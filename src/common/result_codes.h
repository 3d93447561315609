// What an operation came to, as a number that calls and the command line pass on.
#pragma once

#include <cstdint>
#include <string_view>

namespace qelm::common {

inline constexpr std::int32_t kDone = 1;
inline constexpr std::int32_t kSchemeNotFound = 11;
inline constexpr std::int32_t kInvalidSchemeNames = 12;
inline constexpr std::int32_t kNoDocument = 102;
inline constexpr std::int32_t kNoElementSelected = 103;
inline constexpr std::int32_t kNoActiveScheme = 104;
inline constexpr std::int32_t kNoFlowOrRoot = 105;
inline constexpr std::int32_t kCopyFailed = 106;
inline constexpr std::int32_t kOutputIsSource = 107;
inline constexpr std::int32_t kCancelled = 108;

// The code in words ("no active scheme"), empty for a number that is none of them.
std::string_view ResultText(std::int32_t code);

}  // namespace qelm::common
