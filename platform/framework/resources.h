// Reader of compiled resources: a block of RES32 entries, as a resource compiler writes them to a ".res"
// file.
//
// The block comes from the program itself, but nothing in it is believed: each length and offset is checked
// against what is left, and an entry that is cut short or contradicts itself counts as not found. Broken data
// never throws; what is allocated is bounded by the size of the block. A resource that occurs more than once
// (in several languages) is taken from its first entry.
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
// first window is made, while no other thread reads resources; a second call replaces the block.
void Use(const void* data, std::size_t size);

// The bytes of one resource inside the registered block.
std::optional<std::span<const std::uint8_t>> Find(unsigned type, unsigned id);

// One control of a dialog template. Positions and sizes are in dialog units, relative to the client area.
struct DialogItem {
    int id = 0;  // −1: a control that is never addressed
    // "BUTTON", "EDIT", "STATIC", "LISTBOX", "SCROLLBAR", "COMBOBOX", or another class's name in lower case.
    std::string class_name;
    std::uint32_t style = 0;
    std::uint32_t ex_style = 0;
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    std::string text;            // UTF-8, with its & marks; empty where resource is set
    unsigned resource = 0;       // number of an icon or bitmap given in place of a text; 0: none
    std::size_t extra_size = 0;  // bytes of creation data, which is not handed on
};

struct Dialog {
    bool extended = false;
    std::uint32_t style = 0;
    std::uint32_t ex_style = 0;
    int x = 0;
    int y = 0;
    int cx = 0;
    int cy = 0;
    unsigned menu = 0;       // number of the menu resource; 0: none
    std::string class_name;  // empty: the usual dialog class
    std::string title;
    unsigned font_points = 0;  // 0 and an empty face: the template names no font
    std::string font_face;
    std::vector<DialogItem> items;  // in the order of the template, which is the tab order
};

// Both the plain and the extended template are read.
std::optional<Dialog> LoadDialog(unsigned id);

// One entry of a menu: a popup (with children), a command, or a separator (no text, id 0).
struct MenuItem {
    std::string text;  // UTF-8, with its & marks
    unsigned id = 0;   // command; 0 for popups and separators
    bool popup = false;
    bool separator = false;
    bool grayed = false;   // MF_GRAYED or MF_DISABLED
    bool checked = false;  // MF_CHECKED
    std::vector<MenuItem> children;
};

// The top level of a menu, in its order.
std::optional<std::vector<MenuItem>> LoadMenu(unsigned id);

// A string of the string table in UTF-8. An empty string cannot be told from a missing one: both are not
// found.
std::optional<std::string> LoadString(unsigned id);

// The edge lengths (widths) of the pictures that an icon holds and this reader can decode, ascending and
// without repeats.
std::vector<int> IconSizes(unsigned id);

// The picture of an icon that fits an edge length of size pixels best: that very size, else the next larger,
// else the largest; among equals the deepest colour. Nothing is scaled. The hot spot is the picture's centre.
// Pictures of 1, 4, 8, 24 and 32 bits are decoded; PNG-compressed ones are passed over.
std::optional<Image> LoadIcon(unsigned id, int size);

// A cursor's picture that fits best, as for icons, with its hot spot.
std::optional<Image> LoadCursor(unsigned id, int size);

// A bitmap of 1, 4, 8, 24 or 32 bits without compression, fully opaque.
std::optional<Image> LoadBitmap(unsigned id);

}  // namespace resources
