#include "platform/qt/PanelUi.h"
#include "platform/qt/QtDialogs.h"
#include "platform/qt/QtHost.h"
#include "tests/windows/WindowTest.h"

#include <QClipboard>
#include <QListView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>

#include <sstream>

namespace vrk {
namespace {

using namespace qt;

/// Controls that a hand works, with a log of what was raised.
class SamplePanel final : public Panel {
  public:
    explicit SamplePanel(PanelContext& context) : Panel(context, "Sample", "Sample") {
        slider.setRange(1, 128);
        slider.setValue(1);
        slider.onMouseDown([this] { log << "down "; });
        slider.onScroll([this] { log << "scroll" << slider.value() << ' '; });
        slider.onMouseUp([this] { log << "up "; });
        list.onScroll([this] { log << "scrolled "; });
        list.onClick([this] { log << "row" << list.listIndex() << ' '; });
        combo.onClick([this] { log << "choice" << combo.listIndex() << ' '; });
        button.onClick([this] { log << "clicked "; });
        hex.onKeyPress(hexKeyFilter);
        hex.onGotFocus([this] { log << "focus "; });
        hex.onLostFocus([this] { log << "left "; });
        keyed.onKeyPress(hexKeyFilter);
        keyed.onKeyDown([this](int code, int shift) {
            if (shift == 2 && code == 'V')
                keyed.setText(this->context().clipboard.text());
        });
    }
    std::string logged() { return std::exchange(log, std::ostringstream()).str(); }

    TextBox hex{*this, "hex"};
    TextBox keyed{*this, "keyed"};
    TextBox free{*this, "free"};
    Slider slider{*this, "slider"};
    ListBox list{*this, "list"};
    ComboBox combo{*this, "combo"};
    Button button{*this, "button"};
    Grid grid{*this, "grid"};
    TextLog text{*this, "text"};
    std::ostringstream log;
};

class BindingTest : public ::testing::Test {
  protected:
    BindingTest() {
        auto* content = column({hex, keyed, free, slider, list, combo, button, grid, log});
        window.setLayout(content);
        window.show();
        window.activateWindow();
        QTest::qWait(1);
    }

    RealClock clock;
    EventLoop events{clock};
    QtHost host{events};
    QtDialogs dialogs{events};
    QtClipboard clipboard;
    PanelContext context{events, dialogs, clipboard};
    SamplePanel panel{context};
    PanelUi ui{panel};
    KeyLineEdit* hex = ui(panel.hex);
    KeyLineEdit* keyed = ui(panel.keyed);
    KeyLineEdit* free = ui(panel.free, 20);
    ThumbSlider* slider = ui(panel.slider);
    QListView* list = ui(panel.list, 4, 5);
    ComboWidget* combo = ui(panel.combo);
    QPushButton* button = ui(panel.button, "Button");
    QTableView* grid = ui(panel.grid);
    LogView* log = ui(panel.text);
    QWidget window;
};

TEST_F(BindingTest, KeysPassTheFilterAndEditTheSelection) {
    hex->setFocus();
    QTest::keyClicks(hex, "1g2aZ?");
    EXPECT_EQ(panel.hex.text(),
              "12A"); // the filter drops and raises to capitals; "?" is for the list of keys
    QTest::keyClick(hex, Qt::Key_Left);
    QTest::keyClick(hex, Qt::Key_Backspace);
    EXPECT_EQ(panel.hex.text(), "1A");
    QTest::keyClick(hex, Qt::Key_F);
    EXPECT_EQ(panel.hex.text(), "1FA");
    EXPECT_EQ(hex->text(), "1FA");
    EXPECT_EQ(hex->cursorPosition(), 2); // typing goes on where it was
    QTest::keyClick(hex, Qt::Key_Delete);
    EXPECT_EQ(panel.hex.text(), "1F");
    QTest::keyClick(hex, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(panel.hex.text(), "1FA");
    EXPECT_EQ(hex->text(), "1FA");
    panel.hex.setMaxLength(4);
    QTest::keyClick(hex, Qt::Key_End);
    QTest::keyClicks(hex, "00000");
    EXPECT_EQ(panel.hex.text(), "1FA0");
    EXPECT_EQ(hex->text(), "1FA0");
}

TEST_F(BindingTest, PastedCharactersPassTheFilterUnlessThePanelHasItsOwnKeys) {
    QApplication::clipboard()->setText("0x3f\n7");
    hex->setFocus();
    QTest::keyClick(hex, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(panel.hex.text(), "03F");
    QApplication::clipboard()->setText("4gg5");
    hex->selectAll();
    hex->paste(); // as the menu and the middle button do
    EXPECT_EQ(panel.hex.text(), "45");
    QApplication::clipboard()->setText("xyz");
    keyed->setFocus();
    QTest::keyClick(keyed, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(keyed->text(), "xyz"); // as it stands, past the filter
    QTest::keyClick(keyed, Qt::Key_1);
    EXPECT_EQ(panel.keyed.text(), keyed->text().toStdString());
}

TEST_F(BindingTest, FocusFollowsTheHandAndNotTheWindow) {
    free->setFocus();
    panel.logged();
    hex->setFocus(Qt::TabFocusReason);
    QTest::keyClick(hex, Qt::Key_Tab);
    EXPECT_EQ(panel.logged(), "focus left ");
    hex->setFocus(Qt::MouseFocusReason);
    EXPECT_TRUE(panel.hex.focused());
    QFocusEvent away(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(hex, &away);
    EXPECT_TRUE(panel.hex.focused()); // another program came to the front; nobody left the field
    EXPECT_EQ(panel.logged(), "focus ");
}

TEST_F(BindingTest, EndAskedForInAnExchangeComesBehindIt) {
    {
        const EventLoop::Hold exchange(events);
        dialogs.endProgram();
    }
    QTest::qWait(10);
    EXPECT_TRUE(events.ended());
}

TEST_F(BindingTest, SliderRaisesPressMovesAndRelease) {
    const auto at = [this](double share) {
        return QPoint(static_cast<int>(slider->width() * share), slider->height() / 2);
    };
    QTest::mousePress(slider, Qt::LeftButton, {}, at(0.5));
    QTest::mouseMove(slider, at(0.6));
    QTest::mouseMove(slider, at(0.75));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(0.75));
    const std::string raised = panel.logged();
    EXPECT_EQ(raised.substr(0, 11), "down scroll");
    EXPECT_EQ(raised.substr(raised.size() - 3), "up ");
    EXPECT_NEAR(panel.slider.value(), 96, 6);
    EXPECT_EQ(slider->value(), panel.slider.value());

    panel.slider.setValue(64);
    slider->setFocus();
    QTest::keyPress(slider, Qt::Key_Right);
    QTest::keyPress(slider, Qt::Key_Right);
    QTest::keyRelease(slider, Qt::Key_Right);
    EXPECT_EQ(panel.logged(), "down scroll65 scroll66 up "); // however long the key is held: one commit

    panel.slider.setEnabled(false);
    QTest::mouseClick(slider, Qt::LeftButton, {}, at(0.2));
    EXPECT_EQ(panel.logged(), "");
    EXPECT_EQ(slider->value(), 66); // the thumb comes back
}

TEST_F(BindingTest, ListTellsScrollingFromPicking) {
    std::vector<RowControl::Row> rows;
    for (int row = 0; row < 100; ++row)
        rows.push_back({std::to_string(row), 0});
    panel.list.setRows(rows);
    QTest::qWait(1);
    EXPECT_EQ(list->model()->rowCount(), 100);
    panel.list.setListIndex(50);
    panel.logged();
    EXPECT_EQ(list->currentIndex().row(), 50); // brought into sight, and not a scroll of the user's
    list->verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    const QModelIndex top = list->indexAt(QPoint(4, 4));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(top).center());
    EXPECT_EQ(panel.logged(), "scrolled row" + std::to_string(top.row()) + " ");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(panel.list.listIndex(), top.row()); // the mark moves, the row is not yet taken
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(panel.logged(), "scrolled row" + std::to_string(top.row() + 1) + " ");
}

TEST_F(BindingTest, ComboFollowsRowsAndChoices) {
    for (int row = 0; row < 5; ++row)
        panel.combo.addRow("row " + std::to_string(row));
    panel.combo.setListIndex(3);
    QTest::qWait(1);
    EXPECT_EQ(combo->count(), 5);
    EXPECT_EQ(combo->currentText(), "row 3");
    panel.logged();
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Up);
    EXPECT_EQ(panel.logged(), "choice2 ");
    QWheelEvent wheel({5, 5}, combo->mapToGlobal(QPointF(5, 5)), {}, {0, 120}, {}, {}, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(combo, &wheel);
    EXPECT_EQ(panel.combo.listIndex(), 2);
}

TEST_F(BindingTest, GridShowsItsFirstRowAsHeading) {
    panel.grid.setSize(3, 2);
    panel.grid.setCell(0, 1, "Taps");
    panel.grid.setCell(2, 1, "128");
    QTest::qWait(1);
    EXPECT_EQ(grid->model()->headerData(1, Qt::Horizontal).toString(), "Taps");
    EXPECT_EQ(grid->model()->index(1, 1).data().toString(), "128");
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {},
                      grid->visualRect(grid->model()->index(1, 1)).center());
    EXPECT_EQ(panel.grid.row(), 2);
    QTest::keyClick(grid, Qt::Key_Up); // the row that is marked is the row that is chosen
    EXPECT_EQ(panel.grid.row(), 1);
    panel.grid.setSelection(0, 0);
    EXPECT_FALSE(grid->selectionModel()->hasSelection());
    grid->setCurrentIndex(grid->model()->index(0, 0)); // where the view's cursor waits unmarked
    grid->clearSelection();
    QTest::keyClick(grid, Qt::Key_Home);
    EXPECT_EQ(panel.grid.row(), 1);
}

TEST_F(BindingTest, DisabledControlRefusesAtOnceAndItsPictureNeverFlashes) {
    int changes = 0;
    struct Counter final : QObject {
        explicit Counter(int& count) : count_(count) {}
        bool eventFilter(QObject*, QEvent* event) override {
            count_ += event->type() == QEvent::EnabledChange ? 1 : 0;
            return false;
        }
        int& count_;
    } counter(changes);
    button->installEventFilter(&counter);

    panel.button.setEnabled(false);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(panel.logged(), "");
    QTest::qWait(40);
    panel.button.setEnabled(true);
    QTest::qWait(150);
    EXPECT_EQ(changes, 0); // an action of 40 ms leaves no trace on the screen
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(panel.logged(), "clicked ");

    hex->setFocus(); // with the keyboard on it, it would keep its looks longer
    panel.button.setEnabled(false);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !button->isEnabled(); }, 3000));
    panel.button.setEnabled(true);
    EXPECT_TRUE(QTest::qWaitFor([this] { return button->isEnabled(); }, 3000));
    EXPECT_EQ(changes, 2);

    for (const bool taken : {false, true}) { // what lasts loses the keyboard, and gets back what nobody took
        button->setFocus();
        panel.button.setEnabled(false);
        EXPECT_TRUE(QTest::qWaitFor([this] { return !button->isEnabled(); }, 3000));
        if (taken)
            QTest::keyClick(grid, Qt::Key_Tab); // out of the table, where the keyboard has gone
        panel.button.setEnabled(true);
        EXPECT_TRUE(QTest::qWaitFor([this] { return button->isEnabled(); }, 3000));
        EXPECT_EQ(QApplication::focusWidget(), taken ? static_cast<QWidget*>(log) : button);
    }
    QTest::keyClick(hex, Qt::Key_D, Qt::AltModifier);
    EXPECT_EQ(panel.hex.text(), "") << "a letter of no menu is none to type";
}

TEST_F(BindingTest, ReleasedWidgetsDoNothing) {
    ui.release();
    QTest::mouseClick(button, Qt::LeftButton);
    QTest::keyClicks(hex, "12");
    panel.button.setEnabled(false);
    QTest::qWait(150);
    EXPECT_EQ(panel.logged(), "");
    EXPECT_EQ(panel.hex.text(), "");
    EXPECT_TRUE(button->isEnabled());
}

TEST_F(BindingTest, LogOfAMillionLinesFollowsItsEndAndCanBeSearched) {
    for (int line = 0; line < 1'000'000; ++line) {
        panel.text.append("Line " + std::to_string(line));
        panel.text.append("\r\n");
    }
    QTest::qWait(60);
    log->grab();
    QScrollBar* bar = log->verticalScrollBar();
    EXPECT_EQ(bar->value(), bar->maximum());

    bar->triggerAction(QAbstractSlider::SliderPageStepSub);
    QTest::qWait(10);
    const int away = bar->value();
    panel.text.append("later\r\n");
    QTest::qWait(60);
    EXPECT_EQ(bar->value(), away); // the reader is not dragged off the page
    EXPECT_FALSE(log->followsEnd());
    EXPECT_TRUE(log->find("line 654321", true));
    EXPECT_EQ(log->selectedText(), "Line 654321");
    EXPECT_TRUE(log->find("line 65432", false)); // backwards, and what stands before
    EXPECT_EQ(log->selectedText(), "Line 65432");
    EXPECT_FALSE(log->find("not there", true));
    log->setFocus();
    QTest::keyClick(log, Qt::Key_End);
    EXPECT_TRUE(log->followsEnd());
    panel.text.clear();
    EXPECT_EQ(bar->maximum(), 0);
}

TEST(NameFilters, AreWrittenInQtsWay) {
    EXPECT_EQ(nameFilters("All Files (*.*)|*.*|KV880x Trace Files(*.txt)|*.txt"),
              (QStringList{"All Files (*)", "KV880x Trace Files (*.txt)"}));
    EXPECT_EQ(nameFilters("Data|*.csv;*.txt"), QStringList{"Data (*.csv *.txt)"});
    EXPECT_EQ(nameFilters(""), QStringList{});
}

} // namespace
} // namespace vrk
