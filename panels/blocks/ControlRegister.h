#pragma once

#include "platform/controls/PanelBlock.h"

#include <string>
#include <vector>

namespace vrk {

/// What the four register buttons do; the number is that of the lamp in Shape2.
enum class RegisterAction : int { ControlWrite = 0, ControlRead = 1, GeneralWrite = 2, GeneralRead = 3 };

constexpr bool isRead(RegisterAction action) {
    return action == RegisterAction::ControlRead || action == RegisterAction::GeneralRead;
}
constexpr bool isControl(RegisterAction action) {
    return action == RegisterAction::ControlWrite || action == RegisterAction::ControlRead;
}

/// What an exchange with a register came to.
struct RegisterOutcome {
    bool lamp = false;    ///< the lamps show success
    bool trusted = false; ///< the part itself has answered: a read is a reading
    std::string read{};   ///< text of a read as it is shown; nothing trustworthy unless `trusted`
    std::string detail{}; ///< why it failed, in words
};

/// The control register (ACR) and the general register of a part: what a byte is composed of, what was read,
/// the way of a byte to the part and back, and the lamps. What goes over the bus is the panel's.
class ControlRegister : public PanelBlock {
  public:
    Frame SSFrame2{host(), "SSFrame2"};
    Button cmdACRRead{host(), "cmdACRRead"};
    Button cmdACRWrite{host(), "cmdACRWrite"};
    /// 0 to write, 1 read
    ControlArray<TextBox> txtACR{host(), "txtACR", 0, 1};
    ControlArray<OptionButton> Option1{host(), "Option1", 0, 1};
    Frame FrmShutdown{host(), "FrmShutdown"};
    CheckBox chkShutdown{host(), "chkShutdown"};
    Label lblShutDown{host(), "lblShutDown"};
    Frame frmRegisterWrite{host(), "frmRegisterWrite"};
    TextBox txtGPWrite{host(), "txtGPWrite"};
    Reading lblGPRead{host(), "lblGPRead"};
    Label lblGDRs{host(), "lblGDRs"};
    Button cmdGPRead{host(), "cmdGPRead"};
    Button cmdWriteGP{host(), "cmdWriteGP"};
    /// 0 control register written, 1 read, 2 general register written, 3 read
    ControlArray<Lamp> Shape2{host(), "Shape2", 0, 3};

    /// Bit 7 says where wiper writes go, bit 6 is the shutdown, active low. Sends nothing.
    void Option1_Click(int index);
    void chkShutdown_Click();
    void cmdACRRead_Click() { exchange(RegisterAction::ControlRead); }
    void cmdACRWrite_Click() { exchange(RegisterAction::ControlWrite); }
    void cmdGPRead_Click() { exchange(RegisterAction::GeneralRead); }
    void cmdWriteGP_Click() { exchange(RegisterAction::GeneralWrite); }

  protected:
    /// \param image the composed byte, kept with the panel's wiper state.
    ControlRegister(Panel& panel, int& image);

    // The exchange, which is the panel's.
    /// Fixed waits around an exchange.
    struct Pace {
        Milliseconds before{0};
        Milliseconds after{0};
    };
    virtual Pace registerPace(RegisterAction action) const = 0;
    /// Holds the register's address or command; "NA" where the part has no such register.
    virtual TextBox& registerAddress(RegisterAction action) = 0;
    /// Runs before the user is told that there is no such register.
    virtual void noRegister(RegisterAction /*action*/) {}
    /// What rests meanwhile.
    virtual std::vector<Control*> registerButtons(RegisterAction action);
    virtual RegisterOutcome exchangeRegister(RegisterAction action) = 0;
    /// The panel's own lamps for what went well or wrong.
    virtual void showTransfer(bool read, Colour colour) = 0;
    /// With the lamps set and the buttons still at rest.
    virtual void afterRegister(RegisterAction /*action*/) {}

    /// What was read from this register stands for no other one.
    void watchRegisterAddress(TextBox& address, Control& reading);
    /// The registers of another part or address stand here: what was read no longer holds.
    void markRegistersStale(const std::string& cause);

  private:
    void exchange(RegisterAction action);
    bool hasRegister(RegisterAction action);
    void showOutcome(RegisterAction action, const RegisterOutcome& outcome);

    int& image_;
    OptionGroup optionGroup_;
};

} // namespace vrk
