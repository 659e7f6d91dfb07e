// SPDX-License-Identifier: MIT
// The texts of a file type's registration, read and written. Pure; texts that are read may hold anything.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "platform/shell/file_type.h"

// Whether a database's list of patterns has this one, in capitals or not. Its lines are weight:type:pattern,
// perhaps with :flags after them.
bool IsPatternIn(std::istream& globs2, const std::string& pattern);

// `subtype` is what follows "application/" in the type's name.
std::string DesktopEntry(const FileType& type, const std::string& subtype, const std::string& program);
// The program of an entry that is, to the byte, as DesktopEntry makes it; nothing of any other text.
std::optional<std::string> ProgramOfEntry(const std::string& entry, const FileType& type,
                                          const std::string& subtype);
std::string MimePackage(const FileType& type, const std::string& subtype);
