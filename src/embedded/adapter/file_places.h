// Names of files: absolute paths, and which format a name asks for.
#pragma once

#include <optional>
#include <string>

#include "embedded/model/ids.h"

namespace qelm::embedded::adapter {

// The folder that a path leads through last.
std::string FolderOf(const std::string& path);

// The path with links resolved as far as it exists, and without detours: what
// std::filesystem::weakly_canonical gives for names of files and folders, by fewer calls of the system.
// Nothing where it cannot be found out.
std::optional<std::string> ResolvedPath(const std::string& path);

// The path made absolute against the working folder; links and ".." stay as they are.
std::string AbsolutePath(const std::string& path);

// The path without "." and "..". Where a link makes ".." lead elsewhere than the spelling says, links are
// resolved; else they stay.
std::string PlainPath(const std::string& path);

// What leads from a folder to a file, both plain and absolute; the file itself where nothing does.
std::string RelativePath(const std::string& folder, const std::string& file);

// Whether reading the file comes to an end: a device gives bytes without end, and a pipe in the file system
// may wait for ever for somebody who writes into it. The process' own streams are what a user handed over.
// True for what is not there.
bool IsOrdinary(const std::string& path);

// The format that the extension of a name asks for: .xml for XML, .mif and .fm for MIF; `other` for any other
// name.
model::Format FormatOfName(const std::string& path, model::Format other);

}  // namespace qelm::embedded::adapter
