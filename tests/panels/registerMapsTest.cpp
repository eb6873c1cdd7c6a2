#include "panels/blocks/RegisterExchange.h"
#include "platform/files/RegisterMapFile.h"
#include "tests/support/TestBench.h"

namespace vrk {
namespace {

class RegisterMapsTest : public TestBench {
  protected:
    int stores() { return bus.state().part->nonvolatileWrites; }
    void cycleVcc() {
        i2c().OptVCC[1].userClick();
        i2c().OptVCC[0].userClick();
    }
    /// Writes all that can be written, each register its own value, and reads it back with its neighbours
    /// written; counts what a write stores.
    void writeAll(const RegisterMap& map, RegisterExchange& exchange);
};

int written(const PartRegister& reg, int index) {
    return (reg.resetValue ^ (0x15 + index)) & reg.most();
}

void RegisterMapsTest::writeAll(const RegisterMap& map, RegisterExchange& exchange) {
    int index = 0;
    for (const PartRegister& reg : map.registers) {
        const int before = stores();
        EXPECT_TRUE(exchange.write(reg, written(reg, index++)).good()) << reg.name;
        // The part powers up storing what goes to a register of selected storage.
        EXPECT_EQ(stores() - before, reg.storage == RegisterStorage::Volatile ? 0 : 1) << reg.name;
    }
    index = 0;
    for (const PartRegister& reg : map.registers)
        EXPECT_EQ(exchange.read(reg).value, written(reg, index++)) << reg.name;
}

TEST_F(RegisterMapsTest, EveryShippedMapIsThatOfItsPart) {
    openI2c();
    for (const std::string& name : sim::SimulatedBus::partNames()) {
        SCOPED_TRACE(name);
        const auto map = shippedRegisterMap(name + ", whatever");
        ASSERT_TRUE(map);
        EXPECT_EQ(map->part, name);
        EXPECT_EQ(map->registers.empty(), map->bus == PartBus::Pins);
        if (map->registers.empty())
            continue;
        bus.socket(name);
        act([this] { // the select of the part with banks is an address pin of others
            board().setPin(9, 0);
            board().cmdWrtPipe1_Click();
        });
        cycleVcc();
        RegisterExchange exchange(bench.services(), *map);
        act([&] {
            exchange.prepare();
            for (const PartRegister& reg : map->registers)
                EXPECT_EQ(exchange.read(reg).value, reg.resetValue) << reg.name;
            writeAll(*map, exchange);
        });
        cycleVcc();
        act([&] {
            int index = 0;
            for (const PartRegister& reg : map->registers) {
                const int kept = written(reg, index++);
                const bool stored = reg.storage != RegisterStorage::Volatile;
                if (stored || !startsWith(reg.name, "WCR")) { // those get what is stored behind them
                    EXPECT_EQ(exchange.read(reg).value, stored ? kept : reg.resetValue) << reg.name;
                }
            }
        });
        bus.socket(std::nullopt);
        act([&] { EXPECT_FALSE(exchange.read(map->registers.front()).good()); });
    }
}

TEST_F(RegisterMapsTest, AFaultyFileIsToldWithItsPlaceAndWhatWasExpected) {
    const std::string head = "part = \"P\"\nbus = \"i2c\"\nprotocol = \"registers\"\naddress = 0x50\n";
    const std::string reg =
        head + "[[registers]]\nname = \"A\"\naddressOffset = 1\naccess = \"read-only\"\nstorage = "
               "\"volatile\"\nresetValue = 0\n";
    const std::string field = reg + "[[registers.fields]]\nname = \"F\"\nbitOffset = 4\nbitWidth = 4\n";
    const std::pair<std::string, const char*> faults[] = {
        {"part = \"P\nbus", "m.toml:1:10: expected TOML: "},
        {"bus = \"i2c\"\n", "m.toml:1:1: expected part = \"...\", a text"},
        {"part = \"P\"\nbus = \"can\"\n", "m.toml:2:7: expected bus = one of \"i2c\", \"spi\", \"pins\""},
        {"part = \"P\"\nbuss = \"i2c\"\n", "m.toml:2:1: expected one of part, description, bus, "},
        {head + "adress = 1\n", "m.toml:5:1: expected one of "},
        {"part = \"P\"\nbus = \"i2c\"\nprotocol = \"quad\"\naddress = 0x51\n",
         "m.toml:4:11: expected an even address"},
        {"part = \"P\"\nbus = \"spi\"\nprotocol = \"none\"\n", "m.toml:3:12: expected \"none\" on the bus"},
        {reg + "width = 17\n", "m.toml:11:9: expected width = a whole number from 1 to 16"},
        {head + "registers = 3\n", "m.toml:5:13: expected [[registers]], a list of tables"},
        {reg + "dim = 2\n", "m.toml:6:8: expected \"%s\" in the name"},
        {reg + "[[registers]]\nname = \"a\"\naddressOffset = 2\naccess = \"read-only\"\nstorage = "
               "\"volatile\"\nresetValue = 0\n",
         "m.toml:12:8: expected a name that no other register has, not \"a\""},
        {field + "[[registers.fields]]\nname = \"G\"\nbitOffset = 3\nbitWidth = 2\n",
         "m.toml:17:13: expected bits that the field F has not"},
        {reg + "[[registers.fields]]\nname = \"G\"\nbitOffset = 4\nbitWidth = 5\n",
         "m.toml:14:12: expected bitWidth = a whole number from 1 to 4"},
        {field + "[[registers.fields.enumeratedValues]]\nname = \"x\"\nvalue = 16\n",
         "m.toml:17:9: expected value = a whole number from 0 to 15"},
        {"storageSelect = \"A.F\"\n" + field, "m.toml:1:17: expected \"REGISTER.FIELD\""},
    };
    for (const auto& [text, says] : faults)
        try {
            parseRegisterMap(text, "m.toml");
            ADD_FAILURE() << text;
        } catch (const Fault& fault) {
            EXPECT_THAT(fault.what(), ::testing::StartsWith(says)) << text;
        }
    EXPECT_FALSE(shippedRegisterMap("Manual Setup"));
    EXPECT_FALSE(shippedRegisterMap("../KV4071"));
}

} // namespace
} // namespace vrk
