#pragma once

#include "platform/clipboard/Clipboard.h"
#include "platform/controls/Activities.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/runtime/EventLoop.h"

#include <QDialog>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace vrk::qt {

/// What a window may take of its screen, without the frame that the window manager puts around it.
QSize roomOnScreen(const QWidget& window);
/// Ahead of its exec(): its own size may be more than the screen of a small notebook has.
void fitToScreen(QDialog& dialog);

/// Message boxes and file dialogs as windows. While one stands no action runs: the one that asked waits for
/// the answer, the others wait with it.
class QtDialogs final : public Dialogs {
  public:
    explicit QtDialogs(EventLoop& events) : events_(events) {}

    /// Gets what a box with OK alone would say, from the second one of an outermost action on: the first
    /// error is a box, the rest of it must not stand in the way. Without it every one is a box.
    std::function<void(const std::string& text)> onFurther;
    /// The folder that a file dialog opens in, and the one that was used; both may be empty.
    std::function<QString()> lastFolder;
    std::function<void(const QString& folder)> folderUsed;

    /// What asks again at each of its steps leaves no moment in which Abort could be reached: while one of
    /// these can be aborted, boxes with Retry offer that too.
    void offerAbortOf(Activities& activities) { activities_ = &activities; }

    /// Ends the program from outside, a box that stands included: it is answered by nobody.
    void endProgram();

    /// \throws ProgramEnded when the program ended under the box.
    Choice show(const MessageBox& box) override;
    /// \throws ProgramEnded as show().
    std::optional<std::string> chooseFile(const FileRequest& request) override;

  private:
    bool isFurther();
    /// \throws ProgramEnded
    void endIfAsked();

    EventLoop& events_;
    Activities* activities_ = nullptr;
    std::weak_ptr<void> action_; ///< of the last box with OK alone
    QPointer<QDialog> standing_;
    bool ending_ = false;
};

/// "Data (*.csv)|*.csv|All|*.*" as Qt writes it: "Data (*.csv)", "All (*)".
QStringList nameFilters(const QString& filter);

/// The desktop's clipboard.
class QtClipboard final : public Clipboard {
  public:
    std::string text() const override;
    void setText(const std::string& text) override;
};

} // namespace vrk::qt
