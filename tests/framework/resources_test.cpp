// The player's own compiled resources as they come out of the reader.
#include "platform/framework/resources.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/framework/winuser.h"
#include "res/player_resources.h"
#include "res/resource.h"

namespace {

class PlayerResources : public testing::Test {
protected:
    void SetUp() override { UsePlayerResources(); }
};

struct Item {
    int id;
    const char* class_name;
    DWORD style;  // without WS_CHILD and WS_VISIBLE, which every control has
    DWORD ex_style;
    int x, y, cx, cy;
    const char* text;
    unsigned resource;
};

struct Template {
    unsigned id;
    bool extended;
    DWORD style;
    DWORD ex_style;
    int cx, cy;
    unsigned menu;
    const char* title;
    std::vector<Item> items;
};

constexpr DWORD kIconButton = BS_ICON | WS_TABSTOP;
constexpr DWORD kSunkenText = SS_RIGHT | SS_CENTERIMAGE | SS_SUNKEN;
constexpr DWORD kSlider = TBS_VERT | TBS_BOTH | WS_TABSTOP;
constexpr DWORD kMuteBox = BS_AUTOCHECKBOX | WS_TABSTOP;

const std::vector<Template>& Templates() {
    static const std::vector<Template> templates{
        {100,
         false,
         WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_3DLOOK | DS_SETFONT,
         0,
         144,
         230,
         0,
         "About Message Player",
         {{-1, "STATIC", SS_BITMAP, 0, 7, 7, 130, 122, "", 138},
          {-1, "STATIC", SS_CENTER | SS_NOPREFIX, 0, 7, 133, 130, 8, "Trivelle Message Player v1.0", 0},
          {-1, "STATIC", SS_ICON, 0, 61, 146, 21, 20, "", 129},
          {-1, "STATIC", SS_CENTER, 0, 24, 174, 94, 28,
           "Copyright \u00a9 2026\nthe Trivelle authors.\nAll rights reserved.", 0},
          {1, "BUTTON", BS_DEFPUSHBUTTON | WS_TABSTOP, 0, 47, 209, 50, 14, "Close", 0}}},
        {102,
         true,
         WS_POPUP | WS_VISIBLE | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | DS_MODALFRAME | DS_3DLOOK |
             DS_SETFONT,
         WS_EX_APPWINDOW,
         245,
         233,
         130,
         "",
         {{1000, "BUTTON", kIconButton, 0, 7, 7, 31, 25, "", 0},
          {1001, "BUTTON", kIconButton, 0, 41, 7, 31, 25, "", 0},
          {1002, "BUTTON", kIconButton, 0, 207, 7, 31, 25, "", 0},
          {1004, "STATIC", SS_SUNKEN, 0, 7, 35, 231, 191, "", 0}}},
        {136,
         false,
         WS_CHILD | DS_SETFONT,
         0,
         231,
         192,
         0,
         "",
         {{1005, "STATIC", WS_BORDER | SS_SUNKEN, 0, 4, 4, 223, 11, "", 0},
          {1006, "STATIC", WS_BORDER | SS_SUNKEN, 0, 4, 16, 223, 157, "", 0},
          {1007, "STATIC", SS_CENTERIMAGE, 0, 4, 177, 22, 10, "Total:", 0},
          {1008, "STATIC", kSunkenText, 0, 30, 177, 69, 10, "", 0},
          {1010, "STATIC", SS_CENTERIMAGE, 0, 125, 177, 28, 10, "Current:", 0},
          {1011, "STATIC", kSunkenText, 0, 158, 177, 69, 10, "", 0}}},
        {137,
         true,
         WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT,
         0,
         167,
         154,
         0,
         "Audio Volume Controls",
         {{-1, "STATIC", SS_CENTER, 0, 7, 30, 71, 8, "Master Volume", 0},
          {-1, "STATIC", SS_ETCHEDHORZ, 0, 7, 39, 72, 1, "", 0},
          {1139, "msctls_trackbar32", kSlider, 0, 31, 42, 30, 69, "", 0},
          {1140, "BUTTON", kMuteBox, 0, 29, 113, 34, 10, "Mute", 0},
          {-1, "STATIC", SS_ETCHEDVERT, 0, 83, 25, 1, 98, "", 0},
          {-1, "STATIC", SS_CENTER, 0, 89, 30, 71, 8, "Speakers Volume", 0},
          {-1, "STATIC", SS_ETCHEDHORZ, 0, 89, 39, 71, 1, "", 0},
          {1143, "msctls_trackbar32", kSlider, 0, 101, 42, 30, 69, "", 0},
          {1145, "STATIC", SS_SUNKEN, 0, 137, 47, 12, 60, "", 0},
          {1144, "BUTTON", kMuteBox, 0, 111, 113, 34, 10, "Mute", 0},
          {1136, "BUTTON", BS_PUSHBUTTON | WS_TABSTOP, 0, 28, 133, 112, 14, "Windows Volume Controls...", 0},
          {1158, "STATIC", SS_CENTER | SS_CENTERIMAGE, WS_EX_STATICEDGE, 7, 7, 153, 14, "", 0}}},
    };
    return templates;
}

// Faults: a rectangle, style, number or text that strayed in the script, a field read at the wrong offset in
// either form of template, controls out of their tab order.
TEST_F(PlayerResources, DialogsHaveEveryControlInItsPlace) {
    for (const Template& want : Templates()) {
        SCOPED_TRACE(want.id);
        const auto dialog = resources::LoadDialog(want.id);
        ASSERT_TRUE(dialog);
        EXPECT_EQ(dialog->extended, want.extended);
        EXPECT_EQ(dialog->style, want.style);
        EXPECT_EQ(dialog->ex_style, want.ex_style);
        EXPECT_EQ(dialog->x, 0);
        EXPECT_EQ(dialog->y, 0);
        EXPECT_EQ(dialog->cx, want.cx);
        EXPECT_EQ(dialog->cy, want.cy);
        EXPECT_EQ(dialog->menu, want.menu);
        EXPECT_EQ(dialog->class_name, "");
        EXPECT_EQ(dialog->title, want.title);
        EXPECT_EQ(dialog->font_points, 8U);
        EXPECT_EQ(dialog->font_face, "MS Sans Serif");
        ASSERT_EQ(dialog->items.size(), want.items.size());
        for (std::size_t i = 0; i < want.items.size(); ++i) {
            SCOPED_TRACE(i);
            const resources::DialogItem& item = dialog->items[i];
            EXPECT_EQ(item.id, want.items[i].id);
            EXPECT_EQ(item.class_name, want.items[i].class_name);
            EXPECT_EQ(item.style, want.items[i].style | WS_CHILD | WS_VISIBLE);
            EXPECT_EQ(item.ex_style, want.items[i].ex_style);
            EXPECT_EQ(item.x, want.items[i].x);
            EXPECT_EQ(item.y, want.items[i].y);
            EXPECT_EQ(item.cx, want.items[i].cx);
            EXPECT_EQ(item.cy, want.items[i].cy);
            EXPECT_EQ(item.text, want.items[i].text);
            EXPECT_EQ(item.resource, want.items[i].resource);
            EXPECT_EQ(item.extra_size, 0U);
        }
    }
}

std::string Outline(const std::vector<resources::MenuItem>& items) {
    std::string outline;
    for (const auto& item : items) {
        if (item.popup) {
            outline += item.text + "{" + Outline(item.children) + "}";
        } else if (item.separator) {
            outline += "-;";
        } else {
            outline += item.text + "=" + std::to_string(item.id) + ";";
        }
        EXPECT_FALSE(item.grayed || item.checked) << item.text;
    }
    return outline;
}

// Faults: a command bound to the wrong entry, an entry taken into the wrong level of the tree.
TEST_F(PlayerResources, MenuHasItsCommands) {
    const auto menu = resources::LoadMenu(130);
    ASSERT_TRUE(menu);
    EXPECT_EQ(Outline(*menu),
              "&File{&Open...=57601;&Close=57602;-;E&xit=32773;}"
              "&Play{&Play/Pause=32774;&Stop=32775;}"
              "&Help{&About Trivelle Message Player...=32776;}");
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
    for (const unsigned missing : {0U, 13U, 15U, 16U, 0xFFFFFFFFU})
        EXPECT_EQ(resources::LoadString(missing), std::nullopt) << missing;
}

// How far the hue of a picture lies on the blue side: opaque pixels whose blue is the largest of the three.
double BlueShare(const Image& image) {
    int opaque = 0;
    int blue = 0;
    for (const std::uint32_t pixel : image.pixels) {
        if (pixel >> 24U != 0xFF) continue;
        ++opaque;
        const auto b = pixel & 0xFFU;
        if (b > (pixel >> 8U & 0xFFU) && b > (pixel >> 16U & 0xFFU)) ++blue;
    }
    return opaque == 0 ? 0 : static_cast<double>(blue) / opaque;
}

std::uint32_t PixelAt(const Image& image, int x, int y) {
    return image.pixels[static_cast<std::size_t>(y * image.width + x)];
}

std::uint32_t AlphaAt(const Image& image, int x, int y) {
    return PixelAt(image, x, y) >> 24U;
}

// Faults: a picture of the wrong size or number, colours or rows exchanged, alpha lost.
TEST_F(PlayerResources, IconsAreThePicturesOfTheirButtons) {
    EXPECT_EQ(resources::IconSizes(129), (std::vector<int>{16, 24, 32, 48, 64, 128}));
    for (const auto& [asked, given] : std::map<int, int>{{1, 16}, {16, 16}, {17, 24}, {64, 64}, {500, 128}}) {
        const auto icon = resources::LoadIcon(129, asked);
        ASSERT_TRUE(icon);
        EXPECT_EQ(icon->width, given);
        EXPECT_EQ(icon->height, given);
        EXPECT_EQ(icon->hot_x, given / 2);
        EXPECT_EQ(icon->hot_y, given / 2);
    }
    for (const unsigned id : {131U, 132U, 133U, 135U}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(resources::IconSizes(id), std::vector<int>{32});
        const auto icon = resources::LoadIcon(id, 32);
        ASSERT_TRUE(icon);
        ASSERT_EQ(icon->pixels.size(), 32U * 32U);
        EXPECT_EQ(icon->hot_x, 16);
        EXPECT_EQ(icon->hot_y, 16);
        EXPECT_EQ(AlphaAt(*icon, 0, 0), 0U);
        if (id != 135) {
            EXPECT_GT(BlueShare(*icon), 0.99);
        }
    }
    // The triangle points right, the bars leave a gap, the square is full, the panel stands left of the
    // sound.
    const auto play = resources::LoadIcon(131, 32);
    EXPECT_EQ(AlphaAt(*play, 7, 7), 0xFFU);
    EXPECT_EQ(AlphaAt(*play, 7, 24), 0xFFU);
    EXPECT_EQ(AlphaAt(*play, 24, 16), 0xFFU);
    EXPECT_EQ(AlphaAt(*play, 24, 7), 0U);
    const auto pause = resources::LoadIcon(132, 32);
    EXPECT_EQ(AlphaAt(*pause, 10, 16), 0xFFU);
    EXPECT_EQ(AlphaAt(*pause, 16, 16), 0U);
    EXPECT_EQ(AlphaAt(*pause, 21, 16), 0xFFU);
    const auto stop = resources::LoadIcon(133, 32);
    for (const int at : {6, 16, 25}) EXPECT_EQ(AlphaAt(*stop, at, 31 - at), 0xFFU);
    const auto volume = resources::LoadIcon(135, 32);
    EXPECT_EQ(AlphaAt(*volume, 3, 5), 0xFFU);
    EXPECT_EQ(AlphaAt(*volume, 29, 5), 0U);
}

TEST_F(PlayerResources, CursorPointsWithItsFingertip) {
    const auto cursor = resources::LoadCursor(134, 32);
    ASSERT_TRUE(cursor);
    EXPECT_EQ(cursor->width, 32);
    EXPECT_EQ(cursor->height, 32);
    EXPECT_EQ(cursor->hot_x, 13);
    EXPECT_EQ(cursor->hot_y, 9);
    EXPECT_GT(AlphaAt(*cursor, 13, 9), 0x80U);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 32; ++x) ASSERT_EQ(AlphaAt(*cursor, x, y), 0U) << x << ", " << y;
    EXPECT_EQ(PixelAt(*cursor, 13, 20), 0xFFFFFFFFU) << "the hand is white inside";
}

TEST_F(PlayerResources, AboutPictureFillsItsRectangle) {
    const auto bitmap = resources::LoadBitmap(138);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(bitmap->width, 195);
    EXPECT_EQ(bitmap->height, 198);
    ASSERT_EQ(bitmap->pixels.size(), 195U * 198U);
    for (const std::uint32_t pixel : bitmap->pixels) ASSERT_EQ(pixel >> 24U, 0xFFU);
    // Darker sky at the top, brighter at the bottom: rows are the right way up.
    EXPECT_LT(PixelAt(*bitmap, 0, 0) & 0xFFU, PixelAt(*bitmap, 194, 197) & 0xFFU);
}

TEST_F(PlayerResources, DrawingOfTheIconIsWhole) {
    const auto data = resources::Find(resources::kRawData, IDR_PLAYER_SVG);
    ASSERT_TRUE(data);
    const std::string text(data->begin(), data->end());
    EXPECT_EQ(text.rfind("<svg", 0), 0U);
    EXPECT_NE(text.find("</svg>"), std::string::npos);
}

TEST_F(PlayerResources, WhatIsNotThereIsNotFound) {
    EXPECT_FALSE(resources::LoadDialog(101));
    EXPECT_FALSE(resources::LoadDialog(130)) << "a menu of that number is no dialog";
    EXPECT_FALSE(resources::LoadMenu(102));
    EXPECT_FALSE(resources::LoadIcon(134, 32)) << "a cursor is no icon";
    EXPECT_FALSE(resources::LoadCursor(131, 32));
    EXPECT_FALSE(resources::LoadBitmap(129));
    EXPECT_TRUE(resources::IconSizes(1000).empty());
}

}  // namespace
