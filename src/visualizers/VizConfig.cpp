#include "visualizers/VizConfig.h"

#include "core/Preferences.h"

#include <QLocale>
#include <cmath>

namespace MirlPlayer {

namespace {

struct ControlRow {
    const char* key;
    const char* label;
    double min;
    double max;
    double defaultValue;
    const char* help; // null: the generic text
};

const char* const libraryIntensityHelp =
    "How bright the light is while the Spotify library is open.";
const char* const libraryDiffusionHelp =
    "How far the light spreads while the Spotify library is open.";
const char* const diffusionHelp =
    "How far the light spreads: low is tight and bright, high is soft and wide.";

const QList<ControlRow>& rows() {
    static const QList<ControlRow> table{
        {"designHeight", "Spectrum height", 0.4, 1.0, 1.0, nullptr},
        {"sensitivity", "Sensitivity", 0.4, 2.2, 1.53,
         "How strongly the visualizer reacts to the music."},
        {"smoothing", "Smoothing", 0.0, 1.0, 0.22,
         "Lower for snappy movement; higher for a gentler response."},
        {"barsWidth", "Bar width", 0.2, 1.0, 0.7, nullptr},
        {"barsRound", "Rounding", 0.0, 4.0, 1.5, nullptr},
        {"mirrorWidth", "Bar width", 0.2, 1.0, 0.7, nullptr},
        {"mirrorHeight", "Height", 0.25, 0.95, 0.5, nullptr},
        {"waterGlow", "Glow", 0.0, 1.0, 0.0, nullptr},
        {"waterHeight", "Height", 0.5, 3.0, 0.992, nullptr},
        {"waterDepth", "Depth", 1.0, 4.5, 4.5, nullptr},
        {"stereoHeight", "Height", 0.6, 3.0, 1.55, nullptr},
        {"stereoDepth", "Depth", 1.0, 4.5, 2.7, nullptr},
        {"anaSens", "Sensitivity", 0.5, 1.2, 0.8,
         "Lower values bring out quieter details in the stereo display."},
        {"anaDepth", "Depth", 0.3, 1.5, 0.86, nullptr},
        {"anaBloom", "Glow", 0.0, 3.5, 1.5, nullptr},
        {"anaGrid", "Grid", 0.0, 1.0, 1.0, nullptr},
        {"anaWidth", "Width", 1.0, 2.2, 1.6, nullptr},
        {"anaHeight", "Height", 0.4, 1.1, 0.78, nullptr},
        {"reflectAmount", "Intensity", 0.0, 2.5, 1.508, nullptr},
        {"reflectLibraryAmount", "Intensity in library", 0.0, 2.5, 1.508, libraryIntensityHelp},
        {"edgeLibraryAmount", "Intensity in library", 0.0, 2.5, 0.886, libraryIntensityHelp},
        {"reflectLibraryDiffuse", "Diffusion in library", 0.0, 1.0, 0.5, libraryDiffusionHelp},
        {"edgeLibraryDiffuse", "Diffusion in library", 0.0, 1.0, 0.642, libraryDiffusionHelp},
        {"reflectColor", "Colour strength", 0.0, 2.0, 2.0,
         "The strength of the colours reflected in the glass."},
        {"reflectAttack", "Response speed", 0.0, 1.0, 1.0,
         "How quickly the reflected light responds to a beat."},
        {"reflectRelease", "Fade duration", 0.0, 1.0, 0.219,
         "How long the reflected light lingers."},
        {"reflectDiffuse", "Diffusion", 0.0, 1.0, 0.5, diffusionHelp},
        {"edgeAmount", "Intensity", 0.0, 2.5, 0.886, "How bright the light along the edges gets."},
        {"edgeColor", "Colour strength", 0.0, 2.0, 2.0,
         "The strength of the colours along the edges."},
        {"edgeAttack", "Response speed", 0.0, 1.0, 0.846,
         "How quickly the edge light responds to a beat."},
        {"edgeRelease", "Fade duration", 0.0, 1.0, 0.12, "How long the edge light lingers."},
        {"edgeDiffuse", "Diffusion", 0.0, 1.0, 0.642, diffusionHelp},
    };
    return table;
}

const ControlRow* row(const QString& key) {
    for (const ControlRow& r : rows()) {
        if (key == QLatin1String(r.key))
            return &r;
    }
    return nullptr;
}

const QHash<QString, double>& defaults() {
    static const QHash<QString, double> table = [] {
        QHash<QString, double> d;
        for (const ControlRow& r : rows())
            d.insert(QString::fromLatin1(r.key), r.defaultValue);
        return d;
    }();
    return table;
}

bool isNumber(const QVariant& v) {
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

// Sliders whose value reads best as a share of their travel, even outside 0...1.
bool showsPercent(const QString& key) {
    static const QList<QString> keys{"designHeight", "barsWidth", "mirrorWidth",  "mirrorHeight",
                                     "anaHeight",    "anaWidth",  "reflectColor", "edgeColor"};
    return keys.contains(key);
}

} // namespace

VizConfig::VizConfig(Preferences& prefs, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_prefs(prefs)
    , m_clock(clock) {
    QHash<QString, double> values = defaults();
    const QVariant stored = prefs.object(QString::fromLatin1(storeKey));
    if (stored.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = stored.toMap();
        // One value of a wrong type means the dictionary was not written by us: ignore it whole.
        bool allNumbers = true;
        for (auto it = map.cbegin(); it != map.cend() && allNumbers; ++it)
            allNumbers = isNumber(it.value());
        if (allNumbers) {
            for (auto it = map.cbegin(); it != map.cend(); ++it) {
                if (values.contains(it.key()))
                    values.insert(it.key(), it.value().toDouble());
            }
        }
    }
    m_values = values;
    m_mirror = values;
}

VizConfig& VizConfig::shared() {
    static VizConfig* config = new VizConfig(Preferences::shared());
    return *config;
}

const QList<VizControl>& VizConfig::allControls() {
    static const QList<VizControl> controls = [] {
        QList<VizControl> list;
        for (const ControlRow& r : rows())
            list.append({QString::fromLatin1(r.key), QString::fromUtf8(r.label), r.min, r.max});
        return list;
    }();
    return controls;
}

std::optional<VizControl> VizConfig::control(const QString& key) {
    for (const VizControl& c : allControls()) {
        if (c.key == key)
            return c;
    }
    return std::nullopt;
}

std::optional<double> VizConfig::defaultValue(const QString& key) {
    const auto it = defaults().constFind(key);
    if (it == defaults().cend())
        return std::nullopt;
    return *it;
}

QString VizConfig::helpText(const VizControl& control) {
    const ControlRow* r = row(control.key);
    if (r && r->help)
        return QString::fromUtf8(r->help);
    return control.label + QStringLiteral(" for the selected visualizer.");
}

QList<VizControl> VizConfig::controls(VizStyle style) {
    QList<VizControl> list;
    for (const QString& key : VizStyles::controlKeys(style)) {
        if (auto c = control(key))
            list.append(*c);
    }
    return list;
}

QString VizConfig::format(const VizControl& control, double value) {
    const bool unitRange = control.min == 0.0 && control.max == 1.0;
    if (!unitRange && !showsPercent(control.key)) {
        const QString number = QLocale().toString(value, 'f', 1);
        if (control.key == u"barsRound")
            return number + QStringLiteral(" pt");
        return number + QStringLiteral("×");
    }
    return QString::number(qRound(value * 100)) + QStringLiteral("%");
}

double VizConfig::value(const QString& key) const {
    {
        std::lock_guard lock(m_mirrorLock);
        const auto it = m_mirror.constFind(key);
        if (it != m_mirror.cend())
            return *it;
    }
    return defaultValue(key).value_or(0.0);
}

QVariantMap VizConfig::values() const {
    QVariantMap map;
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it)
        map.insert(it.key(), it.value());
    return map;
}

void VizConfig::set(const QString& key, double value) {
    m_lastControlKey = key;
    m_lastControlTouch = m_clock.now();
    const auto it = m_values.constFind(key);
    if (it != m_values.cend() && *it == value)
        return;
    m_values.insert(key, value);
    publish();
    persist();
}

void VizConfig::reset(const QList<QString>& keys) {
    bool changed = false;
    for (const QString& key : keys) {
        if (const auto d = defaultValue(key)) {
            const auto it = m_values.constFind(key);
            if (it == m_values.cend() || *it != *d) {
                m_values.insert(key, *d);
                changed = true;
            }
        } else if (m_values.remove(key)) {
            changed = true;
        }
    }
    if (!changed)
        return;
    publish();
    persist();
}

void VizConfig::beginEditing(bool held, const QString& key) {
    m_holding = held;
    m_lastControlKey = key;
    m_lastControlTouch = m_clock.now();
}

void VizConfig::touch(bool held) {
    m_holding = held;
    m_lastControlTouch = m_clock.now();
}

bool VizConfig::showsLibraryPreview() const {
    if (!m_lastControlKey || !m_lastControlKey->contains(QStringLiteral("Library")))
        return false;
    const double since = m_clock.now() - m_lastControlTouch;
    return since < 1.4 || (m_holding && since < 30.0);
}

void VizConfig::publish() {
    // Readers on other threads get a finished dictionary in one assignment.
    QHash<QString, double> copy = m_values;
    {
        std::lock_guard lock(m_mirrorLock);
        m_mirror.swap(copy);
    }
    Q_EMIT valuesChanged();
}

void VizConfig::persist() {
    m_prefs.setValue(QString::fromLatin1(storeKey), values());
}

} // namespace MirlPlayer
