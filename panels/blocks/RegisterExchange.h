#pragma once

#include "panels/blocks/BenchServices.h"
#include "platform/files/RegisterMap.h"

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vrk {

/// Reads and writes registers of a part as its map says, whichever bus and protocol lead to them. Touches
/// no device panel and says nothing of a part that does not answer: that is in the status. A lost link has
/// its dialog.
class RegisterExchange {
  public:
    /// \param map must outlive this. \param address slave byte or ID in place of the map's.
    RegisterExchange(BenchServices& services, const RegisterMap& map, std::optional<int> address = {});

    struct Result {
        int status = 0;             ///< 8 good, 1 the part did not answer, 2 no reply, 4 not sent
        std::optional<int> value{}; ///< nothing unless good
        bool good() const;
    };

    /// Sets bus options and pins so that the part listens: once, before the first register.
    void prepare();
    Result read(const PartRegister& reg);
    /// \param value up to the register's most.
    Result write(const PartRegister& reg, int value);

  private:
    using Bytes = std::vector<std::uint8_t>;
    enum class Way { Read, Write };

    Result i2c(Way way, const PartRegister& reg, int value);
    Result i2cOnce(Way way, const PartRegister& reg, int value);
    Result spi(Way way, const PartRegister& reg, int value);
    Result readI2c(std::uint8_t lead, int count);
    Result writeI2c(std::uint8_t lead, const Bytes& data);
    /// One frame, sent again behind a loss of the link. \return status, and the bytes that came back
    /// meanwhile.
    std::pair<int, Bytes> spiFrame(const Bytes& frame);
    Result inBank(Way way, const PartRegister& reg, int value);
    /// One byte, or two with the high bits first.
    static Bytes split(const PartRegister& reg, int value);

    BenchServices& services_;
    const RegisterMap& map_;
    std::optional<int> address_;
};

} // namespace vrk
