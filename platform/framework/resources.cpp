// SPDX-License-Identifier: MIT
#include "platform/framework/resources.h"

#include <utility>

#include "platform/framework/resources_reader.h"
#include "platform/framework/unsupported.h"

namespace resources {
namespace {

// Where each resource is. Texts and icons are asked for again and again while a message plays.
struct Entry {
    unsigned type;
    unsigned id;
    std::span<const std::uint8_t> data;
};
std::vector<Entry> g_entries;

// Flags of a menu entry.
constexpr unsigned kMenuPopup = 0x0010;
constexpr unsigned kMenuLast = 0x0080;
constexpr unsigned kMenuSeparator = 0x0800;

constexpr int kMostMenuLevels = 8;

std::vector<MenuItem> ReadMenuLevel(Reader& reader, int level = 1) {
    if (level > kMostMenuLevels) Unsupported("menu", "of too many levels");
    std::vector<MenuItem> items;
    unsigned flags = 0;
    while ((flags & kMenuLast) == 0) {
        flags = reader.U16();
        if ((flags & ~(kMenuPopup | kMenuLast | kMenuSeparator)) != 0) Unsupported("flag of a menu", flags);
        const bool popup = (flags & kMenuPopup) != 0;
        MenuItem& item = items.emplace_back();
        if (!popup) item.id = reader.U16();
        item.text = reader.TextZ();
        if (popup) item.children = ReadMenuLevel(reader, level + 1);
    }
    return items;
}

}  // namespace

void Use(const void* data, std::size_t size) {
    g_entries.clear();
    Reader reader({static_cast<const std::uint8_t*>(data), size});
    while (reader.Left() > 0) {
        const std::size_t dataSize = reader.U32();
        const std::size_t headerSize = reader.U32();
        Reader header(reader.Bytes(headerSize - 8));
        const Name type = header.NameOrNumber();
        const Name id = header.NameOrNumber();
        const auto bytes = reader.Bytes(dataSize);
        if (type.text.empty() && id.text.empty()) g_entries.push_back({type.number, id.number, bytes});
        reader.Align4();
    }
}

std::optional<std::span<const std::uint8_t>> Find(unsigned type, unsigned id) {
    for (const Entry& entry : g_entries)
        if (entry.type == type && entry.id == id) return entry.data;
    return std::nullopt;
}

std::vector<MenuItem> LoadMenu(unsigned id) {
    const auto data = Find(kMenu, id);
    if (!data) Unsupported("menu", id);
    Reader reader(*data);
    reader.Skip(2);  // version
    reader.Skip(reader.U16());
    return ReadMenuLevel(reader);
}

// Sixteen neighbouring strings share one resource.
std::string LoadString(unsigned id) {
    const auto data = Find(kString, id / 16 + 1);
    if (!data) return {};
    Reader reader(*data);
    for (unsigned before = id % 16; before > 0; --before) reader.Skip(2 * std::size_t{reader.U16()});
    return reader.Text(reader.U16());
}

}  // namespace resources
