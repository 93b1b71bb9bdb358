#pragma once

#include <QByteArray>
#include <QString>

namespace MirlPlayer {

// Hand-tuning of the level curve and its follower. The values come from an optional JSON object
// that a developer writes by hand at ~/Vantrel/eq.json; the program never writes it. It is read
// once per process, at the first use of any value. A file that is missing, unreadable, not JSON
// or not an object leaves every default; inside an object, a missing or non-number key keeps its
// own default.
struct EQTuning {
    double contrast = 2.0;    // exponent of the level curve
    double dbFloor = -70.0;   // dB that maps to level 0
    double gain = 1.0;        // multiplier behind the curve
    double tilt = 2.0;        // dB per octave around 1 kHz
    double sharpness = 0.0;   // across-band unsharp mask; off at 0
    double punch = 0.0;       // rise emphasis; off at 0
    double attack = 0.025;    // base attack time constant, seconds
    double release = 0.08;    // base release time constant, seconds
    double floorBright = 0.6; // for drawing flat bars and the glass
    double peakBright = 0.98;
    double floorOpacity = 1.0;
    double peakOpacity = 1.0;
    double peakWhite = 0.0;

    static EQTuning fromJson(const QByteArray& json);
    static EQTuning load(const QString& path);
    static QString defaultPath();
    // The process-wide values, loaded from defaultPath() on the first call.
    static const EQTuning& shared();

    bool operator==(const EQTuning&) const = default;
};

} // namespace MirlPlayer
