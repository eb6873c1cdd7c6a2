#pragma once

#include "motherboard/frmMotherboardDAQ2.h"
#include "platform/runtime/text.h"

#include <string>

namespace vrk {

/// A row of the motherboard's SPI box: the bytes that go out stand from place 1 on, those that come back from
/// place 0 on. A part answers a byte late, so that what comes back in place 1 tells whether one is there.
struct SpiRowFields {
    const ControlArray<TextBox>& sent;
    const ControlArray<TextBox>& came;

    static constexpr int kCheckByte = 1;

    /// The row lets events run: a frame that another sender has put through it meanwhile leaves its bytes and
    /// its answer in these fields. \param place from 1
    bool holds(int place, const std::string& hex) const { return sent[place].text() == hex; }
    bool checked() const { return hexToInt(came[kCheckByte].text()) != 0; }
    /// The same for a frame that begins with an ID: a line that nobody drives may read as ones.
    bool heard() const { return checked() && hexToInt(came[kCheckByte].text()) == hexToInt(sent[1].text()); }
};

inline SpiRowFields spiWriteRow(frmMotherboardDAQ2& board) {
    return {board.txtSPIWrite2Data, board.txtSPIORead};
}
inline SpiRowFields spiReadRow(frmMotherboardDAQ2& board) {
    return {board.txtSPIWrite3Data, board.txtSPIORead3};
}

} // namespace vrk
