#pragma once

#include "look/HSB.h"

#include <QColor>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>
#include <optional>

namespace MirlPlayer {

// One colour preset. Identified by `id`, which is what "skinID" and "inkID" store.
struct Skin {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id CONSTANT)
    Q_PROPERTY(QString name MEMBER name CONSTANT)
    Q_PROPERTY(double hue MEMBER hue CONSTANT)
    Q_PROPERTY(double sat MEMBER sat CONSTANT)
    Q_PROPERTY(double bri MEMBER bri CONSTANT)
    Q_PROPERTY(QColor color READ color CONSTANT)
public:
    QString id;
    QString name;
    double hue = 0;
    double sat = 0;
    double bri = 0;

    HSB hsb() const { return {hue, sat, bri}; }
    QColor color() const { return toColor(hsb()); }
    friend bool operator==(const Skin&, const Skin&) = default;
};

// The presets, in the order the picker shows them. The first is the fallback for an unknown id.
const QList<Skin>& skins();
std::optional<Skin> skinWithID(const QString& id);

inline const QString kCustomSkinID = QStringLiteral("custom");
inline const QString kAlbumSkinID = QStringLiteral("album");

// The material behind the panel. The raw values are what "backgroundStyleID" stores.
enum class PlayerBackground { solid, frosted, liquid };
QString rawValue(PlayerBackground b);
QString title(PlayerBackground b);
std::optional<PlayerBackground> playerBackground(const QString& raw);
// The backgrounds this platform can draw. The system glass material behind `liquid` does not
// exist here, so it is never offered.
QList<PlayerBackground> availableBackgrounds();
// What a stored id amounts to: an unknown id, or one this platform does not offer, is `frosted`.
PlayerBackground effectiveBackground(const QString& raw);

// Where the resting pill sits. Any value other than "right" counts as `notch`.
enum class PillPosition { notch, right };
QString rawValue(PillPosition p);
PillPosition pillPosition(const QString& raw);

// The dress of the card's timeline and transport.
enum class PlayerStyle {
    retro,
    modern,
    apple,
    vintage,
    pioneer,
    cassette,
    noir,
    cyber,
    minimal,
    studio
};
QList<PlayerStyle> allPlayerStyles();
QString rawValue(PlayerStyle s);
QString title(PlayerStyle s);
std::optional<PlayerStyle> playerStyle(const QString& raw);

} // namespace MirlPlayer

Q_DECLARE_METATYPE(MirlPlayer::Skin)
