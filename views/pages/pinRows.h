#pragma once

#include "platform/qt/PanelUi.h"

#include <QWidget>

#include <array>
#include <initializer_list>
#include <vector>

class QCheckBox;

namespace vrk {

/// What a pin of the controller does.
enum class PinNow { HighImpedance, PullsLow, DrivesLow, DrivesHigh, Analog, ReadsLow, ReadsHigh };
/// What data, drive and analog bit make of a pin. An open drain pin that is HI pulls nowhere.
PinNow pinNow(bool high, bool push, bool analog);

/// One line of a port map: the pin's name, its boxes, what it does now; under it what it is for. Tinted while
/// the pin reads other than it was written.
class PinRow final : public QWidget {
  public:
    PinRow(const QString& pin, const std::vector<QCheckBox*>& boxes);
    void setUse(const QString& use);
    void setNow(PinNow now);
    PinNow now() const { return now_; }
    QString nowWord() const;

    /// The heads of the columns of the rows below. \param boxes their words.
    static QWidget* makeHead(std::initializer_list<const char*> boxes);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString pin_;
    QString use_;
    PinNow now_ = PinNow::HighImpedance;
    std::size_t boxes_;
};

/// One line a register: its name, the byte as written and as read, whatever stands behind. The two bytes are
/// tinted while they differ and both are known.
struct RegisterLine {
    QString name;
    QWidget* written = nullptr;
    QWidget* read = nullptr;
    std::vector<QWidget*> behind;
};
struct RegisterTable {
    QWidget* widget = nullptr;
    std::vector<class DiffersGround*> pairs; ///< by line
};
RegisterTable registerTable(const std::vector<RegisterLine>& lines);

} // namespace vrk
