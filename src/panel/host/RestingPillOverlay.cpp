#include "panel/host/RestingPillOverlay.h"

#include "audio/LevelsStore.h"
#include "look/Theme.h"
#include "playback/PlayerState.h"
#include "visualizers/VizConfig.h"

#include <cmath>
#include <utility>

namespace MirlPlayer {

RestingPillOverlay::RestingPillOverlay(PlayerState& player, Theme& theme,
                                       std::unique_ptr<PillLayer> layer, QObject* parent)
    : QObject(parent)
    , m_player(player)
    , m_theme(theme)
    , m_layer(std::move(layer)) {
    m_rules.setTheme(&theme);
    m_rules.setHasLevels(player.eqStore() != nullptr);
    if (m_layer)
        m_layer->onLost = [this] { schedule(); };
    for (PixelEase& bar : m_meter) {
        connect(&bar, &PixelEase::valueChanged, this, &RestingPillOverlay::schedule);
    }
    connect(&m_rules, &PlayerBackdrop::changed, this, &RestingPillOverlay::decide);
    connect(&theme, &Theme::coloursChanged, this, &RestingPillOverlay::schedule);
    connect(&theme, &Theme::showVisualizerChanged, this, &RestingPillOverlay::decide);
    connect(&player, &PlayerState::accentChanged, this, &RestingPillOverlay::schedule);
    connect(&player, &PlayerState::isPlayingChanged, this, &RestingPillOverlay::schedule);
}

RestingPillOverlay::~RestingPillOverlay() = default;

void RestingPillOverlay::setShape(const QRectF& shape, double cornerRadius,
                                  double devicePixelRatio) {
    if (shape == m_shape && cornerRadius == m_cornerRadius && devicePixelRatio == m_dpr)
        return;
    m_shape = shape;
    m_cornerRadius = cornerRadius;
    m_dpr = devicePixelRatio;
    for (PixelEase& bar : m_meter)
        bar.setStep(1 / m_dpr);
    schedule();
}

void RestingPillOverlay::setResting(bool resting) {
    if (resting == m_resting)
        return;
    m_resting = resting;
    decide();
}

bool RestingPillOverlay::wanted() const {
    // The glass of the platform's own material is not drawn here; nor is an empty shape.
    return m_resting && m_layer && !m_broken && !m_shape.isEmpty() && m_rules.form() != u"liquid";
}

void RestingPillOverlay::decide() {
    if (!wanted()) {
        follow(false);
        if (m_layer)
            m_layer->hide();
        if (m_covering) {
            m_covering = false;
            Q_EMIT coveringChanged();
        }
        return;
    }
    // Level arrays matter to the meter and to the light, not to a play symbol on black.
    follow(m_theme.showVisualizer() ||
           (m_rules.form() != u"solid" && !m_rules.reflection().isEmpty()));
    if (m_covering) {
        schedule();
        return;
    }
    // A light that comes back starts from dark, as the scene's does.
    m_light.reset();
    // The first picture is up before the scene stops drawing the pill.
    if (!present()) {
        m_broken = true;
        follow(false);
        return;
    }
    m_covering = true;
    Q_EMIT coveringChanged();
}

void RestingPillOverlay::follow(bool on) {
    LevelsStore* store = on ? m_player.eqStore() : nullptr;
    if (store == m_followed)
        return;
    disconnect(m_levels);
    m_followed = store;
    if (store)
        m_levels = connect(store, &LevelsStore::levelsChanged, this, [this] {
            // The capsules' steps and the new light make one picture, drawn right away.
            const bool pending = std::exchange(m_scheduled, true);
            retarget();
            m_scheduled = pending;
            if (!pending)
                redraw();
        });
    retarget();
}

void RestingPillOverlay::retarget() {
    // Each capsule rests at a fifth of the box in silence and eases to its band's level.
    const QList<double> levels = m_followed ? m_followed->levels() : QList<double>();
    for (size_t i = 0; i < m_meter.size(); ++i) {
        const double level = qsizetype(i) < levels.size() ? levels[qsizetype(i)] : 0.1;
        m_meter[i].setTarget(std::max((level * 0.8 + 0.2) * PillPicture::boxHeight, 3.0));
    }
}

void RestingPillOverlay::schedule() {
    if (!m_covering || m_scheduled)
        return;
    // Whatever changed at once (four capsules, a colour and a level array) draws once.
    m_scheduled = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_scheduled = false;
            redraw();
        },
        Qt::QueuedConnection);
}

void RestingPillOverlay::redraw() {
    if (!m_covering || present())
        return;
    // The window system refused the picture: the scene draws the pill from now on.
    m_broken = true;
    decide();
}

bool RestingPillOverlay::present() {
    PillLook look;
    look.size = m_shape.size();
    look.cornerRadius = m_cornerRadius;
    look.devicePixelRatio = m_dpr;
    const QPointF origin = m_shape.topLeft() * m_dpr;
    const QPoint at(int(std::floor(origin.x())), int(std::floor(origin.y())));
    look.offset = origin - QPointF(at);
    look.solid = m_rules.form() == u"solid";
    look.glass = glassOf(m_rules);
    if (!look.solid && !m_rules.reflection().isEmpty())
        look.light = m_light.next(m_followed, &m_theme, VizConfig::shared(), m_rules.reflection(),
                                  false, look.size);
    look.accent = m_player.accent();
    look.ink = m_theme.inkColor();
    if (m_theme.showVisualizer())
        look.meter = std::array<double, 4>{m_meter[0].value(), m_meter[1].value(),
                                           m_meter[2].value(), m_meter[3].value()};
    else
        look.symbol = m_player.isPlaying() ? QStringLiteral("pause") : QStringLiteral("play");
    if (m_layer->show(m_picture.draw(look), at))
        return true;
    m_layer->hide();
    return false;
}

} // namespace MirlPlayer
