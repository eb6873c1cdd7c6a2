#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

class QPainter;

namespace vrk {

/// The signs of rail, cards and buttons: lines of our own in a square of 16.
enum class Sign {
    Home,
    I2c,
    Spi,
    UpDown,
    PushButton,
    Instructions,
    Script,
    RunIn,
    Calibration,
    Motherboard,
    Controller,
    TakeOut,
    PutBack
};

void drawSign(QPainter& painter, Sign sign, const QRectF& place, const QColor& colour);
/// In the palette's text colours, for buttons and menus. Made anew when the shade changes.
QIcon signIcon(Sign sign);

} // namespace vrk
