#pragma once

#include <QTextBrowser>

namespace vrk {

/// Shows the manual: its pictures as wide as there is room, and each in its full size in a window of its own
/// when it is clicked.
class ManualBrowser final : public QTextBrowser {
  public:
    /// \param room for a picture, in device-independent pixels.
    explicit ManualBrowser(int room);
    QVariant loadResource(int type, const QUrl& name) override;

  private:
    void follow(const QUrl& link);
    void showPicture(const QString& file);

    int room_;
};

} // namespace vrk
