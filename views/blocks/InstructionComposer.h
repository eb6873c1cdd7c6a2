#pragma once

#include <QWidget>

#include <vector>

class QTableView;

namespace vrk {

class InstructionPanel;
class PageUi;

/// The instruction: the table to choose from, the options of register and pot, and the byte that they make,
/// as bits, as hexadecimal and in words, before it is sent.
class InstructionComposer final : public QWidget {
  public:
    InstructionComposer(PageUi& page, InstructionPanel& panel);
    QWidget* first() const { return first_; }
    /// Fields and buttons in reading order.
    const std::vector<QWidget*>& tabOrder() const { return order_; }

  private:
    QWidget* makeTable(PageUi& page, InstructionPanel& panel);
    QWidget* makeByte(PageUi& page, InstructionPanel& panel);
    QWidget* makeBits(PageUi& page, InstructionPanel& panel);

    QWidget* first_ = nullptr;
    std::vector<QWidget*> order_;
};

} // namespace vrk
