#include "tests/windows/WindowTest.h"

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTableView>

#include <algorithm>
#include <map>
#include <utility>

namespace vrk {
namespace {

QString plain(const std::string& text) {
    return QString::fromStdString(text).remove('&').trimmed();
}
QString plain(QString text) {
    return text.remove('&').trimmed();
}

/// Hidden by the panel, not because its tab is behind another or because it is folded away.
bool isHiddenInItsPlace(const QWidget& widget) {
    for (const QWidget* at = &widget; at != nullptr && !at->isWindow(); at = at->parentWidget()) {
        if (at->property("folded").toBool() ||
            dynamic_cast<const QStackedWidget*>(at->parentWidget()) != nullptr)
            return false;
        if (at->isHidden())
            return true;
    }
    return false;
}

/// What the widget shows is what the control says.
void expectSame(const Control& control, QObject& target) {
    SCOPED_TRACE(control.panel().name() + "." + control.path());
    EXPECT_EQ(target.objectName().toStdString(), control.path());
    if (const auto* entry = dynamic_cast<const MenuEntry*>(&control)) {
        EXPECT_EQ(plain(dynamic_cast<QAction&>(target).text()), plain(entry->caption()));
        return;
    }
    auto& widget = dynamic_cast<QWidget&>(target);
    EXPECT_EQ(isHiddenInItsPlace(widget), !control.reachable());
    if (const auto* label = dynamic_cast<const Label*>(&control)) {
        const auto& freshness = label->freshness();
        if (freshness && freshness->state == Freshness::State::Never) {
            EXPECT_EQ(dynamic_cast<QLabel&>(widget).text(), qt::kNeverRead);
            return;
        }
        EXPECT_EQ(plain(dynamic_cast<QLabel&>(widget).text()), plain(label->caption()));
        return; // nothing to work
    }
    if (const auto* lamp = dynamic_cast<const Lamp*>(&control)) {
        EXPECT_EQ(dynamic_cast<qt::LampWidget&>(widget).colour(), lamp->colour());
        EXPECT_FALSE(widget.accessibleName().isEmpty());
        EXPECT_FALSE(widget.accessibleDescription().isEmpty());
        return;
    }
    if (dynamic_cast<const Frame*>(&control) != nullptr)
        return;
    EXPECT_EQ(widget.isEnabled(), control.responsive());
    EXPECT_FALSE(widget.accessibleName().isEmpty());
    if (const auto* box = dynamic_cast<const CheckBox*>(&control)) {
        EXPECT_EQ(dynamic_cast<QCheckBox&>(widget).isChecked(), box->checked());
        const QString text = plain(dynamic_cast<QCheckBox&>(widget).text());
        if (!box->caption().empty() && !text.isEmpty()) { // in a matrix the row and the column name the boxes
            EXPECT_EQ(text, plain(box->caption()));
        }
    } else if (const auto* option = dynamic_cast<const OptionButton*>(&control)) {
        EXPECT_EQ(dynamic_cast<QRadioButton&>(widget).isChecked(), option->value());
    } else if (const auto* text = dynamic_cast<const TextBox*>(&control)) {
        EXPECT_EQ(dynamic_cast<qt::KeyLineEdit&>(widget).text().toStdString(), text->text());
    } else if (dynamic_cast<const Button*>(&control) != nullptr) {
        EXPECT_FALSE(dynamic_cast<QPushButton&>(widget).text().isEmpty());
        if (!control.caption().empty()) {
            EXPECT_EQ(plain(dynamic_cast<QPushButton&>(widget).text()), plain(control.caption()));
        }
    } else if (const auto* rows = dynamic_cast<const RowControl*>(&control)) {
        if (auto* combo = dynamic_cast<qt::ComboWidget*>(&widget)) {
            EXPECT_EQ(combo->count(), rows->rowCount());
            EXPECT_EQ(combo->currentIndex(), rows->listIndex());
            EXPECT_EQ(plain(combo->currentText()), plain(rows->text()));
        } else {
            auto& list = dynamic_cast<QListView&>(widget);
            EXPECT_EQ(list.model()->rowCount(), rows->rowCount());
            EXPECT_EQ(list.currentIndex().row(), rows->listIndex());
        }
    } else if (const auto* slider = dynamic_cast<const Slider*>(&control)) {
        EXPECT_EQ(dynamic_cast<qt::ThumbSlider&>(widget).value(), slider->value());
        EXPECT_EQ(dynamic_cast<qt::ThumbSlider&>(widget).maximum(), slider->maximum());
    } else if (const auto* bar = dynamic_cast<const ProgressBar*>(&control)) {
        EXPECT_EQ(dynamic_cast<qt::LevelBar&>(widget).value(), bar->value());
        EXPECT_EQ(dynamic_cast<qt::LevelBar&>(widget).maximum(), bar->maximum());
    } else if (const auto* table = dynamic_cast<const Grid*>(&control)) {
        const auto* model = dynamic_cast<QTableView&>(widget).model();
        EXPECT_GE(model->columnCount(), table->columns()); // a page may add its own
        EXPECT_EQ(model->rowCount(), std::max(0, table->rows() - 1));
    }
}

class EveryControlTest : public WindowTest {
  protected:
    EveryControlTest() : WindowTest("KV4074") {
        boxes.allowAll();
        openI2c();
        (void)bench.frmVRK_User1->mnu_KV4074.userClick();
        for (PanelSlotBase* slot : bench.panels())
            if (!slot->visible() && slot->name() != "frmStartup")
                (void)bench.events().deliver([slot] { slot->show(); });
    }

    void expectAllSame() {
        if (QWidget* focus = QApplication::focusWidget())
            focus->clearFocus(); // with the keyboard on it, a widget keeps its looks longer
        settle();
        for (PageUi* shown : workspace.pages())
            for (const Control* control : shown->ui().panel().controls())
                if (qt::Binding* binding = shown->ui().find(*control))
                    expectSame(*control, binding->target());
    }
};

TEST_F(EveryControlTest, HasAWidgetThatShowsIt) {
    for (PageUi* shown : workspace.pages())
        for (const Control* control : shown->ui().panel().controls())
            if (control->kind() != Control::Kind::Timer) {
                EXPECT_NE(shown->ui().find(*control), nullptr)
                    << shown->ui().panel().name() << "." << control->path() << " is in no window";
            }
    expectAllSame();
}

TEST_F(EveryControlTest, FollowsTheModel) {
    // Aspects that no action listens to, on every control, and all of them back again.
    const auto forAll = [this](const std::function<void(Control&)>& change) {
        for (PageUi* shown : workspace.pages())
            for (Control* control : shown->ui().panel().controls())
                change(*control);
    };
    std::map<Control*, std::pair<bool, bool>> before;
    forAll([&](Control& control) { before[&control] = {control.enabled(), control.visible()}; });
    forAll([](Control& control) { control.setEnabled(!control.enabled()); });
    expectAllSame();
    forAll([](Control& control) { control.setVisible(!control.visible()); });
    expectAllSame();
    forAll([&](Control& control) {
        control.setEnabled(before[&control].first);
        control.setVisible(before[&control].second);
        if (auto* lamp = dynamic_cast<Lamp*>(&control))
            lamp->setColour(Colour::Yellow);
        if (auto* label = dynamic_cast<Label*>(&control))
            label->setCaption("7E");
        if (auto* bar = dynamic_cast<ProgressBar*>(&control))
            bar->setValue(3);
    });
    expectAllSame();
}

TEST_F(EveryControlTest, TakesTheUsersHand) {
    const auto works = [](const Control& control, QWidget& widget) {
        return control.reachable() && control.responsive() && widget.isVisible();
    };
    for (PageUi* shown : workspace.pages()) {
        if (shown->ui().panel().name() == "frmStartup")
            continue; // its one list loads panels; other tests choose from it
        workspace.open(shown->row());
        for (Control* control : shown->ui().panel().controls()) {
            qt::Binding* binding = shown->ui().find(*control);
            auto* widget = binding == nullptr ? nullptr : dynamic_cast<QWidget*>(&binding->target());
            if (widget == nullptr || !works(*control, *widget))
                continue;
            SCOPED_TRACE(control->panel().name() + "." + control->path());
            if (auto* box = dynamic_cast<CheckBox*>(control)) {
                const int value = box->value();
                clickOn(*widget);
                EXPECT_NE(box->value(), value);
            } else if (auto* option = dynamic_cast<OptionButton*>(control)) {
                clickOn(*widget);
                EXPECT_TRUE(option->value());
            } else if (auto* text = dynamic_cast<TextBox*>(control)) {
                QTest::mouseClick(widget, Qt::LeftButton);
                QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
                QTest::keyClick(widget, Qt::Key_1);
                if (text->name() != "txtI2Caddress") { // rounds what is typed to an even address
                    EXPECT_EQ(text->text(), "1");
                }
            } else if (auto* combo = dynamic_cast<ComboBox*>(control);
                       combo != nullptr && combo->rowCount() > 1 &&
                       dynamic_cast<qt::ComboWidget*>(widget) != nullptr) {
                const int index = combo->listIndex();
                widget->setFocus();
                QTest::keyClick(widget, index > 0 ? Qt::Key_Up : Qt::Key_Down);
                EXPECT_NE(combo->listIndex(), index);
            } else if (auto* slider = dynamic_cast<Slider*>(control)) {
                const int value = slider->value();
                QTest::keyClick(widget, value > slider->minimum() ? Qt::Key_Left : Qt::Key_Right);
                EXPECT_NE(slider->value(), value);
            }
        }
    }
    expectAllSame();
}

} // namespace
} // namespace vrk
