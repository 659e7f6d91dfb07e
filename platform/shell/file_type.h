// Registers a kind of file with the desktop, for this user: the shared MIME database, a desktop entry, an
// icon and the default program, in the forms of freedesktop.org's standards for each (Shared MIME-info,
// Desktop Entry, Icon Theme, MIME Applications).
//
// It takes the place of the original platform's registry keys. The type's name there, "Trivelle.Message",
// gives the names here: application/x-trivelle-message, trivelle-message.desktop, trivelle-message.xml.
#pragma once

#include <span>
#include <string>
#include <vector>

struct FileTypeIcon {
    int pixels = 0;                        // width and height of a PNG image; 0 for an SVG drawing
    std::span<const unsigned char> bytes;  // borrowed
};

struct FileType {
    std::string extension;    // with its dot: ".trv"
    std::string identifier;   // "Trivelle.Message"
    std::string description;  // what a file manager calls such a file
    std::string magic;        // the bytes that such a file begins with
    std::string program;  // absolute path of the program that opens it, with the file's path as its argument
    std::string program_name;
    std::vector<FileTypeIcon> icons;
};

// Registers the type if the desktop knows none for the extension, whichever program is behind it; an existing
// registration is never changed. Each file is written in one step, a file that exists is never replaced, and
// the list of default programs gets one line more. The desktop's databases are then brought up to date by a
// program in the background. What cannot be written is passed over, and nothing is reported: returns whether
// the type was registered by this call. When it has been registered before, that costs two looks at files.
// One thread at a time; processes may run it side by side.
bool RegisterFileType(const FileType& type);

// The list of default programs (mimeapps.list) with one for a type added; unchanged when it already names
// one.
std::string WithDefaultProgram(const std::string& list, const std::string& mime_type,
                               const std::string& entry);
