#pragma once

#include "platform/qt/layout.h"

class QLabel;

namespace vrk {

class AddressPins;
class ChannelBlock;
class ControlRegister;
class Label;
class PageUi;
class Section;
class ShutdownPin;
class StatusBlock;
class StoreBlock;
class SupplyBlock;
class TextBox;

/// One picture a block, so that every panel that has the block shows it alike. Each function adds a section
/// to the page's inspector or gives rows for one; the page calls them from top to bottom.

/// Switches, level, measurement and correction of the supplies. It folds last: whatever else gives way to a
/// small window, the volts at the part stay in sight.
Section& addSupplySection(PageUi& page, SupplyBlock& block);

/// What of a register's address is the panel's own.
struct RegisterAddress {
    Label* caption = nullptr;   ///< "ACR Address"; nullptr: the word "Register" or "Commands" stands there
    TextBox* address = nullptr; ///< the register's number, or the command that writes it
    Label* product = nullptr;   ///< the fields' names come from the map of its part
    TextBox* read = nullptr;    ///< where a read has a command of its own; `address` is then the write's
};
/// The control register: what is to be written, what was read, and where wiper writes go.
Section& addControlRegisterSection(PageUi& page, ControlRegister& block, const RegisterAddress& at);
Section& addGeneralRegisterSection(PageUi& page, ControlRegister& block, const RegisterAddress& at);
Section& addShutdownPinSection(PageUi& page, ShutdownPin& block);
/// What has worn the part so far, by register, and from how many writes on a loop is asked about.
Section& addStoreSection(PageUi& page, StoreBlock& block);
/// The six lamps of link and transfers; the folded heading shows them small.
Section& addStatusSection(PageUi& page, StatusBlock& block);

/// Rows of a panel's set-up section.
qt::Item channelChoice(PageUi& page, ChannelBlock& block);
/// \param words "Address", or what else the byte is that selects the part.
qt::Item addressRows(PageUi& page, AddressPins& block, const QString& words);

} // namespace vrk
