// SPDX-License-Identifier: MIT
// Reader of compiled resources: a block of RES32 entries, as a resource compiler writes them to a ".res"
// file.
//
// The block is the program's own. What the layer has no use for, and an entry that is cut short, ends the
// program with a message (unsupported.h). A resource that occurs more than once (in several languages) is
// taken from its first entry.
//
// All functions may be called on any thread, once Use has been called and before the block goes away.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/framework/image.h"

namespace resources {

// Resource types that this reader knows by number.
inline constexpr unsigned kCursor = 1;
inline constexpr unsigned kBitmap = 2;
inline constexpr unsigned kIcon = 3;
inline constexpr unsigned kMenu = 4;
inline constexpr unsigned kDialog = 5;
inline constexpr unsigned kString = 6;
inline constexpr unsigned kRawData = 10;
inline constexpr unsigned kGroupCursor = 12;
inline constexpr unsigned kGroupIcon = 14;

// Registers the process-wide block, which is borrowed and must outlive every later call. Called before the
// first window is created, while no other thread reads resources; a second call replaces the block.
void Use(const void* data, std::size_t size);

// The bytes of one resource inside the registered block.
std::optional<std::span<const std::uint8_t>> Find(unsigned type, unsigned id);

// One control of a dialog template. Positions and sizes are in dialog units, relative to the client area.
struct DialogItem {
    int id = 0;             // −1: a control that is never addressed
    std::string className;  // in small letters: "button", "static" or "msctls_trackbar32"
    std::uint32_t style = 0;
    std::uint32_t exStyle = 0;
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    std::string text;       // UTF-8, with its & marks; empty where resource is set
    unsigned resource = 0;  // number of an icon or bitmap in place of a text; 0: none
};

struct Dialog {
    std::uint32_t style = 0;
    std::uint32_t exStyle = 0;
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    unsigned menu = 0;  // number of the menu resource; 0: none
    std::string title;
    std::vector<DialogItem> items;  // in the order of the template, which is the tab order
};

// Both the plain and the extended template are read; the font is not (dialogs here have one face). A dialog
// that is not there ends the program with a message.
Dialog LoadDialog(unsigned id);

// One entry of a menu: a popup (with children), a command, or a separator (no text).
struct MenuItem {
    std::string text;  // UTF-8, with its & marks
    unsigned id = 0;   // of a command
    std::vector<MenuItem> children;
};

// The top level of a menu, in its order. A menu that is not there ends the program with a message.
std::vector<MenuItem> LoadMenu(unsigned id);

// A string of the string table in UTF-8; empty when there is none.
std::string LoadString(unsigned id);

// The picture of an icon that fits an edge length of size pixels best: that very size, else the next larger,
// else the largest. Nothing is scaled. The hot spot is the picture's centre. Pictures of 4, 8, 24 and 32 bits
// are decoded, PNG-compressed ones by the toolkit; without one they are left out.
std::optional<Image> LoadIcon(unsigned id, int size);

// A cursor's picture that fits best, as for icons, with its hot spot.
std::optional<Image> LoadCursor(unsigned id, int size);

// A bitmap of the same depths, fully opaque. One that is not there ends the program with a message.
Image LoadBitmap(unsigned id);

}  // namespace resources
