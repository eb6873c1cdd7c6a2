#pragma once

#include "platform/files/RegisterMap.h"

#include <QWidget>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrk {

class Control;
class Label;
class PageUi;
class TextBox;

/// The fields of a register by name, under its byte: what each has in the byte to write, where a choice by
/// name can be taken, and what it had in the byte read. Empty while the part, or its register of that number,
/// is in no map.
class FieldRows final : public QWidget {
  public:
    /// Where the byte of a register stands on a panel.
    struct Byte {
        Label& product;   ///< begins with the part's name
        TextBox& address; ///< the register's number, or the command that writes it
        TextBox& toWrite;
        Control& asRead;
        std::function<std::string()> readText;
        /// The command that reads it, where that is one of its own; it may lead to another register.
        TextBox* readAddress = nullptr;
    };
    FieldRows(PageUi& page, Byte byte);

  private:
    void follow();
    void rebuild();
    void orderTabs();
    void show();
    void choose(const RegisterField& field, int value);
    /// The register that the byte to write goes to, and the one that the byte read came from; nullptr for
    /// one that no map knows.
    const PartRegister* writtenRegister() const;
    const PartRegister* readRegister() const;

    Byte byte_;
    std::string product_;
    std::string addresses_;
    std::optional<RegisterMap> map_;
    std::vector<std::function<void()>> refreshes_;
};

} // namespace vrk
