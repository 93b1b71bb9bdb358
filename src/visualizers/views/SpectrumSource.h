#pragma once

#include "audio/EQTuning.h"
#include "audio/LevelsStore.h"
#include "audio/StereoStore.h"
#include "look/Theme.h"
#include "visualizers/VizConfig.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <functional>

namespace MirlPlayer {

// What every visualizer style draws from: the band levels, the stereo curve, the look model and
// the tuning store. It tells its views when the levels were published (the one clock they draw
// on) and when the look or a tuning value changed (draw again, nothing moves on).
class SpectrumSource : public QObject {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::LevelsStore* levelsStore READ levelsStore WRITE setLevelsStore NOTIFY
                   inputsChanged)
    Q_PROPERTY(MirlPlayer::StereoStore* stereoStore READ stereoStore WRITE setStereoStore NOTIFY
                   inputsChanged)
    Q_PROPERTY(MirlPlayer::Theme* theme READ theme WRITE setTheme NOTIFY inputsChanged)
    Q_PROPERTY(MirlPlayer::VizConfig* config READ config WRITE setConfig NOTIFY inputsChanged)
public:
    explicit SpectrumSource(QObject* parent = nullptr);

    LevelsStore* levelsStore() const { return m_levels; }
    StereoStore* stereoStore() const { return m_stereo; }
    Theme* theme() const { return m_theme; }
    // The shared store unless another was given.
    VizConfig* config() const;
    void setLevelsStore(LevelsStore* store);
    void setStereoStore(StereoStore* store);
    void setTheme(Theme* theme);
    void setConfig(VizConfig* config);

    // The levels, or none without a store.
    QList<double> levels() const;
    double value(const QString& key) const;
    const EQTuning& tuning() const { return EQTuning::shared(); }

    // Connects a view: `published` runs on each publication of the levels, `redraw` when the
    // look, a tuning value or the inputs change. The connections end with the view.
    QList<QMetaObject::Connection> follow(QObject* view, const std::function<void()>& published,
                                          const std::function<void()>& redraw);

    // Ends the `connections` a view had and follows `source` (if any) instead, redrawing on a
    // publication and on a change alike.
    static void refollow(QList<QMetaObject::Connection>& connections, SpectrumSource* source,
                         QObject* view, const std::function<void()>& redraw);

Q_SIGNALS:
    void inputsChanged();
    void levelsPublished();
    void lookChanged();

private:
    QPointer<LevelsStore> m_levels;
    StereoStore* m_stereo = nullptr;
    QPointer<Theme> m_theme;
    QPointer<VizConfig> m_config;
    QMetaObject::Connection m_levelsConnection;
    QList<QMetaObject::Connection> m_lookConnections;
    QMetaObject::Connection m_configConnection;
};

} // namespace MirlPlayer
