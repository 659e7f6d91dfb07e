// SPDX-License-Identifier: MIT
// Dialog templates. The plain form and the extended one carry the same things in another order and width.
#include "platform/framework/resources.h"
#include "platform/framework/resources_reader.h"
#include "platform/framework/unsupported.h"

namespace resources {
namespace {

constexpr std::uint32_t kExtended = 0xFFFF0001U;  // in place of the style, which never has 0xFFFF above 1
constexpr std::uint32_t kHasFont = 0x40;          // DS_SETFONT

// Classes come by number or by name, and names ignore case.
std::string ClassName(const Name& name) {
    if (name.number == 0x80) return "button";
    if (name.number == 0x82) return "static";
    if (name.number != 0) Unsupported("class of a dialog's control", name.number);
    std::string lower = name.text;
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

// What stands first in a template and in each of its controls.
template <typename Styled>
void ReadStyles(Reader& reader, bool extended, Styled& styled) {
    if (extended) {
        reader.Skip(4);  // help number
        styled.exStyle = reader.U32();
        styled.style = reader.U32();
    } else {
        styled.style = reader.U32();
        styled.exStyle = reader.U32();
    }
}

template <typename Box>
void ReadBox(Reader& reader, Box& box) {
    box.x = reader.I16();
    box.y = reader.I16();
    box.cx = reader.I16();
    box.cy = reader.I16();
}

DialogItem ReadItem(Reader& reader, bool extended) {
    DialogItem item;
    reader.Align4();
    ReadStyles(reader, extended, item);
    ReadBox(reader, item);
    // Unaddressed controls carry 0xFFFF in the plain form and, from some compilers, in the extended one too.
    const std::uint32_t id = extended ? reader.U32() : reader.U16();
    item.id = id == 0xFFFF ? -1 : static_cast<std::int32_t>(id);
    item.className = ClassName(reader.NameOrNumber());
    const Name title = reader.NameOrNumber();
    item.text = title.text;
    item.resource = title.number;
    reader.Skip(reader.U16());  // creation data
    return item;
}

}  // namespace

Dialog LoadDialog(unsigned id) {
    const auto data = Find(kDialog, id);
    if (!data) Unsupported("dialog", id);
    Reader reader(*data);
    Dialog dialog;
    const bool extended = Reader(*data).U32() == kExtended;
    if (extended) reader.Skip(4);
    ReadStyles(reader, extended, dialog);
    unsigned count = reader.U16();
    ReadBox(reader, dialog);
    dialog.menu = reader.NameOrNumber().number;
    if (const Name window = reader.NameOrNumber(); window.number != 0 || !window.text.empty())
        Unsupported("class of a dialog", window.text);
    dialog.title = reader.TextZ();
    if ((dialog.style & kHasFont) != 0) {
        reader.Skip(extended ? 6 : 2);  // size; weight, slant and character set
        reader.TextZ();
    }
    for (; count > 0; --count) dialog.items.push_back(ReadItem(reader, extended));
    return dialog;
}

}  // namespace resources
