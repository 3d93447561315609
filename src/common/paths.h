// Paths of the platform's own form.
#pragma once

#include <string>
#include <string_view>

namespace qelm::common {

// The platform's separator.
#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

// A path as it comes in from a file or another client, in the platform's own form: "\" becomes "/" where "/"
// is the separator. Paths that are URLs stay.
std::string PlatformPath(std::string_view path);

// `folder` and `name` with one separator between; `name` alone when the folder is empty.
std::string JoinPath(std::string_view folder, std::string_view name);

// The part behind the last separator, and the part before it ("" where there is none).
std::string_view FileName(std::string_view path);
std::string_view FolderOf(std::string_view path);

// Whether the path does not depend on a current folder.
bool IsAbsolutePath(std::string_view path);

}  // namespace qelm::common
