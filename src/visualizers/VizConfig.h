#pragma once

#include "core/Clock.h"
#include "visualizers/VizStyle.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <mutex>
#include <optional>

namespace MirlPlayer {

class Preferences;

// One slider of the tuning store.
struct VizControl {
    QString key;
    QString label;
    double min = 0;
    double max = 1;

    bool operator==(const VizControl&) const = default;
};

// The store of tuning numbers shared by all visualizer styles, the analysis and the glass. The
// values belong to the GUI thread; a copy of them (the mirror) stays readable from any thread, so
// that the audio queue sees a moved slider on its next block without waiting for the GUI thread.
// The mirror's lock is held for one look-up or one assignment of a finished dictionary only.
class VizConfig : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantMap values READ values NOTIFY valuesChanged)
public:
    explicit VizConfig(Preferences& prefs, Clock& clock = Clock::system(),
                       QObject* parent = nullptr);

    static VizConfig& shared();

    static constexpr const char* storeKey = "vizConfig2";

    // The constant catalogue.
    static const QList<VizControl>& allControls();
    static std::optional<VizControl> control(const QString& key);
    static std::optional<double> defaultValue(const QString& key);
    static QString helpText(const VizControl& control);
    static QList<VizControl> controls(VizStyle style);
    // The text beside a slider.
    static QString format(const VizControl& control, double value);

    // Any thread. A key that is not stored reads as its default, an unknown key as 0.0.
    Q_INVOKABLE double value(const QString& key) const;

    // GUI thread.
    QVariantMap values() const;
    void set(const QString& key, double value);
    void reset(const QList<QString>& keys);
    // The slider's editing callback: dragging state and the key in hand.
    void beginEditing(bool held, const QString& key);
    void touch(bool held);
    bool showsLibraryPreview() const;

    bool holding() const { return m_holding; }
    double lastControlTouch() const { return m_lastControlTouch; }
    std::optional<QString> lastControlKey() const { return m_lastControlKey; }

Q_SIGNALS:
    void valuesChanged();

private:
    void publish();
    void persist();

    Preferences& m_prefs;
    Clock& m_clock;
    QHash<QString, double> m_values;
    QHash<QString, double> m_mirror;
    mutable std::mutex m_mirrorLock;
    double m_lastControlTouch = Clock::distantPast;
    bool m_holding = false;
    std::optional<QString> m_lastControlKey;
};

} // namespace MirlPlayer
