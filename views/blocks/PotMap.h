#pragma once

#include <QWidget>

#include <vector>

namespace vrk {

class InstructionPanel;
class PageUi;

/// The registers of a quad part as a map: a row a register, a column a pot. A cell holds what was read and
/// what is to be written, with its buttons; a transfer is drawn from its source to its recipient, and the
/// cells that the instruction composed goes to are outlined.
class PotMap final : public QWidget {
  public:
    PotMap(PageUi& page, InstructionPanel& panel);
    /// Fields and buttons in reading order.
    const std::vector<QWidget*>& tabOrder() const { return order_; }

    /// A cell's place: row 0 is the wiper's register, 1 to 4 are the data registers.
    struct Place {
        int pot = 0;
        int row = 0;
    };
    /// A transfer inside one pot.
    struct Transfer {
        Place from;
        Place to;
    };

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    class Cell;
    class Arrows;

    static QWidget* rowHeads(PageUi& page, const InstructionPanel& panel);
    void showChoice(const InstructionPanel& panel);
    void showTransfers(const InstructionPanel& panel);

    std::vector<Cell*> cells_; ///< five a pot
    Arrows* arrows_;
    std::vector<QWidget*> order_;
};

} // namespace vrk
