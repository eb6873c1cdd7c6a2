#include "tests/windows/WindowTest.h"

#include "platform/qt/theme.h"
#include "views/pages/boxes.h"
#include "views/workspace/Section.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFileDialog>
#include <QListView>
#include <QMainWindow>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>

#include <cstdlib>

namespace vrk {

BoxWatcher::BoxWatcher() {
    connect(&timer_, &QTimer::timeout, this, [this] { look(); });
    timer_.start(5);
    qApp->installEventFilter(this);
}

bool BoxWatcher::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show)
        if (auto* widget = qobject_cast<QWidget*>(watched); widget != nullptr && widget->isWindow() &&
                                                            widget->windowType() == Qt::Window &&
                                                            qobject_cast<QMainWindow*>(widget) == nullptr)
            ADD_FAILURE() << "shown outside of any window: " << widget->metaObject()->className() << " "
                          << widget->objectName().toStdString();
    return QObject::eventFilter(watched, event);
}

void BoxWatcher::expect(const std::string& text, const std::string& button, std::function<void()> before) {
    expected_.push_back({text, button, std::move(before), false});
}

void BoxWatcher::expectFile(const std::string& path) {
    expected_.push_back({path, {}, {}, true});
}

void BoxWatcher::look() {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr || !dialog->isVisible() || dialog == answered_)
        return;
    answered_ = dialog;
    connect(dialog, &QObject::destroyed, this, [this] { answered_ = nullptr; });
    if (qobject_cast<QFileDialog*>(dialog) != nullptr)
        answerFile(*dialog);
    else
        answer(*dialog);
}

void BoxWatcher::answer(QDialog& dialog) {
    auto* box = qobject_cast<QMessageBox*>(&dialog);
    const std::string text = box != nullptr ? box->text().toStdString() : dialog.windowTitle().toStdString();
    if (box == nullptr || expected_.empty() || expected_.front().file) {
        if (!all_)
            ADD_FAILURE() << "a box that the test did not expect: " << text;
        // Cancel in a link dialog would end the program.
        auto* retry = dialog.findChild<QPushButton*>("Retry");
        if (all_ && retry != nullptr)
            retry->click();
        else
            dialog.reject();
        return;
    }
    const Expected expected = expected_.front();
    expected_.pop_front();
    EXPECT_NE(text.find(expected.text), std::string::npos) << text;
    // A careless key neither says Yes nor goes on.
    EXPECT_TRUE(box->defaultButton() == nullptr || box->defaultButton()->objectName() != "Yes") << text;
    if (box->escapeButton() != nullptr && box->buttons().size() > 1) {
        EXPECT_NE(box->escapeButton()->objectName(), "OK") << text;
    }
    if (expected.before)
        expected.before();
    if (auto* button = box->findChild<QPushButton*>(QString::fromStdString(expected.button))) {
        press(*button);
    } else {
        ADD_FAILURE() << "no button " << expected.button << " in: " << text;
        dialog.reject();
    }
}

void BoxWatcher::press(QPushButton& button) const {
    if (!keys_)
        return QTest::mouseClick(&button, Qt::LeftButton);
    const QPointer<QWidget> box = button.window();
    QTest::keyClick(box, Qt::Key_Escape);
    if (box == nullptr || !box->isVisible())
        return;
    for (int stop = 0; stop < 5 && !button.hasFocus(); ++stop)
        QTest::keyClick(box->focusWidget() != nullptr ? box->focusWidget() : box.data(), Qt::Key_Tab);
    QTest::keyClick(&button, Qt::Key_Space);
}

void BoxWatcher::answerFile(QDialog& dialog) {
    if (expected_.empty() || !expected_.front().file) {
        if (!all_)
            ADD_FAILURE() << "a file dialog that the test did not expect: "
                          << dialog.windowTitle().toStdString();
        dialog.reject();
        return;
    }
    auto& files = static_cast<QFileDialog&>(dialog);
    auto* name = files.findChild<QLineEdit*>("fileNameEdit");
    name->setText(QString::fromStdString(expected_.front().text));
    expected_.pop_front();
    QTest::keyClick(name, Qt::Key_Return);
}

void BoxWatcher::verify() {
    for (const Expected& missing : expected_)
        ADD_FAILURE() << "a box that did not come: " << missing.text;
}

void WindowTest::TearDown() {
    boxes.verify();
}

PageUi& WindowTest::page(const char* panel) {
    PageUi* found = w.workspace.page(panel);
    if (found == nullptr)
        throw std::runtime_error(std::string("no page of ") + panel);
    return *found;
}

QWidget& WindowTest::widget(const char* panel, const std::string& path) {
    const QString name = QString::fromStdString(path);
    auto* found = page(panel).find(name);
    if (found == nullptr) // the workspace's own
        found = w.workspace.findChild<QWidget*>(name);
    if (found == nullptr)
        throw std::runtime_error("no widget " + path);
    return *found;
}

QString WindowTest::place(const QWidget& widget) {
    for (const QWidget* at = widget.parentWidget(); at != nullptr; at = at->parentWidget()) {
        const bool titled = dynamic_cast<const BoxFrame*>(at) != nullptr ||
                            dynamic_cast<const qt::GroupWidget*>(at) != nullptr ||
                            at->objectName().startsWith("figure.");
        if (titled && !at->accessibleName().isEmpty())
            return at->accessibleName();
        if (const auto* section = dynamic_cast<const Section*>(at))
            return section->title();
        if (at->objectName() == "head")
            return "head";
    }
    return {};
}

void clickOn(QWidget& widget) {
    const bool indicator =
        dynamic_cast<QCheckBox*>(&widget) != nullptr || dynamic_cast<QRadioButton*>(&widget) != nullptr;
    const QPoint middle = widget.rect().center();
    QTest::mouseClick(&widget, Qt::LeftButton, {}, indicator ? QPoint(8, middle.y()) : middle);
}

void WindowTest::click(const char* panel, const std::string& path) {
    QWidget& target = widget(panel, path);
    // A button that an action has just given back is enabled some moments later, on a busy machine more.
    (void)QTest::qWaitFor([&target] { return target.isEnabled(); }, 500);
    clickOn(target);
}

void WindowTest::bringToFront(const char* panel) {
    workspace.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&workspace));
    workspace.open(page(panel).row());
    QTest::qWait(1); // the panel hears of it
}

void WindowTest::openI2c(bool vccOn) {
    bringToFront("frmStartup");
    click("frmStartup", "open.I2C");
    ASSERT_TRUE(page("frmVRK_User1").page()->isVisible());
    ASSERT_FALSE(page("frmStartup").page()->isVisible());
    if (vccOn)
        click("frmVRK_User1", "OptVCC(0)");
}

namespace {
/// The strip, section or head that the widget stands in.
std::string placeOf(const QWidget& shown) {
    for (const QWidget* at = &shown; at != nullptr; at = at->parentWidget()) {
        const std::string name = at->objectName().toStdString();
        for (const char* place : {"strip(", "section.", "head"})
            if (name.starts_with(place))
                return name;
    }
    return {};
}
} // namespace

void WindowTest::choose(const char* panel, const char* entry) {
    page(panel).findAction(entry)->trigger();
    QTest::qWait(1);
}

void WindowTest::expectPlaces(const char* panel, const std::vector<Place>& places) {
    for (const Place& row : places) {
        SCOPED_TRACE(row.path);
        const QWidget& shown = widget(panel, row.path);
        EXPECT_TRUE(shown.accessibleName().startsWith(QString::fromUtf8(row.name)))
            << shown.accessibleName().toStdString();
        EXPECT_EQ(placeOf(shown), row.place);
    }
}

void WindowTest::enter(const char* panel, const std::string& path, const char* text) {
    QWidget& box = widget(panel, path);
    (void)QTest::qWaitFor([&box] { return box.isEnabled(); }, 500); // as in click()
    QTest::mouseClick(&box, Qt::LeftButton);
    QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&box, text);
    QTest::keyClick(&box, Qt::Key_Return);
}

} // namespace vrk

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    QApplication::setApplicationDisplayName("VRK Bench");
    QApplication::setQuitOnLastWindowClosed(false);
    vrk::qt::applyTheme(application, vrk::qt::Shade::Light);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
