// SPDX-License-Identifier: MIT
// Registers a kind of file with the desktop, for this user: the shared MIME database, a desktop entry and an
// icon, in the forms of freedesktop.org's standards for each (Shared MIME-info, Desktop Entry, Icon Theme).
// As the type's only entry it is its default program, so no list of defaults is touched.
//
// It takes the place of registry keys. The type's name there, "Trivelle.Message",
// gives the names here: application/x-trivelle-message, trivelle-message.desktop, trivelle-message.xml.
#pragma once

#include <span>
#include <string>

struct FileType {
    std::string extension;   // with its dot: ".trv"
    std::string identifier;  // "Trivelle.Message"
    std::string
        description;      // what a file manager calls such a file; this and the magic without & < > " and '
    std::string magic;    // the bytes that such a file begins with
    std::string program;  // absolute path of the program that opens it, with the file's path as its argument
    std::string program_name;
    std::string installed_entry;  // file name of the desktop entry that the program's package installs
    std::span<const unsigned char> icon;  // an SVG drawing, borrowed; none if empty
};

// Registers the type if the desktop knows none for the extension, whichever program is behind it; the
// installed entry counts as one. An existing registration is never changed, with one exception: an entry that
// an earlier call wrote, that nobody has changed since, and whose program has gone gets the new program. Each
// file is complete or not there at all. The desktop's databases are then brought up to date by a program in
// the background. What cannot be written is left out, and nothing is reported. When the type has been
// registered before, that costs a few looks at files. UI thread; processes may run it side by side.
void RegisterFileType(const FileType& type);
