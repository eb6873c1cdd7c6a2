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
    };
    FieldRows(PageUi& page, Byte byte);

  private:
    void follow();
    void rebuild();
    void show();
    void choose(const RegisterField& field, int value);
    const PartRegister* current() const;

    Byte byte_;
    std::string product_;
    std::string address_;
    std::optional<RegisterMap> map_;
    std::vector<std::function<void()>> refreshes_;
};

} // namespace vrk
