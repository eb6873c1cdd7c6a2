#pragma once

#include "platform/qt/theme.h"
#include "platform/qt/words.h"
#include "views/workspace/Band.h"

#include <QPainter>

namespace vrk {

/// A model's text as the band shows it: its blanks are for columns that the band has not.
inline QString bandText(const std::string& text) {
    return qt::words(text).trimmed();
}

/// One place in the band with its own ground.
class Band::Cell final : public QWidget {
  public:
    enum class Ground { Plain, Supply, Failure };

    explicit Cell(int width) : wanted_(width) {
        setWidth(width);
        setSizePolicy(width > 0 ? QSizePolicy::Fixed : QSizePolicy::Ignored, QSizePolicy::Expanding);
    }
    void setWidth(int width) {
        wanted_ = width;
        if (width > 0)
            setFixedWidth(qt::dp(width));
    }
    void setGround(Ground ground) {
        ground_ = ground;
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        if (ground_ == Ground::Supply)
            painter.fillRect(rect(), qt::colours().supplyGround);
        else if (ground_ == Ground::Failure)
            painter.fillRect(rect(), qt::colours().failureGround);
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(width() - 1, 0, width() - 1, height());
    }

  private:
    int wanted_;
    Ground ground_ = Ground::Plain;
};

} // namespace vrk
