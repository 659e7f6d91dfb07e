// Resource blocks made here: forms that the player's own resources do not use, and blocks that are cut short,
// changed or hostile. Each block lies in memory of exactly its size, so that the address sanitizer sees every
// step over its end.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/framework/resources.h"
#include "res/player_resources.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

void Put16(Bytes& out, unsigned value) {
    out.push_back(static_cast<std::uint8_t>(value));
    out.push_back(static_cast<std::uint8_t>(value >> 8U));
}

void Put32(Bytes& out, std::uint32_t value) {
    Put16(out, value & 0xFFFFU);
    Put16(out, value >> 16U);
}

void PutText(Bytes& out, const std::u16string& text) {
    for (const char16_t unit : text) Put16(out, unit);
    Put16(out, 0);
}

void Align4(Bytes& out) {
    while (out.size() % 4 != 0) out.push_back(0);
}

struct Entry {
    unsigned type;
    unsigned id;
    Bytes data;
    std::u16string name;  // in place of the number
};

Bytes Block(const std::vector<Entry>& entries) {
    Bytes block;
    for (const Entry& entry : entries) {
        Bytes names;
        Put16(names, 0xFFFF);
        Put16(names, entry.type);
        if (entry.name.empty()) {
            Put16(names, 0xFFFF);
            Put16(names, entry.id);
        } else {
            PutText(names, entry.name);
        }
        Align4(names);
        Put32(block, static_cast<std::uint32_t>(entry.data.size()));
        Put32(block, static_cast<std::uint32_t>(8 + names.size() + 16));
        block.insert(block.end(), names.begin(), names.end());
        for (int i = 0; i < 4; ++i) Put32(block, 0);  // version, flags and language, which nobody asks for
        block.insert(block.end(), entry.data.begin(), entry.data.end());
        Align4(block);
    }
    return block;
}

// Holds a block in memory of exactly its size while it is in use.
class InUse {
public:
    explicit InUse(const Bytes& block) : memory_(std::make_unique<std::uint8_t[]>(block.size())) {
        std::copy(block.begin(), block.end(), memory_.get());
        resources::Use(memory_.get(), block.size());
    }
    ~InUse() { resources::Use(nullptr, 0); }
    InUse(const InUse&) = delete;
    InUse& operator=(const InUse&) = delete;

private:
    std::unique_ptr<std::uint8_t[]> memory_;
};

Bytes Dib(int width, int height, unsigned bits, std::uint32_t used, const std::vector<std::uint32_t>& palette,
          const Bytes& rows) {
    Bytes dib;
    Put32(dib, 40);
    Put32(dib, static_cast<std::uint32_t>(width));
    Put32(dib, static_cast<std::uint32_t>(height));
    Put16(dib, 1);
    Put16(dib, bits);
    for (int i = 0; i < 4; ++i) Put32(dib, 0);
    Put32(dib, used);
    Put32(dib, 0);
    for (const std::uint32_t colour : palette) Put32(dib, colour);
    dib.insert(dib.end(), rows.begin(), rows.end());
    return dib;
}

Bytes Group(unsigned kind, const std::vector<unsigned>& pictures) {
    Bytes group;
    Put16(group, 0);
    Put16(group, kind);
    Put16(group, static_cast<unsigned>(pictures.size()));
    for (const unsigned picture : pictures) {
        group.insert(group.end(), 12, 0);
        Put16(group, picture);
    }
    return group;
}

constexpr std::uint32_t kRed = 0xFFFF0000U;
constexpr std::uint32_t kGreen = 0xFF00FF00U;
constexpr std::uint32_t kBlue = 0xFF0000FFU;

// Faults: bits taken from the wrong end of a byte, a palette of its own length, rows of two pictures in the
// wrong order, row padding read as pixels.
TEST(Resources, BitmapsOfEveryDepth) {
    const std::vector<std::uint32_t> palette{0x0000FF00U, 0x00FF0000U};
    std::vector<std::uint32_t> palette256(256);
    palette256[200] = 0x000000FFU;
    palette256[7] = 0x00FF0000U;
    const struct {
        const char* what;
        Bytes dib;
        std::vector<std::uint32_t> pixels;
    } cases[] = {
        {"1 bit", Dib(3, 1, 1, 0, palette, {0x40, 0, 0, 0}), {kGreen, kRed, kGreen}},
        {"4 bits, short palette", Dib(3, 1, 4, 2, palette, {0x10, 0x15, 0, 0}), {kRed, kGreen, kRed}},
        {"8 bits", Dib(2, 1, 8, 0, palette256, {200, 7, 0, 0}), {kBlue, kRed}},
        {"24 bits, bottom up", Dib(1, 2, 24, 0, {}, {0xFF, 0, 0, 9, 0, 0, 0xFF, 9}), {kRed, kBlue}},
        {"24 bits, top down", Dib(1, -2, 24, 0, {}, {0xFF, 0, 0, 9, 0, 0, 0xFF, 9}), {kBlue, kRed}},
        {"32 bits, its fourth byte is no alpha",
         Dib(2, 1, 32, 0, {}, {0, 0xFF, 0, 0, 0xFF, 0, 0, 0x80}),
         {kGreen, kBlue}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const InUse use(Block({{resources::kBitmap, 5, c.dib, {}}}));
        const auto image = resources::LoadBitmap(5);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->pixels, c.pixels);
    }
    // The third colour of a palette of two is black, not whatever follows.
    const InUse use(Block({{resources::kBitmap, 5, Dib(1, 1, 4, 2, palette, {0x50, 0, 0, 0}), {}}}));
    EXPECT_EQ(resources::LoadBitmap(5)->pixels, std::vector<std::uint32_t>{0xFF000000U});
}

TEST(Resources, IconsTakeTransparencyFromMaskOrAlpha) {
    const std::vector<std::uint32_t> palette{0x0000FF00U, 0x00FF0000U};
    const Bytes masked = Dib(2, 2, 1, 0, palette, {0x40, 0, 0, 0, /* mask */ 0x40, 0, 0, 0});
    const Bytes alpha = Dib(1, 2, 32, 0, {}, {0xFF, 0, 0, 0x80, /* mask, not heeded */ 0x80, 0, 0, 0});
    const Bytes plain32 = Dib(2, 2, 32, 0, {}, {0xFF, 0, 0, 0, 0xFF, 0, 0, 0, /* mask */ 0x80, 0, 0, 0});
    const Bytes png{0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0, 1, 0, 0, 0};
    const InUse use(Block({{resources::kIcon, 1, masked, {}},
                           {resources::kIcon, 2, alpha, {}},
                           {resources::kIcon, 3, plain32, {}},
                           {resources::kIcon, 4, png, {}},
                           {resources::kGroupIcon, 10, Group(1, {4, 1, 99, 2}), {}},
                           {resources::kGroupIcon, 11, Group(1, {1, 3}), {}},
                           {resources::kGroupIcon, 12, Group(1, {4, 99}), {}}}));
    // What cannot be decoded or is missing is passed over.
    EXPECT_EQ(resources::IconSizes(10), (std::vector<int>{1, 2}));
    EXPECT_EQ(resources::LoadIcon(10, 2)->pixels, (std::vector<std::uint32_t>{kGreen, 0}));
    EXPECT_EQ(resources::LoadIcon(10, 1)->pixels, std::vector<std::uint32_t>{0x800000FFU});
    EXPECT_EQ(resources::LoadIcon(11, 2)->pixels, (std::vector<std::uint32_t>{0, kBlue})) << "deepest wins";
    EXPECT_FALSE(resources::LoadIcon(12, 32));
}

// Faults: sizes from the header trusted beyond the data, negative or overflowing sizes, odd heights.
TEST(Resources, ImpossiblePicturesAreNotFound) {
    const Bytes row(64, 0);
    const std::vector<std::pair<const char*, Bytes>> bitmaps{
        {"no width", Dib(0, 1, 24, 0, {}, row)},
        {"negative width", Dib(-4, 1, 24, 0, {}, row)},
        {"no height", Dib(4, 0, 24, 0, {}, row)},
        {"height of the least integer", Dib(4, INT32_MIN, 24, 0, {}, row)},
        {"rows beyond the data", Dib(4, 6, 24, 0, {}, row)},
        {"size that overflows", Dib(0x7FFFFFFF, 0x7FFFFFFF, 32, 0, {}, row)},
        {"depth of 16", Dib(4, 1, 16, 0, {}, row)},
        {"depth of 0", Dib(4, 1, 0, 0, {}, row)},
        {"palette beyond the data", Dib(4, 1, 8, 0, {}, row)},
        {"palette of 4 billion", Dib(4, 1, 8, 0xFFFFFFFFU, {}, row)},
    };
    for (const auto& [what, dib] : bitmaps) {
        const InUse use(Block({{resources::kBitmap, 5, dib, {}}}));
        EXPECT_FALSE(resources::LoadBitmap(5)) << what;
    }
    Bytes compressed = Dib(4, 1, 24, 0, {}, row);
    compressed[16] = 1;
    Bytes long_header = Dib(4, 1, 24, 0, {}, row);
    long_header[3] = 0xFF;
    const InUse use(Block({{resources::kBitmap, 5, compressed, {}},
                           {resources::kBitmap, 6, long_header, {}},
                           {resources::kIcon, 1, Dib(4, 3, 24, 0, {}, row), {}},
                           {resources::kGroupIcon, 7, Group(1, {1}), {}}}));
    EXPECT_FALSE(resources::LoadBitmap(5));
    EXPECT_FALSE(resources::LoadBitmap(6));
    EXPECT_FALSE(resources::LoadIcon(7, 4)) << "an odd height has no room for a mask";
}

// Faults: UTF-16 taken for Latin-1, pairs split, a lone half passed on, a named entry taken for a number.
TEST(Resources, TextsAndNames) {
    Bytes strings;
    const std::u16string texts[] = {u"",
                                    u"na\u00EFve \u20AC",
                                    u"\U0001F44B!",
                                    std::u16string(1, 0xD83D) + u"x",
                                    std::u16string(1, 0xDC4B),
                                    std::u16string(u"a\0b", 3)};
    for (const auto& text : texts) {
        Put16(strings, static_cast<unsigned>(text.size()));
        for (const char16_t unit : text) Put16(strings, unit);
    }
    const InUse use(Block({{0, 0, {}, {}},
                           {resources::kString, 3, {1, 0, 'n', 0}, u"NAMED"},
                           {resources::kString, 3, strings, {}},
                           {resources::kString, 3, {1, 0, 'o', 0}, {}}}));
    EXPECT_FALSE(resources::LoadString(32));
    EXPECT_EQ(resources::LoadString(33), "na\u00EFve \u20AC");
    EXPECT_EQ(resources::LoadString(34), "\U0001F44B!");
    EXPECT_EQ(resources::LoadString(35), "\uFFFDx");
    EXPECT_EQ(resources::LoadString(36), "\uFFFD");
    EXPECT_EQ(resources::LoadString(37), std::string("a\0b", 3));
    EXPECT_FALSE(resources::LoadString(38)) << "the block of strings ends before";
}

// A control with creation data is followed by another one; classes come by number and by name.
TEST(Resources, DialogWithCreationData) {
    Bytes data;
    Put32(data, 0xFFFF0001U);
    for (int i = 0; i < 3; ++i) Put32(data, 0);  // help, extended style, style without a font
    Put16(data, 2);
    for (const int side : {-3, 4, 50, 60}) Put16(data, static_cast<unsigned>(side));
    for (int i = 0; i < 3; ++i) Put16(data, 0);  // menu, class, title
    const auto item = [&data](unsigned id, const std::u16string& class_name, unsigned class_number) {
        Align4(data);
        for (int i = 0; i < 3; ++i) Put32(data, 0);
        for (const int side : {-1, -2, 3, 4}) Put16(data, static_cast<unsigned>(side));
        Put32(data, id);
        if (class_name.empty()) {
            Put16(data, 0xFFFF);
            Put16(data, class_number);
        } else {
            PutText(data, class_name);
        }
        PutText(data, u"text");
        Put16(data, 3);
        data.insert(data.end(), 3, 0xEE);
    };
    item(0xFFFFFFFFU, u"", 0x85);
    item(70000, u"Own Class", 0);
    const InUse use(Block({{resources::kDialog, 9, data, {}}}));
    const auto dialog = resources::LoadDialog(9);
    ASSERT_TRUE(dialog);
    EXPECT_EQ(dialog->x, -3);
    EXPECT_EQ(dialog->font_points, 0U);
    ASSERT_EQ(dialog->items.size(), 2U);
    EXPECT_EQ(dialog->items[0].class_name, "COMBOBOX");
    EXPECT_EQ(dialog->items[0].id, -1);
    EXPECT_EQ(dialog->items[0].extra_size, 3U);
    EXPECT_EQ(dialog->items[1].class_name, "own class");
    EXPECT_EQ(dialog->items[1].id, 70000);
    EXPECT_EQ(dialog->items[1].y, -2);
    EXPECT_EQ(dialog->items[1].text, "text");
}

// A menu nested without end stops instead of using up the stack.
TEST(Resources, EndlessMenuIsNotFound) {
    Bytes menu(4, 0);
    for (int i = 0; i < 100000; ++i) Put32(menu, 0x00000090U);  // last popup of its level, no text
    const InUse use(Block({{resources::kMenu, 1, menu, {}}}));
    EXPECT_FALSE(resources::LoadMenu(1));
}

// The player's own resources without their large pictures, so that every length of them can be tried.
std::vector<Entry> SmallEntries() {
    UsePlayerResources();
    std::vector<Entry> entries;
    const auto add = [&entries](unsigned type, unsigned first, unsigned last) {
        for (unsigned id = first; id <= last; ++id) {
            const auto data = resources::Find(type, id);
            if (data && data->size() < 5000)
                entries.push_back({type, id, Bytes(data->begin(), data->end()), {}});
        }
    };
    add(resources::kDialog, 100, 137);
    add(resources::kMenu, 130, 130);
    add(resources::kString, 1, 1);
    add(resources::kGroupIcon, 129, 131);
    add(resources::kGroupCursor, 134, 134);
    add(resources::kIcon, 1, 3);
    add(resources::kCursor, 1, 19);
    return entries;
}

// Asks for everything and says how much was found.
int LoadAll() {
    int found = resources::LoadMenu(130) ? 1 : 0;
    for (const unsigned id : {100U, 102U, 136U, 137U}) found += resources::LoadDialog(id) ? 1 : 0;
    for (unsigned id = 1; id <= 12; ++id) found += resources::LoadString(id) ? 1 : 0;
    for (const auto& image : {resources::LoadIcon(129, 24), resources::LoadCursor(134, 32)}) {
        if (!image) continue;
        ++found;
        EXPECT_EQ(image->pixels.size(), static_cast<std::size_t>(image->width * image->height));
    }
    return found;
}

constexpr int kEverything = 4 + 1 + 12 + 2;

TEST(Resources, BlocksCutShortLoseWhatIsCutAndNoMore) {
    const std::vector<Entry> entries = SmallEntries();
    const Bytes block = Block(entries);
    for (std::size_t size = 0; size <= block.size(); ++size) {
        const InUse use(Bytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size)));
        std::size_t start = 0;
        for (const Entry& entry : entries) {
            const std::size_t end = start + 32 + entry.data.size();
            ASSERT_EQ(resources::Find(entry.type, entry.id).has_value(), end <= size)
                << entry.type << ", " << entry.id << " at " << size;
            start = (end + 3) / 4 * 4;
        }
    }
}

// The block says that a resource is shorter than it is: every reader meets its end at every place.
TEST(Resources, ResourcesCutShortAreNotFound) {
    const std::vector<Entry> entries = SmallEntries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const unsigned type = entries[i].type;
        const bool is_picture = type == resources::kIcon || type == resources::kCursor;
        for (std::size_t size = 0; size < entries[i].data.size(); size += is_picture && size > 60 ? 16 : 1) {
            std::vector<Entry> cut = entries;
            cut[i].data.resize(size);
            std::swap(cut[i], cut.back());  // at the very end of the block
            Bytes block = Block(cut);
            block.erase(block.end() - static_cast<std::ptrdiff_t>((4 - size % 4) % 4), block.end());
            const InUse use(block);
            const int found = LoadAll();
            if (type == resources::kDialog || type == resources::kMenu) {
                ASSERT_EQ(found, kEverything - 1) << "entry " << i << " of " << size << " bytes";
            } else {
                ASSERT_LE(found, kEverything);
            }
        }
    }
}

TEST(Resources, ChangedBytesNeverLeadOutside) {
    const Bytes block = Block(SmallEntries());
    std::mt19937 random(20260129);
    std::uniform_int_distribution<std::size_t> place(0, block.size() - 1);
    std::uniform_int_distribution<int> count(1, 6);
    const std::uint8_t extremes[] = {0x00, 0x01, 0x7F, 0x80, 0xFE, 0xFF};
    int spoilt = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes changed = block;
        for (int left = count(random); left > 0; --left) {
            // Half of the changes go to the front, where the dialogs, the menu and the strings are.
            std::size_t at = place(random);
            if (random() % 2 == 0) at %= 3000;
            changed[at] = random() % 2 == 0 ? extremes[random() % 6] : static_cast<std::uint8_t>(random());
        }
        const InUse use(changed);
        if (LoadAll() < kEverything) ++spoilt;
    }
    EXPECT_GT(spoilt, 1000) << "the changes hardly reach what is read";
}

}  // namespace
