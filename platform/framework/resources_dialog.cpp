// Dialog templates. The plain form and the extended one carry the same things in another order and width.
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "platform/framework/resources.h"
#include "platform/framework/resources_reader.h"

namespace resources {
namespace {

constexpr std::uint32_t kHasFont = 0x40;  // DS_SETFONT

// Window classes that a template may name by number, from 0x80 on.
constexpr unsigned kFirstClass = 0x80;
constexpr std::array<std::string_view, 6> kClasses{"BUTTON",  "EDIT",      "STATIC",
                                                   "LISTBOX", "SCROLLBAR", "COMBOBOX"};

// Class names ignore case, and compilers change it: the known ones come out as above, others in lower case.
std::string ClassName(std::string name) {
    const auto fold = [&name](char first, char last, char to) {
        for (char& c : name)
            if (c >= first && c <= last) c = static_cast<char>(c - first + to);
    };
    fold('a', 'z', 'A');
    if (std::find(kClasses.begin(), kClasses.end(), name) == kClasses.end()) fold('A', 'Z', 'a');
    return name;
}

template <typename Box>
void ReadBox(Reader& reader, Box& box) {
    box.x = reader.I16();
    box.y = reader.I16();
    box.cx = reader.I16();
    box.cy = reader.I16();
}

bool ReadItem(Reader& reader, bool extended, DialogItem& item) {
    reader.Align4();
    if (extended) {
        reader.Skip(4);  // help number
        item.ex_style = reader.U32();
        item.style = reader.U32();
    } else {
        item.style = reader.U32();
        item.ex_style = reader.U32();
    }
    ReadBox(reader, item);
    // Unaddressed controls carry 0xFFFF in the plain form and, from some compilers, in the extended one too.
    const std::uint32_t id = extended ? reader.U32() : reader.U16();
    item.id = id == 0xFFFF ? -1 : static_cast<std::int32_t>(id);

    Name name = reader.NameOrNumber();
    if (name.IsText()) {
        item.class_name = ClassName(std::move(name.text));
    } else {
        if (name.number < kFirstClass || name.number - kFirstClass >= kClasses.size()) return false;
        item.class_name = kClasses[name.number - kFirstClass];
    }
    Name title = reader.NameOrNumber();
    item.text = std::move(title.text);
    item.resource = title.number;
    item.extra_size = reader.U16();
    reader.Skip(item.extra_size);
    return reader.Ok();
}

}  // namespace

std::optional<Dialog> LoadDialog(unsigned id) {
    const auto data = Find(kDialog, id);
    if (!data) return std::nullopt;
    Reader reader(*data);
    Dialog dialog;
    // A plain template begins with its style, which never has 0xFFFF above 1.
    dialog.style = reader.U32();
    dialog.extended = dialog.style == 0xFFFF0001U;
    if (dialog.extended) {
        reader.Skip(4);  // help number
        dialog.ex_style = reader.U32();
        dialog.style = reader.U32();
    } else {
        dialog.ex_style = reader.U32();
    }
    unsigned count = reader.U16();
    ReadBox(reader, dialog);

    const Name menu = reader.NameOrNumber();
    Name window_class = reader.NameOrNumber();
    if (menu.IsText() || window_class.number != 0) return std::nullopt;
    dialog.menu = menu.number;
    dialog.class_name = std::move(window_class.text);
    dialog.title = reader.TextZ();
    if ((dialog.style & kHasFont) != 0) {
        dialog.font_points = reader.U16();
        if (dialog.extended) reader.Skip(4);  // weight, slant, character set
        dialog.font_face = reader.TextZ();
    }
    if (!reader.Ok()) return std::nullopt;
    for (; count > 0; --count) {
        DialogItem item;
        if (!ReadItem(reader, dialog.extended, item)) return std::nullopt;
        dialog.items.push_back(std::move(item));
    }
    return dialog;
}

}  // namespace resources
