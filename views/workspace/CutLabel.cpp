#include "views/workspace/CutLabel.h"

#include <QPainter>

namespace vrk {

using namespace qt;

CutLabel::CutLabel(double scale, bool bold) {
    setFont(textFont(scale, bold));
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void CutLabel::setText(const QString& text) {
    if (text_ == text)
        return;
    text_ = text;
    setToolTip(text);
    setAccessibleName(text);
    updateGeometry();
    update();
}

void CutLabel::setTone(Tone tone) {
    tone_ = tone;
    update();
}

QSize CutLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text_) + 2, fontMetrics().height()};
}

void CutLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(isEnabled() ? toneColour(tone_)
                               : palette().color(QPalette::Disabled, QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text_, Qt::ElideRight, width()));
}

} // namespace vrk
