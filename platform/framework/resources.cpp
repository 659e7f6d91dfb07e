#include "platform/framework/resources.h"

#include <utility>

#include "platform/framework/resources_reader.h"

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
constexpr unsigned kMenuGrayed = 0x0001;
constexpr unsigned kMenuDisabled = 0x0002;
constexpr unsigned kMenuChecked = 0x0008;
constexpr unsigned kMenuPopup = 0x0010;
constexpr unsigned kMenuLast = 0x0080;
constexpr unsigned kMenuSeparator = 0x0800;
constexpr int kMaxMenuDepth = 8;

bool ReadMenuLevel(Reader& reader, int depth, std::vector<MenuItem>& items) {
    if (depth > kMaxMenuDepth) return false;
    for (bool last = false; !last;) {
        const unsigned flags = reader.U16();
        MenuItem item;
        item.popup = (flags & kMenuPopup) != 0;
        if (!item.popup) item.id = reader.U16();
        item.text = reader.TextZ();
        if (!reader.Ok()) return false;
        item.separator = !item.popup && item.id == 0 && (item.text.empty() || (flags & kMenuSeparator) != 0);
        item.grayed = (flags & (kMenuGrayed | kMenuDisabled)) != 0;
        item.checked = (flags & kMenuChecked) != 0;
        if (item.popup && !ReadMenuLevel(reader, depth + 1, item.children)) return false;
        items.push_back(std::move(item));
        last = (flags & kMenuLast) != 0;
    }
    return true;
}

}  // namespace

// What follows an entry that makes no sense is not looked at.
void Use(const void* data, std::size_t size) {
    g_entries.clear();
    const std::span<const std::uint8_t> block(static_cast<const std::uint8_t*>(data), size);
    Reader reader(block);
    while (reader.Left() > 0) {
        const std::size_t start = reader.Position();
        const std::size_t data_size = reader.U32();
        const std::size_t header_size = reader.U32();
        if (!reader.Ok() || header_size < 8 || header_size > block.size() - start) return;
        Reader header(block.subspan(start + 8, header_size - 8));
        const Name type = header.NameOrNumber();
        const Name id = header.NameOrNumber();
        reader.Skip(header_size - 8);
        const auto bytes = reader.Bytes(data_size);
        if (!reader.Ok() || !header.Ok()) return;
        if (!type.IsText() && !id.IsText()) g_entries.push_back({type.number, id.number, bytes});
        reader.Align4();
    }
}

std::optional<std::span<const std::uint8_t>> Find(unsigned type, unsigned id) {
    for (const Entry& entry : g_entries)
        if (entry.type == type && entry.id == id) return entry.data;
    return std::nullopt;
}

std::optional<std::vector<MenuItem>> LoadMenu(unsigned id) {
    const auto data = Find(kMenu, id);
    if (!data) return std::nullopt;
    Reader reader(*data);
    const unsigned version = reader.U16();
    reader.Skip(reader.U16());
    std::vector<MenuItem> items;
    if (version != 0 || !ReadMenuLevel(reader, 0, items)) return std::nullopt;
    return items;
}

// Sixteen neighbouring strings share one resource.
std::optional<std::string> LoadString(unsigned id) {
    const auto data = Find(kString, id / 16 + 1);
    if (!data) return std::nullopt;
    Reader reader(*data);
    for (unsigned before = id % 16; before > 0; --before) reader.Skip(2 * std::size_t{reader.U16()});
    std::string text = reader.Text(reader.U16());
    if (!reader.Ok() || text.empty()) return std::nullopt;
    return text;
}

}  // namespace resources
