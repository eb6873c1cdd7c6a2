#include "platform/files/RegisterMap.h"

#include "platform/runtime/text.h"

#include <algorithm>
#include <charconv>

namespace vrk {

const FieldChoice* RegisterField::choiceOf(int value) const {
    const auto found = std::find_if(choices.begin(), choices.end(),
                                    [value](const FieldChoice& choice) { return choice.value == value; });
    return found == choices.end() ? nullptr : &*found;
}

const char* accessText(RegisterAccess access) {
    switch (access) {
    case RegisterAccess::ReadOnly:
        return "read-only";
    case RegisterAccess::WriteOnly:
        return "write-only";
    case RegisterAccess::ReadWrite:
        break;
    }
    return "read-write";
}

const PartRegister* RegisterMap::named(const std::string& name) const {
    const auto found = std::find_if(registers.begin(), registers.end(), [&name](const PartRegister& one) {
        return upperCase(one.name) == upperCase(name);
    });
    return found == registers.end() ? nullptr : &*found;
}

const PartRegister* RegisterMap::at(int number) const {
    const auto found = std::find_if(registers.begin(), registers.end(),
                                    [number](const PartRegister& one) { return one.address == number; });
    return found == registers.end() ? nullptr : &*found;
}

const PartRegister* RegisterMap::find(const std::string& nameOrAddress) const {
    if (const PartRegister* byName = named(nameOrAddress))
        return byName;
    int number = -1;
    const char* last = nameOrAddress.data() + nameOrAddress.size();
    const auto [end, error] = std::from_chars(nameOrAddress.data(), last, number, 16);
    return error == std::errc() && end == last ? at(number) : nullptr;
}

const RegisterField* RegisterMap::storageField() const {
    const PartRegister* holder = control();
    if (holder == nullptr)
        return nullptr;
    const auto found =
        std::find_if(holder->fields.begin(), holder->fields.end(),
                     [this](const RegisterField& field) { return field.name == storageFieldName; });
    return found == holder->fields.end() ? nullptr : &*found;
}

} // namespace vrk
