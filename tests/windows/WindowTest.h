#pragma once

#include "tests/support/TestBench.h"
#include "tests/windows/WindowBench.h"

#include <QTest>
#include <QTimer>

#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

class QDialog;

namespace vrk {

inline constexpr const char* kI2c = "frmVRK_User1";

/// Answers message boxes and file dialogs with the mouse. A box that nobody expected fails the test and gets
/// the answer that changes least; one that was expected and did not come fails it too.
class BoxWatcher : public QObject {
  public:
    BoxWatcher();
    /// \param button its name, "Retry". \param before runs while the box stands.
    void expect(const std::string& text, const std::string& button, std::function<void()> before = {});
    void expectFile(const std::string& path);
    /// Any box is all right, for tests that touch everything.
    void allowAll() { all_ = true; }
    /// From now on no mouse: Esc first, and where the box stays, Tab to the button and Space.
    void useKeys() { keys_ = true; }
    void verify();

  protected:
    /// A part of a page that is shown before it stands in its page flashes as a window and takes the
    /// keyboard.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Expected {
        std::string text;
        std::string button;
        std::function<void()> before;
        bool file = false;
    };
    void look();
    void answer(QDialog& box);
    void press(QPushButton& button) const;
    void answerFile(QDialog& dialog);

    std::deque<Expected> expected_;
    QDialog* answered_ = nullptr;
    bool all_ = false;
    bool keys_ = false;
    QTimer timer_;
};

/// A bench with windows, worked with mouse and keys alone.
class WindowTest : public ::testing::Test {
  protected:
    explicit WindowTest(const char* part = "KV4071") : w(folder.path(), part) {}
    void TearDown() override;

    TemporaryFolder folder;
    BoxWatcher boxes;
    WindowBench w;
    Bench& bench = w.bench;

    Workspace& workspace = w.workspace;

    PageUi& page(const char* panel);
    /// The widget of a control by its path. Fails the test if there is none.
    QWidget& widget(const char* panel, const std::string& path);
    template <class W>
    W& widget(const char* panel, const std::string& path) {
        return dynamic_cast<W&>(widget(panel, path));
    }
    void click(const char* panel, const std::string& path);
    /// The title of the box or section that the widget stands in; "head" above them all.
    static QString place(const QWidget& widget);
    void bringToFront(const char* panel);
    void openI2c(bool vccOn = true);
    /// Replaces the text of a box and commits it, key by key.
    void enter(const char* panel, const std::string& path, const char* text);
    /// A part from the panel's menu.
    void choose(const char* panel, const char* entry);
    /// Where a control stands, "section.Supply", "strip(1)" or "head", and how its accessible name begins.
    struct Place {
        const char* path;
        const char* name;
        const char* place;
    };
    void expectPlaces(const char* panel, const std::vector<Place>& places);
    static void settle() { QTest::qWait(260); } ///< longer than the lag of the enabled states
};

/// Clicks where the indicator of a box or the middle of a button is.
void clickOn(QWidget& widget);

} // namespace vrk
