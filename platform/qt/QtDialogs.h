#pragma once

#include "platform/clipboard/Clipboard.h"
#include "platform/dialogs/Dialogs.h"
#include "platform/runtime/EventLoop.h"

#include <QString>
#include <QStringList>

namespace vrk::qt {

/// Message boxes and file dialogs as windows. While one stands no action runs: the one that asked waits for
/// the answer, the others wait with it.
class QtDialogs final : public Dialogs {
  public:
    explicit QtDialogs(EventLoop& events) : events_(events) {}

    /// \throws ProgramEnded when the program ended under the box.
    Choice show(const MessageBox& box) override;
    /// \throws ProgramEnded as show().
    std::optional<std::string> chooseFile(const FileRequest& request) override;

  private:
    EventLoop& events_;
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
