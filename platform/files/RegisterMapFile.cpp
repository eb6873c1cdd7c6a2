#include "platform/files/RegisterMapFile.h"

#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "platform/runtime/text.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cctype>
#include <utility>

namespace vrk {

namespace fs = std::filesystem;

namespace {

std::string placeIn(const std::string& file, const toml::source_region& region) {
    return file + ":" + std::to_string(region.begin.line) + ":" + std::to_string(region.begin.column) + ": ";
}

/// A word of the file and what it means.
template <class T>
struct Word {
    const char* text;
    T value;
};
constexpr Word<PartBus> kBuses[] = {{"i2c", PartBus::I2C}, {"spi", PartBus::SPI}, {"pins", PartBus::Pins}};
constexpr Word<PartProtocol> kProtocols[] = {{"none", PartProtocol::None},
                                             {"registers", PartProtocol::Registers},
                                             {"banks", PartProtocol::Banks},
                                             {"quad", PartProtocol::Quad},
                                             {"ten-bit", PartProtocol::TenBit}};
constexpr Word<RegisterAccess> kAccesses[] = {{"read-write", RegisterAccess::ReadWrite},
                                              {"read-only", RegisterAccess::ReadOnly},
                                              {"write-only", RegisterAccess::WriteOnly}};
constexpr Word<RegisterStorage> kStorages[] = {{"volatile", RegisterStorage::Volatile},
                                               {"non-volatile", RegisterStorage::NonVolatile},
                                               {"selected", RegisterStorage::Selected}};

struct Range {
    int least;
    int most;
};
constexpr Range kByte{0, 0xFF};

/// One table of the file, key by key. Every complaint names the place of what is wrong.
class Table {
  public:
    Table(const std::string& file, const toml::table& table, const std::vector<std::string>& keys)
        : file_(file), table_(table) {
        for (const auto& [key, value] : table)
            if (std::find(keys.begin(), keys.end(), std::string(key.str())) == keys.end())
                refuse(key.source(), "one of " + listed(keys) + ", not \"" + std::string(key.str()) + "\"");
    }

    [[noreturn]] void refuse(const toml::source_region& at, const std::string& wanted) const {
        throw Fault(placeIn(file_, at) + "expected " + wanted);
    }
    /// The place of a key's value, or of the table.
    const toml::source_region& at(const char* key) const {
        const toml::node* node = table_.get(key);
        return node != nullptr ? node->source() : table_.source();
    }
    bool has(const char* key) const { return table_.contains(key); }

    std::string text(const char* key) const {
        const toml::node* node = table_.get(key);
        const auto value = node != nullptr ? node->value_exact<std::string>() : std::nullopt;
        if (!value || trimmed(*value).empty())
            refuse(at(key), std::string(key) + " = \"...\", a text");
        return *value;
    }
    std::string textOr(const char* key, const std::string& other) const {
        return has(key) ? text(key) : other;
    }
    int whole(const char* key, Range range) const {
        const toml::node* node = table_.get(key);
        const auto value = node != nullptr ? node->value_exact<std::int64_t>() : std::nullopt;
        if (!value || *value < range.least || *value > range.most)
            refuse(at(key), std::string(key) + " = a whole number from " + std::to_string(range.least) +
                                " to " + std::to_string(range.most));
        return static_cast<int>(*value);
    }
    int wholeOr(const char* key, Range range, int other) const {
        return has(key) ? whole(key, range) : other;
    }

    template <class T, std::size_t Count>
    T word(const char* key, const Word<T> (&words)[Count]) const {
        const toml::node* node = table_.get(key);
        const auto value = node != nullptr ? node->value_exact<std::string>() : std::nullopt;
        std::vector<std::string> known;
        for (const Word<T>& one : words) {
            if (value == one.text)
                return one.value;
            known.push_back("\"" + std::string(one.text) + "\"");
        }
        refuse(at(key), std::string(key) + " = one of " + listed(known));
    }

    /// The tables of an array, [[key]]; none if it is left out.
    template <class Read>
    void each(const char* key, Read read) const {
        const toml::node* node = table_.get(key);
        if (node == nullptr)
            return;
        const toml::array* list = node->as_array();
        if (list == nullptr)
            refuse(node->source(), "[[" + std::string(key) + "]], a list of tables");
        for (const toml::node& entry : *list) {
            if (!entry.is_table())
                refuse(entry.source(), "[[" + std::string(key) + "]], a list of tables");
            read(*entry.as_table());
        }
    }

  private:
    static std::string listed(const std::vector<std::string>& names) {
        std::string all;
        for (const std::string& name : names)
            all += (all.empty() ? "" : ", ") + name;
        return all;
    }

    const std::string& file_;
    const toml::table& table_;
};

/// Fills a map from a file's tables.
class MapReader {
  public:
    MapReader(const std::string& file, const toml::table& root) : file_(file), root_(root) {}

    RegisterMap read() {
        const Table top(file_, root_,
                        {"part", "description", "bus", "protocol", "address", "storageSelect", "readCommand",
                         "writeCommand", "registers"});
        map_.part = top.text("part");
        map_.bus = top.word("bus", kBuses);
        map_.protocol = top.word("protocol", kProtocols);
        if ((map_.protocol == PartProtocol::None) != (map_.bus == PartBus::Pins))
            top.refuse(top.at("protocol"), "\"none\" on the bus \"pins\", and no other");
        if (top.has("address")) {
            map_.address = top.whole("address", {0, 0xFE});
            if (*map_.address % 2 != 0)
                top.refuse(top.at("address"), "an even address: bit 0 is the bus's own");
        } else if (map_.bus == PartBus::I2C) {
            top.refuse(root_.source(), "address = the slave byte");
        }
        readBase_ = top.wholeOr("readCommand", kByte, 0);
        writeBase_ = top.wholeOr("writeCommand", kByte, 0);
        top.each("registers", [this](const toml::table& table) { takeRegister(table); });
        takeStorageSelect(top);
        return std::move(map_);
    }

  private:
    void takeRegister(const toml::table& source) {
        const Table table(file_, source,
                          {"name", "description", "addressOffset", "width", "access", "storage", "resetValue",
                           "readCommand", "writeCommand", "dim", "dimIncrement", "fields"});
        if (map_.protocol == PartProtocol::None)
            table.refuse(source.source(), "no registers, as the part has no bus");
        PartRegister one;
        one.name = table.text("name");
        one.description = table.textOr("description", "");
        one.address = table.whole("addressOffset", kByte);
        one.width = table.wholeOr("width", {1, 16}, 8);
        one.access = table.word("access", kAccesses);
        one.storage = table.word("storage", kStorages);
        one.resetValue = table.whole("resetValue", {0, one.most()});
        table.each("fields", [&](const toml::table& field) { takeField(field, one); });
        const int count = table.wholeOr("dim", {1, 256}, 1);
        const int distance = table.wholeOr("dimIncrement", kByte, 1);
        const std::size_t number = one.name.find("%s");
        if (table.has("dim") != (number != std::string::npos))
            table.refuse(table.at("name"), "\"%s\" in the name where there is a dim, and not else");
        const int first = one.address;
        const std::string pattern = one.name;
        for (int index = 0; index < count; ++index) {
            one.address = first + index * distance;
            if (one.address > kByte.most)
                table.refuse(table.at("dim"), "addresses up to 255");
            const int step = index * distance;
            one.readCommand = table.wholeOr("readCommand", kByte, (readBase_ + first) & 0xFF) + step;
            one.writeCommand = table.wholeOr("writeCommand", kByte, (writeBase_ + first) & 0xFF) + step;
            if (number != std::string::npos)
                one.name = std::string(pattern).replace(number, 2, std::to_string(index));
            if (map_.named(one.name) != nullptr)
                table.refuse(table.at("name"), "a name that no other register has, not \"" + one.name + "\"");
            if (map_.at(one.address) != nullptr)
                table.refuse(table.at("addressOffset"), "an address that no other register has");
            map_.registers.push_back(one);
        }
    }

    void takeField(const toml::table& source, PartRegister& holder) const {
        const Table table(file_, source,
                          {"name", "description", "bitOffset", "bitWidth", "enumeratedValues"});
        RegisterField field;
        field.name = table.text("name");
        field.bitOffset = table.whole("bitOffset", {0, holder.width - 1});
        field.bitWidth = table.whole("bitWidth", {1, holder.width - field.bitOffset});
        const int bits = field.put(0, field.most());
        for (const RegisterField& other : holder.fields) {
            if (other.name == field.name)
                table.refuse(table.at("name"), "a name that no other field has");
            if ((other.put(0, other.most()) & bits) != 0)
                table.refuse(table.at("bitOffset"), "bits that the field " + other.name + " has not");
        }
        table.each("enumeratedValues", [&](const toml::table& entry) {
            const Table choice(file_, entry, {"name", "description", "value"});
            FieldChoice one{choice.text("name"), choice.whole("value", {0, field.most()})};
            for (const FieldChoice& other : field.choices)
                if (other.name == one.name || other.value == one.value)
                    choice.refuse(entry.source(), "a name and a value that no other choice has");
            field.choices.push_back(std::move(one));
        });
        holder.fields.push_back(std::move(field));
    }

    void takeStorageSelect(const Table& top) {
        if (top.has("storageSelect")) {
            const std::string text = top.text("storageSelect");
            const std::size_t dot = text.find('.');
            map_.controlName = text.substr(0, dot);
            map_.storageFieldName = dot == std::string::npos ? "" : text.substr(dot + 1);
            const RegisterField* field = map_.storageField();
            if (field == nullptr || field->bitWidth != 1)
                top.refuse(top.at("storageSelect"), "\"REGISTER.FIELD\", a field of one bit that is there");
        }
        for (const PartRegister& one : map_.registers)
            if (one.storage == RegisterStorage::Selected && map_.storageField() == nullptr)
                top.refuse(root_.source(), "storageSelect, as the storage of " + one.name + " is selected");
    }

    const std::string& file_;
    const toml::table& root_;
    RegisterMap map_;
    int readBase_ = 0;
    int writeBase_ = 0;
};

} // namespace

RegisterMap parseRegisterMap(const std::string& text, const std::string& file) {
    try {
        const toml::table root = toml::parse(text, file);
        return MapReader(file, root).read();
    } catch (const toml::parse_error& error) {
        throw Fault(placeIn(file, error.source()) + "expected TOML: " + std::string(error.description()));
    }
}

RegisterMap readRegisterMap(const fs::path& path) {
    return parseRegisterMap(readFile(path), path.string());
}

fs::path registerMapFolder() {
    std::error_code error;
    fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    // From bin/ of an installation, or from a program's place in the build folder, up to where share/ is.
    constexpr int kLevels = 4;
    for (int level = 0; level < kLevels && !error; ++level, folder = folder.parent_path())
        if (const fs::path maps = folder / "share/vrkbench/registers"; fs::is_directory(maps, error))
            return maps;
        else
            error.clear();
    return {};
}

std::optional<RegisterMap> shippedRegisterMap(const std::string& product) {
    const auto end = std::find_if(product.begin(), product.end(),
                                  [](unsigned char character) { return std::isalnum(character) == 0; });
    const fs::path path = registerMapFolder() / (upperCase(std::string(product.begin(), end)) + ".toml");
    if (end == product.begin() || !fileExists(path))
        return std::nullopt;
    return readRegisterMap(path);
}

} // namespace vrk
