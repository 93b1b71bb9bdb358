#include "audio/EQTuning.h"

#include "core/PrivateFile.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

namespace MirlPlayer {

EQTuning EQTuning::fromJson(const QByteArray& json) {
    EQTuning t;
    const QJsonDocument doc = QJsonDocument::fromJson(json);
    if (!doc.isObject())
        return t;
    const QJsonObject o = doc.object();
    const auto read = [&o](const char* key, double& field) {
        const QJsonValue v = o.value(QLatin1String(key));
        if (v.isDouble())
            field = v.toDouble();
    };
    read("contrast", t.contrast);
    read("dbFloor", t.dbFloor);
    read("gain", t.gain);
    read("tilt", t.tilt);
    read("sharpness", t.sharpness);
    read("punch", t.punch);
    read("attack", t.attack);
    read("release", t.release);
    read("floorBright", t.floorBright);
    read("peakBright", t.peakBright);
    read("floorOpacity", t.floorOpacity);
    read("peakOpacity", t.peakOpacity);
    read("peakWhite", t.peakWhite);
    return t;
}

EQTuning EQTuning::load(const QString& path) {
    const auto data = readFile(path, 1024 * 1024);
    return data ? fromJson(*data) : EQTuning{};
}

QString EQTuning::defaultPath() {
    return QDir::homePath() + QStringLiteral("/Vantrel/eq.json");
}

const EQTuning& EQTuning::shared() {
    // A function-local static: the first caller loads, on whichever thread it runs.
    static const EQTuning tuning = load(defaultPath());
    return tuning;
}

} // namespace MirlPlayer
