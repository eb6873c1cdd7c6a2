#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

#include <array>

class QApplication;
class QWidget;

namespace vrk::qt {

/// The distance that every layout is a multiple of, in device-independent pixels.
inline constexpr int kUnit = 8;

enum class Shade { Light, Dark };

/// The desktop's own shade: dark if its windows are darker than their text.
Shade desktopShade();

/// Fusion with one of our two palettes. Widgets take every colour from palette roles, so it may be called
/// again at any time.
void applyTheme(QApplication& application, Shade shade);
Shade currentShade();
QPalette paletteOf(Shade shade);

/// What the palette has no role for. Red means failure and nothing else.
struct Colours {
    QColor stale; ///< a value that was read once and no longer holds
    QColor good, goodGround;
    QColor failure, failureGround;
    QColor supplyGround, supplyText, power; ///< of a supply that is on
    QColor differsGround, differsText;      ///< written and read are not the same
    QColor changed, blue, source;           ///< lamps: received a transfer, second phase, source of one
    QColor chosenRow;                       ///< of an instruction table
    std::array<QColor, 4> channels;         ///< traces; their marks tell them apart too
};
/// Of the shade in use. Ask while painting, never keep one: the shade may change at any time.
const Colours& colours();

/// What a text, field or box tells beside its words.
enum class Tone { Plain, Quiet, Stale, Failed, Differs, Good };
QColor toneColour(Tone tone);
/// Fields and boxes that the style draws: a tinted ground where written and read differ, a red outline after
/// a failure.
void setTone(QWidget& widget, Tone tone);
/// The button that Ctrl+Enter stands for, one a page.
void makeAccent(QWidget& button, bool accent = true);

/// A measure of 100% in the size that the font asks for.
int dp(int measure);

/// Sizes relative to the ordinary text: units and ages, the name of a strip, the name of a page.
inline constexpr double kSmall = 0.85;
inline constexpr double kStripScale = 1.15;
inline constexpr double kNameScale = 1.23;

/// Digits of one width. \param scale size relative to the application's font.
QFont valueFont(double scale = 1.0);

/// The application's font, scaled. \param bold for headings.
QFont textFont(double scale, bool bold = false);

/// A text that steps back behind the values: captions, units, hints.
void makeQuiet(QWidget& widget);

} // namespace vrk::qt
