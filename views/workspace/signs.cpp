#include "views/workspace/signs.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace vrk {

namespace {

void line(QPainterPath& path, std::initializer_list<QPointF> points) {
    auto at = points.begin();
    path.moveTo(*at);
    for (++at; at != points.end(); ++at)
        path.lineTo(*at);
}

QPainterPath signPath(Sign sign) {
    QPainterPath path;
    switch (sign) {
    case Sign::Home:
        line(path, {{1.5, 8}, {8, 2}, {14.5, 8}});
        line(path,
             {{3.5, 7}, {3.5, 14}, {6.5, 14}, {6.5, 9.5}, {9.5, 9.5}, {9.5, 14}, {12.5, 14}, {12.5, 7}});
        break;
    case Sign::I2c:
        line(path, {{1, 4.5}, {15, 4.5}});
        line(path, {{1, 11.5}, {15, 11.5}});
        line(path, {{5.5, 4.5}, {5.5, 11.5}});
        line(path, {{10.5, 4.5}, {10.5, 11.5}});
        break;
    case Sign::Spi:
        line(path, {{1, 3.5}, {15, 3.5}});
        line(path, {{1, 8}, {15, 8}});
        line(path, {{1, 12.5}, {15, 12.5}});
        break;
    case Sign::UpDown:
        line(path, {{5, 13.5}, {5, 2.5}});
        line(path, {{2, 5.5}, {5, 2.5}, {8, 5.5}});
        line(path, {{11, 2.5}, {11, 13.5}});
        line(path, {{8, 10.5}, {11, 13.5}, {14, 10.5}});
        break;
    case Sign::PushButton:
        path.addEllipse(QPointF(8, 8), 6, 6);
        path.addEllipse(QPointF(8, 8), 2.5, 2.5);
        break;
    case Sign::Instructions:
        path.addRect(2, 2, 12, 12);
        line(path, {{2, 6}, {14, 6}});
        line(path, {{2, 10}, {14, 10}});
        line(path, {{6, 2}, {6, 14}});
        line(path, {{10, 2}, {10, 14}});
        break;
    case Sign::Script:
        path.addRect(3, 1.5, 10, 13);
        line(path, {{5.5, 5}, {10.5, 5}});
        line(path, {{5.5, 8}, {10.5, 8}});
        line(path, {{5.5, 11}, {9, 11}});
        break;
    case Sign::RunIn:
        path.arcMoveTo(2.5, 2.5, 11, 11, 60);
        path.arcTo(2.5, 2.5, 11, 11, 60, 300);
        line(path, {{8.5, 1}, {11, 3.2}, {8.8, 5.8}});
        break;
    case Sign::Calibration:
        line(path, {{2, 2}, {2, 14}, {14, 14}});
        line(path, {{4.5, 11.5}, {7.5, 7.5}, {9.5, 9}, {13.5, 3.5}});
        break;
    case Sign::Motherboard:
        path.addRect(2, 2, 12, 12);
        path.addRect(5.5, 5.5, 5, 5);
        break;
    case Sign::Controller:
        path.addRect(4, 4, 8, 8);
        for (const double at : {6.0, 10.0}) {
            line(path, {{at, 1}, {at, 4}});
            line(path, {{at, 12}, {at, 15}});
            line(path, {{1, at}, {4, at}});
            line(path, {{12, at}, {15, at}});
        }
        break;
    case Sign::TakeOut:
        line(path, {{8, 5}, {2, 5}, {2, 14}, {11, 14}, {11, 8}});
        line(path, {{6.5, 9.5}, {14, 2}});
        line(path, {{9.5, 2}, {14, 2}, {14, 6.5}});
        break;
    case Sign::PutBack:
        line(path, {{8, 5}, {2, 5}, {2, 14}, {11, 14}, {11, 8}});
        line(path, {{14, 2}, {6.5, 9.5}});
        line(path, {{6.5, 5.5}, {6.5, 9.5}, {10.5, 9.5}});
        break;
    }
    return path;
}

class SignEngine final : public QIconEngine {
  public:
    explicit SignEngine(Sign sign) : sign_(sign) {}
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        drawSign(*painter, sign_, rect, QApplication::palette().color(group, QPalette::ButtonText));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
    QIconEngine* clone() const override { return new SignEngine(sign_); }

  private:
    Sign sign_;
};

} // namespace

void drawSign(QPainter& painter, Sign sign, const QRectF& place, const QColor& colour) {
    constexpr double kSquare = 16.0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = std::min(place.width(), place.height()) / kSquare;
    painter.translate(place.center() - QPointF(kSquare, kSquare) * scale / 2);
    painter.scale(scale, scale);
    QPen pen(colour, 1.5);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(signPath(sign));
    painter.restore();
}

QIcon signIcon(Sign sign) {
    return QIcon(new SignEngine(sign));
}

} // namespace vrk
