#pragma once

#include "look/Skin.h"

#include <QList>
#include <QString>
#include <QVariantMap>

namespace MirlPlayer {

// How one `PlayerStyle` dresses the card's timeline and transport. The behaviour of both is the
// same in every style; only these drawing choices differ.
struct ControlStyle {
    PlayerStyle style = PlayerStyle::apple;
    // "retro", "modern", "apple", "vintage", "pioneer", "cassette", or "designer" (noir, cyber and
    // studio share one timeline that branches on the style).
    QString timeline;
    // The transport piece: "pixel", "circle", "symbol", "chip" or "designer".
    QString piece;
    // Behind a designer button: "none", "cutCorner" or "rounded".
    QString chip = QStringLiteral("none");
    double chipRadius = 0;
    // Symbols of the designer transport: "ultraLight" or "medium".
    QString symbolWeight = QStringLiteral("medium");
    double hoverScale = 1.08;
    // Elapsed and remaining times at the ends, where the style has room.
    bool showsTimes = true;
    // Monospaced lettering for the display-like styles.
    bool monospace = false;
    // The style's own colour where it has one (an LCD's green, a deck's amber); empty means the
    // Theme's accent.
    QString tint;

    QVariantMap toMap() const;
};

// The drawing of a style; an unknown id gets the default style, "apple".
ControlStyle controlStyle(PlayerStyle style);
ControlStyle controlStyle(const QString& styleID);

// The 7 x 7 bitmaps of the pixel transport, row by row from the top, 1 for a lit square:
// "play", "pause", "next", "prev". An unknown name is blank.
QList<int> pixelGlyph(const QString& name);

} // namespace MirlPlayer
