#include <Hy/HyStringTable.h>
#include <cstring>
#include <utility>

namespace Hy {

HyStringTable& HyStringTable::instance() {
    static HyStringTable theTable;
    return theTable;
}

void HyStringTable::add(const char* name, const char* text) {
    if (!name || !text) {
        HyWarning(0, "HyStringTable::add: name and text must not be null.\n");
        return;
    }
    const std::size_t length = std::strlen(name);
    if (length >= sizeof(HyStringTableElement::name)) {
        HyWarning(0, "HyStringTable::add: the name must be shorter than 256 bytes.\n");
        return;
    }
    if (const HyStringTableElement* present = find(name)) {
        table[static_cast<std::size_t>(present - table.begin())].text = text;
        return;
    }
    HyStringTableElement element;
    std::memcpy(element.name, name, length + 1);
    element.text = text; // before the table moves: the text may stand in it
    table.push_back(std::move(element));
}

const char* HyStringTable::get(const char* name) const {
    const HyStringTableElement* element = name ? find(name) : nullptr;
    if (!element)
        HyWarning(0, "HyStringTable: cannot find '%s' in the string table.\n",
                  name ? name : "(null)");
    return element ? element->text.c_str() : nullptr;
}

std::size_t HyStringTable::size() const {
    return table.size();
}

const HyStringTableElement* HyStringTable::find(const char* name) const {
    for (const HyStringTableElement& element : table)
        if (std::strcmp(element.name, name) == 0)
            return &element;
    return nullptr;
}

} // namespace Hy
