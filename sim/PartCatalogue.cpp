#include "sim/PartCatalogue.h"

#include "sim/RegisterPart.h"
#include "sim/SpiRegisterPart.h"

#include <stdexcept>

namespace vrk::sim {

namespace {

using OptionalAddress = std::optional<std::uint8_t>;

struct Entry {
    const char* name;
    OptionalAddress address; ///< none: the part has no address to choose
    std::unique_ptr<Part> (*make)(const char* name, OptionalAddress address);
};

template <int Wipers, int Taps, int Acr>
std::unique_ptr<Part> i2cRegisters(const char* name, OptionalAddress address) {
    return std::make_unique<RegisterPart>(name, RegisterLayout{Wipers, Taps, Acr}, address.value_or(0));
}

template <int Wipers, int Taps, int Acr>
std::unique_ptr<Part> spiRegisters(const char* name, OptionalAddress address) {
    return std::make_unique<SpiRegisterPart>(name, RegisterLayout{Wipers, Taps, Acr}, address);
}

const Entry kCatalogue[] = {
    {"KV4071", 0x50, i2cRegisters<1, 128, 0x02>}, {"KV4074", 0xA0, i2cRegisters<4, 128, 0x08>},
    {"KV4078", 0xA0, i2cRegisters<4, 256, 0x10>}, {"KV6021", 0x50, i2cRegisters<1, 128, 0x02>},
    {"KV4180", {}, spiRegisters<4, 256, 0x10>},   {"KV4184", 0x50, spiRegisters<4, 128, 0x08>},
};

} // namespace

std::vector<std::string> partNames() {
    std::vector<std::string> names;
    for (const Entry& entry : kCatalogue) {
        names.emplace_back(entry.name);
    }
    return names;
}

std::unique_ptr<Part> makePart(const std::string& name, std::optional<int> address) {
    std::string known;
    for (const Entry& entry : kCatalogue) {
        known += (known.empty() ? "" : ", ") + std::string(entry.name);
        if (name != entry.name) {
            continue;
        }
        OptionalAddress chosen = entry.address;
        if (address) {
            if (!entry.address) {
                throw std::invalid_argument(name + " has no address to set");
            }
            if (*address < 0 || *address > 0xFE || *address % 2 != 0) {
                throw std::invalid_argument("an address must be even, from 0 to 254 (FE)");
            }
            chosen = static_cast<std::uint8_t>(*address);
        }
        return entry.make(entry.name, chosen);
    }
    throw std::invalid_argument("unknown part \"" + name + "\": one of " + known);
}

} // namespace vrk::sim
