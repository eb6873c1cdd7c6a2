#pragma once

#include "platform/controls/ResultLog.h"
#include "views/workspace/CutLabel.h"
#include "views/workspace/Page.h"

#include <QPushButton>
#include <QWidget>

#include <functional>
#include <vector>

class QHBoxLayout;

namespace vrk {

namespace qt {
class LevelBar;
class SegmentedSwitch;
} // namespace qt

class DevicePanel;

/// "12:04:31"
QString clockText(const WallTime& time);

/// What the band works on for a device panel.
BandSource bandOf(DevicePanel& panel);

/// The line on top that stands whatever page is in front: board, part, supplies, what the last action came to
/// and what runs. It works on the last device panel that was in front. No cell's width follows its text.
class Band final : public QWidget {
  public:
    explicit Band(const ViewContext& context);

    /// \param page the device panel's; nullptr where none is loaded: then the switch is refused and tells
    /// what the motherboard console says.
    void setPage(PageUi* page);
    PageUi* page() const { return page_; }
    void showLink(const LinkWords& words);
    /// Brings up to date what changes by itself: times, and the part in the simulated socket.
    void refresh();
    /// Cells give way to the result where the window is narrow: all but the run bar stands in the status line
    /// or in the page's inspector as well. \param width of the window.
    void setRoom(int width);
    void openParts();
    void openHistory();
    bool supplyOn() const;
    /// The shade has changed: cells that are tinted keep their colours by themselves otherwise.
    void refreshColours() { showSource(); }

    /// Goes to the control that a result names, "frmVRK_User1.txtHexDataWrt(0)".
    std::function<void(const QString& field)> onJump;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    class Cell;
    void makeBoard(QHBoxLayout& row);
    void makePart(QHBoxLayout& row);
    void makeSupply(QHBoxLayout& row);
    void makeResult(QHBoxLayout& row);
    void makeRun(QHBoxLayout& row);
    void showSource();
    void showSupply(const BandSource& source);
    void showLevels(const ComboBox* level);
    void showResult();
    void showRun();
    void watchSource();

    ViewContext context_;
    PageUi* page_ = nullptr;
    BandSource source_;
    std::vector<Subscription> watches_;
    std::vector<Subscription> always_;

    Cell* boardCell_ = nullptr;
    Cell* partCell_ = nullptr;
    Cell* addressCell_ = nullptr;
    Cell* supplyCell_ = nullptr;
    Cell* minusCell_ = nullptr;
    Cell* resultCell_ = nullptr;
    Cell* runCell_ = nullptr;

    CutLabel* boardTitle_ = nullptr;
    qt::LampWidget* boardLamp_ = nullptr;
    CutLabel* boardState_ = nullptr;
    CutLabel* about_ = nullptr;
    QPushButton* part_ = nullptr;
    qt::ToneLabel* address_ = nullptr;
    QLabel* addressUnit_ = nullptr;
    qt::LampWidget* vccLamp_ = nullptr;
    qt::ToneLabel* vccWord_ = nullptr;
    qt::ValueLabel* volts_ = nullptr;
    qt::SegmentedSwitch* switch_ = nullptr;
    qt::ComboWidget* level_ = nullptr;
    qt::ToneLabel* minusWord_ = nullptr;
    qt::LampWidget* minusLamp_ = nullptr;
    CutLabel* minusText_ = nullptr;
    qt::LampWidget* resultLamp_ = nullptr;
    CutLabel* result_ = nullptr;
    CutLabel* resultDetail_ = nullptr;
    QPushButton* jump_ = nullptr;
    CutLabel* runName_ = nullptr;
    qt::LevelBar* runBar_ = nullptr;
    CutLabel* runLeft_ = nullptr;
    QPushButton* abort_ = nullptr;
    const Activity* shownRun_ = nullptr;
    QString socketPart_; ///< as of the last refresh: asking the board's state costs more than a reading does
};

} // namespace vrk
