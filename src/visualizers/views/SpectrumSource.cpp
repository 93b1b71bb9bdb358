#include "visualizers/views/SpectrumSource.h"

#include "audio/LevelsStore.h"
#include "look/Theme.h"
#include "visualizers/VizConfig.h"

namespace MirlPlayer {

SpectrumSource::SpectrumSource(QObject* parent)
    : QObject(parent) {
    m_configConnection =
        connect(config(), &VizConfig::valuesChanged, this, &SpectrumSource::lookChanged);
}

VizConfig* SpectrumSource::config() const {
    return m_config ? m_config.data() : &VizConfig::shared();
}

void SpectrumSource::setLevelsStore(LevelsStore* store) {
    if (m_levels == store)
        return;
    disconnect(m_levelsConnection);
    m_levels = store;
    if (store)
        m_levelsConnection =
            connect(store, &LevelsStore::levelsChanged, this, &SpectrumSource::levelsPublished);
    Q_EMIT inputsChanged();
}

void SpectrumSource::refollow(QList<QMetaObject::Connection>& connections, SpectrumSource* source,
                              QObject* view, const std::function<void()>& redraw) {
    for (const auto& c : std::as_const(connections))
        QObject::disconnect(c);
    connections.clear();
    if (source)
        connections = source->follow(view, redraw, redraw);
}

void SpectrumSource::setStereoStore(StereoStore* store) {
    if (m_stereo == store)
        return;
    m_stereo = store;
    Q_EMIT inputsChanged();
}

void SpectrumSource::setTheme(Theme* theme) {
    if (m_theme == theme)
        return;
    for (const auto& c : std::as_const(m_lookConnections))
        disconnect(c);
    m_lookConnections.clear();
    m_theme = theme;
    if (theme) {
        // A glide of the cover colours steps without telling bound views; the styles follow it.
        m_lookConnections = {
            connect(theme, &Theme::coloursChanged, this, &SpectrumSource::lookChanged),
            connect(theme, &Theme::glideStepped, this, &SpectrumSource::lookChanged)};
    }
    Q_EMIT inputsChanged();
}

void SpectrumSource::setConfig(VizConfig* config) {
    if (m_config == config)
        return;
    disconnect(m_configConnection);
    m_config = config;
    m_configConnection =
        connect(this->config(), &VizConfig::valuesChanged, this, &SpectrumSource::lookChanged);
    Q_EMIT inputsChanged();
}

QList<QMetaObject::Connection> SpectrumSource::follow(QObject* view,
                                                      const std::function<void()>& published,
                                                      const std::function<void()>& redraw) {
    return {connect(this, &SpectrumSource::levelsPublished, view, published),
            connect(this, &SpectrumSource::lookChanged, view, redraw),
            connect(this, &SpectrumSource::inputsChanged, view, redraw)};
}

QList<double> SpectrumSource::levels() const {
    return m_levels ? m_levels->levels() : QList<double>();
}

double SpectrumSource::value(const QString& key) const {
    return config()->value(key);
}

} // namespace MirlPlayer
