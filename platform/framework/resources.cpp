#include "platform/framework/resources.h"

#include <utility>

#include "platform/framework/resources_reader.h"

namespace resources {
namespace {

std::span<const std::uint8_t> g_block;

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

void Use(const void* data, std::size_t size) {
    g_block = {static_cast<const std::uint8_t*>(data), size};
}

std::optional<std::span<const std::uint8_t>> Find(unsigned type, unsigned id) {
    Reader reader(g_block);
    while (reader.Left() > 0) {
        const std::size_t start = reader.Position();
        const std::size_t data_size = reader.U32();
        const std::size_t header_size = reader.U32();
        if (!reader.Ok() || header_size < 8 || header_size > g_block.size() - start) return std::nullopt;
        Reader header(g_block.subspan(start + 8, header_size - 8));
        const Name entry_type = header.NameOrNumber();
        const Name entry_id = header.NameOrNumber();
        reader.Skip(header_size - 8);
        const auto data = reader.Bytes(data_size);
        if (!reader.Ok() || !header.Ok()) return std::nullopt;
        if (entry_type.number == type && entry_id.number == id && !entry_type.IsText() && !entry_id.IsText())
            return data;
        reader.Align4();
    }
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
