#pragma once

#include "platform/qt/theme.h"

#include <QString>
#include <QWidget>

namespace vrk {

/// A text on one line that is cut to the place it has; the whole text is its tool tip.
class CutLabel final : public QWidget {
  public:
    explicit CutLabel(double scale = 1.0, bool bold = false);
    void setText(const QString& text);
    QString text() const { return text_; }
    void setTone(qt::Tone tone);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString text_;
    qt::Tone tone_ = qt::Tone::Plain;
};

} // namespace vrk
