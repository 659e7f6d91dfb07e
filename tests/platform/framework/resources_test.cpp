// SPDX-License-Identifier: MIT
// The player's own compiled resources as they come out of the reader.
#include "platform/framework/resources.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/framework/winuser.h"
#include "res/player_resources.h"
#include "res/resource.h"

namespace {

class PlayerResources : public testing::Test {
protected:
    void SetUp() override { UsePlayerResources(); }
};

// A control of a template, without WS_CHILD and WS_VISIBLE, which every one has.
struct Item {
    unsigned dialog;
    int id;
    const char* className;
    DWORD style, exStyle;
    int x, y, cx, cy;
    const char* text;
    unsigned resource;
};

constexpr DWORD kIconButton = BS_ICON | WS_TABSTOP;
constexpr DWORD kSunkenText = SS_RIGHT | SS_CENTERIMAGE | SS_SUNKEN;
constexpr DWORD kSlider = TBS_VERT | TBS_BOTH | WS_TABSTOP;
constexpr DWORD kMuteBox = BS_AUTOCHECKBOX | WS_TABSTOP;
constexpr const char* kTrackbar = "msctls_trackbar32";
constexpr const char* kCopyright = "Copyright \u00a9 2026\nthe Trivelle authors.\nMIT licence.";

constexpr Item kItems[] = {
    {100, -1, "static", SS_BITMAP, 0, 7, 7, 130, 122, "", 138},
    {100, -1, "static", SS_CENTER | SS_NOPREFIX, 0, 7, 133, 130, 8, "Trivelle Message Player v1.0", 0},
    {100, -1, "static", SS_ICON, 0, 61, 146, 21, 20, "", 129},
    {100, -1, "static", SS_CENTER, 0, 24, 174, 94, 28, kCopyright, 0},
    {100, 1, "button", BS_DEFPUSHBUTTON | WS_TABSTOP, 0, 47, 209, 50, 14, "Close", 0},
    {102, 1000, "button", kIconButton, 0, 7, 7, 31, 25, "", 0},
    {102, 1001, "button", kIconButton, 0, 41, 7, 31, 25, "", 0},
    {102, 1002, "button", kIconButton, 0, 207, 7, 31, 25, "", 0},
    {102, 1004, "static", SS_SUNKEN, 0, 7, 35, 231, 191, "", 0},
    {136, 1005, "static", WS_BORDER | SS_SUNKEN | WS_TABSTOP, 0, 4, 4, 223, 11, "", 0},
    {136, 1006, "static", WS_BORDER | SS_SUNKEN, 0, 4, 16, 223, 157, "", 0},
    {136, 1007, "static", SS_CENTERIMAGE, 0, 4, 177, 22, 10, "Total:", 0},
    {136, 1008, "static", kSunkenText, 0, 30, 177, 69, 10, "", 0},
    {136, 1010, "static", SS_CENTERIMAGE, 0, 125, 177, 28, 10, "Current:", 0},
    {136, 1011, "static", kSunkenText, 0, 158, 177, 69, 10, "", 0},
    {137, -1, "static", SS_CENTER, 0, 7, 30, 71, 8, "Master Volume", 0},
    {137, -1, "static", SS_ETCHEDHORZ, 0, 7, 39, 72, 1, "", 0},
    {137, 1139, kTrackbar, kSlider, 0, 31, 42, 30, 69, "", 0},
    {137, 1140, "button", kMuteBox, 0, 29, 113, 34, 10, "Mute", 0},
    {137, -1, "static", SS_ETCHEDVERT, 0, 83, 25, 1, 98, "", 0},
    {137, -1, "static", SS_CENTER, 0, 89, 30, 71, 8, "Speakers Volume", 0},
    {137, -1, "static", SS_ETCHEDHORZ, 0, 89, 39, 71, 1, "", 0},
    {137, 1143, kTrackbar, kSlider, 0, 101, 42, 30, 69, "", 0},
    {137, 1145, "static", SS_SUNKEN, 0, 137, 47, 12, 60, "", 0},
    {137, 1144, "button", kMuteBox, 0, 111, 113, 34, 10, "Mute", 0},
    {137, 1136, "button", BS_PUSHBUTTON | WS_TABSTOP, 0, 28, 133, 112, 14, "Windows Volume Controls...", 0},
    {137, 1158, "static", SS_CENTER | SS_CENTERIMAGE, WS_EX_STATICEDGE, 7, 7, 153, 14, "", 0},
};

constexpr DWORD kCaptioned = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT;

// Faults: a rectangle, style, number or text that strayed in the script, a field read at the wrong offset in
// either form of template, controls out of their tab order.
TEST_F(PlayerResources, DialogsHaveEveryControlInItsPlace) {
    const struct {
        unsigned id;
        DWORD style, exStyle;
        int cx, cy;
        unsigned menu;
        const char* title;
    } dialogs[] = {
        {100, kCaptioned | DS_3DLOOK, 0, 144, 230, 0, "About Message Player"},
        {102, kCaptioned | WS_VISIBLE | WS_MINIMIZEBOX | DS_3DLOOK, WS_EX_APPWINDOW, 245, 233, 130, ""},
        {136, WS_CHILD | DS_SETFONT, 0, 231, 192, 0, ""},
        {137, kCaptioned, 0, 167, 154, 0, "Audio Volume Controls"},
    };
    const Item* item = kItems;
    for (const auto& d : dialogs) {
        SCOPED_TRACE(d.id);
        const resources::Dialog dialog = resources::LoadDialog(d.id);
        EXPECT_EQ(std::tie(dialog.style, dialog.exStyle, dialog.menu, dialog.title),
                  std::tie(d.style, d.exStyle, d.menu, d.title));
        EXPECT_EQ(std::tuple(dialog.x, dialog.y, dialog.cx, dialog.cy), std::tuple(0, 0, d.cx, d.cy));
        for (const resources::DialogItem& found : dialog.items) {
            SCOPED_TRACE(item - kItems);
            ASSERT_TRUE(item != std::end(kItems) && item->dialog == d.id) << "one control too many";
            EXPECT_EQ(std::tie(found.id, found.className, found.text, found.resource),
                      std::tie(item->id, item->className, item->text, item->resource));
            EXPECT_EQ(std::tuple(found.style, found.exStyle),
                      std::tuple(item->style | WS_CHILD | WS_VISIBLE, item->exStyle));
            EXPECT_EQ(std::tie(found.x, found.y, found.cx, found.cy),
                      std::tie(item->x, item->y, item->cx, item->cy));
            ++item;
        }
    }
    EXPECT_EQ(item, std::end(kItems));
}

std::string Outline(const std::vector<resources::MenuItem>& items) {
    std::string outline;
    for (const auto& item : items) {
        if (item.text.empty())
            outline += "-;";
        else if (item.children.empty())
            outline += item.text + "=" + std::to_string(item.id) + ";";
        else
            outline += item.text + "{" + Outline(item.children) + "}";
    }
    return outline;
}

// Faults: a command bound to the wrong entry, an entry taken into the wrong level of the tree.
TEST_F(PlayerResources, MenuHasItsCommands) {
    // Newer entries come after these.
    const std::string menu = Outline(resources::LoadMenu(130));
    EXPECT_TRUE(menu.starts_with("&File{&Open...=57601;&Close=57602;-;")) << menu;
    EXPECT_NE(menu.find("-;E&xit=32773;}"), std::string::npos) << menu;
    EXPECT_NE(menu.find("}&Play{&Play/Pause=32774;&Stop=32775;"), std::string::npos) << menu;
    EXPECT_TRUE(menu.ends_with("}&Help{&About Trivelle Message Player...=32776;}")) << menu;
}

TEST_F(PlayerResources, StringsReadToTheLetter) {
    const std::map<unsigned, std::string> strings{
        {1, "Trivelle Message Player"},
        {2, "Play"},
        {3, "Pause"},
        {4, "Stop"},
        {5, "Open Audio Volume Controls"},
        {6, "Close Audio Volume Controls"},
        {7, "SndVol32.exe"},
        {8, "Windows Audio Volume Controls were not found."},
        {9,
         "Cannot open audio device.\nNote that if you are connected with Trivelle,\n"
         "the audio device is captured by Trivelle."},
        {10, "%02d mins, %02.1f secs "},
        {11, "Cannot open file %s."},
        {12, "Calvory"},
    };
    for (const auto& [id, text] : strings) EXPECT_EQ(resources::LoadString(id), text) << id;
    for (const unsigned missing : {0U, 4000U, 0xFFFFFFFFU})
        EXPECT_EQ(resources::LoadString(missing), "") << missing;
}

std::uint32_t PixelAt(const Image& image, int x, int y) {
    return image.pixels[static_cast<std::size_t>(y * image.width + x)];
}

// Faults: a picture of the wrong size or number, colours or rows exchanged, alpha lost.
TEST_F(PlayerResources, IconsAreThePicturesOfTheirButtons) {
    for (const auto& [asked, given] : std::map<int, int>{{1, 16}, {16, 16}, {17, 24}, {64, 64}, {500, 128}}) {
        const auto icon = resources::LoadIcon(129, asked);
        ASSERT_TRUE(icon);
        EXPECT_EQ(std::tie(icon->width, icon->height, icon->hotX, icon->hotY),
                  std::tuple(given, given, given / 2, given / 2));
    }
    // The triangle points right, the bars leave a gap, the square is full, the panel stands left of the
    // sound; the first three are blue.
    const struct {
        unsigned id;
        std::vector<std::pair<int, int>> opaque;
        std::pair<int, int> clear;
    } icons[] = {
        {131, {{7, 7}, {7, 24}, {24, 16}}, {24, 7}},
        {132, {{10, 16}, {21, 16}}, {16, 16}},
        {133, {{6, 25}, {16, 15}, {25, 6}}, {0, 0}},
        {135, {{3, 5}}, {29, 5}},
    };
    for (const auto& expected : icons) {
        SCOPED_TRACE(expected.id);
        const auto icon = resources::LoadIcon(expected.id, 32);
        ASSERT_TRUE(icon);
        ASSERT_EQ(icon->pixels.size(), 32U * 32U);
        EXPECT_EQ(PixelAt(*icon, expected.clear.first, expected.clear.second) >> 24U, 0U);
        for (const auto& [x, y] : expected.opaque) {
            const std::uint32_t pixel = PixelAt(*icon, x, y);
            EXPECT_EQ(pixel >> 24U, 0xFFU) << x << ", " << y;
            if (expected.id != 135) {
                EXPECT_GT(pixel & 0xFFU, pixel >> 16U & 0xFFU) << x << ", " << y;
            }
        }
    }
}

TEST_F(PlayerResources, CursorPointsWithItsFingertip) {
    const auto cursor = resources::LoadCursor(134, 32);
    ASSERT_TRUE(cursor);
    EXPECT_EQ(std::tie(cursor->width, cursor->height, cursor->hotX, cursor->hotY), std::tuple(32, 32, 13, 9));
    EXPECT_GT(PixelAt(*cursor, 13, 9) >> 24U, 0x80U);
    for (int at = 0; at < 9 * 32; ++at) ASSERT_EQ(PixelAt(*cursor, at % 32, at / 32) >> 24U, 0U) << at;
    EXPECT_EQ(PixelAt(*cursor, 13, 20), 0xFFFFFFFFU) << "the hand is white inside";
}

TEST_F(PlayerResources, AboutPictureAndDrawingOfTheIconAreWhole) {
    const Image bitmap = resources::LoadBitmap(138);
    ASSERT_EQ(std::tie(bitmap.width, bitmap.height), std::tuple(195, 198));
    for (const std::uint32_t pixel : bitmap.pixels) ASSERT_EQ(pixel >> 24U, 0xFFU);
    // Darker sky at the top, brighter at the bottom: rows are the right way up.
    EXPECT_LT(PixelAt(bitmap, 0, 0) & 0xFFU, PixelAt(bitmap, 194, 197) & 0xFFU);

    const auto data = resources::Find(resources::kRawData, IDR_PLAYER_SVG);
    ASSERT_TRUE(data);
    const std::string text(data->begin(), data->end());
    EXPECT_TRUE(text.starts_with("<svg"));
    EXPECT_NE(text.find("</svg>"), std::string::npos);
}

TEST_F(PlayerResources, WhatIsNotThereIsNotFound) {
    EXPECT_FALSE(resources::LoadIcon(134, 32)) << "a cursor is no icon";
    EXPECT_FALSE(resources::LoadCursor(131, 32));
    EXPECT_DEATH(resources::LoadDialog(130), "dialog: 0x82") << "a menu of that number is no dialog";
    EXPECT_DEATH(resources::LoadMenu(102), "menu: 0x66");
    EXPECT_DEATH(resources::LoadBitmap(129), "bitmap: 0x81");
}

// A block made here: what the player's own resources do not have yet, and what they must never have.
using Bytes = std::vector<std::uint8_t>;

Bytes Block(unsigned type, unsigned id, const Bytes& data) {
    Bytes block;
    const auto put32 = [&block](std::size_t value) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            block.push_back(static_cast<std::uint8_t>(value >> shift));
    };
    put32(data.size());
    put32(32);
    put32(0xFFFFU | type << 16U);
    put32(0xFFFFU | id << 16U);
    block.resize(32);  // version, flags and language, which nobody asks for
    block.insert(block.end(), data.begin(), data.end());
    return block;
}

TEST(Resources, FourBitPicturesAndBrokenBlocks) {
    Bytes dib(40 + 64 + 4);
    dib[0] = 40;
    dib[4] = 3;
    dib[8] = 1;
    dib[14] = 4;
    dib[40 + 4 * 5] = 0xFF;  // colour 5 is blue
    dib[104] = 0x50;
    dib[105] = 0x50;
    Bytes block = Block(resources::kBitmap, 5, dib);
    resources::Use(block.data(), block.size());
    const std::uint32_t blue = 0xFF0000FFU;
    EXPECT_EQ(resources::LoadBitmap(5).pixels, (std::vector<std::uint32_t>{blue, 0xFF000000U, blue}));
    dib[8] = 2;  // the second row is not there
    block = Block(resources::kBitmap, 5, dib);
    resources::Use(block.data(), block.size());
    EXPECT_DEATH(resources::LoadBitmap(5), "cut short");
    EXPECT_DEATH(resources::Use(block.data(), block.size() - 1), "cut short");
    const Bytes text{2, 0, 0xE9, 0, 0xAC, 0x20};
    block = Block(resources::kString, 1, text);
    resources::Use(block.data(), block.size());
    EXPECT_EQ(resources::LoadString(0), "\u00E9\u20AC");
}

}  // namespace
