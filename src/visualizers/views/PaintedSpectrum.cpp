#include "visualizers/views/PaintedSpectrum.h"

#include "look/Theme.h"
#include "visualizers/views/SpectrumColours.h"
#include "visualizers/views/SpectrumSource.h"

#include <QPainter>
#include <algorithm>

namespace MirlPlayer {

PaintedSpectrum::PaintedSpectrum(QQuickItem* parent)
    : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void PaintedSpectrum::setSource(SpectrumSource* source) {
    if (m_source == source)
        return;
    for (const auto& c : std::as_const(m_connections))
        disconnect(c);
    m_connections.clear();
    m_source = source;
    if (source) {
        const auto redraw = [this] { update(); };
        m_connections = source->follow(this, redraw, redraw);
    }
    update();
    Q_EMIT sourceChanged();
}

namespace {

// The frame of one of the two bar styles: the levels, the canvas and what colours a band.
struct BarFrame {
    QList<double> levels;
    double w = 0, h = 0;
    const Theme* theme = nullptr;
    EQTuning tuning;

    static std::optional<BarFrame> of(const PaintedSpectrum& item) {
        const SpectrumSource* source = item.source();
        if (!source || !source->theme() || item.width() <= 0 || item.height() <= 0)
            return std::nullopt;
        BarFrame f{source->levels(), item.width(), item.height(), source->theme(),
                   source->tuning()};
        if (f.levels.isEmpty())
            return std::nullopt;
        return f;
    }
    QColor colour(int i) const {
        return toColor(bandColour(*theme, i, int(levels.size()), levels[i], tuning));
    }
};

} // namespace

void BarsEQ::paint(QPainter* painter) {
    const auto frame = BarFrame::of(*this);
    if (!frame)
        return;
    const int n = int(frame->levels.size());
    const double slot = frame->w / n;
    const double w = std::max(slot * source()->value(QStringLiteral("barsWidth")), 1.0);
    const double radius = std::min(source()->value(QStringLiteral("barsRound")), w * 0.5);
    painter->setPen(Qt::NoPen);
    for (int i = 0; i < n; ++i) {
        const double h = std::max(frame->levels[i] * frame->h, 1.0);
        painter->setBrush(frame->colour(i));
        painter->drawRoundedRect(QRectF((slot - w) * 0.5 + slot * i, frame->h - h, w, h), radius,
                                 radius);
    }
}

void MirrorEQ::paint(QPainter* painter) {
    const auto frame = BarFrame::of(*this);
    if (!frame)
        return;
    const int n = int(frame->levels.size());
    const double slot = frame->w / n;
    const double w = std::max(slot * source()->value(QStringLiteral("mirrorWidth")), 1.0);
    const double radius = std::min(w * 0.5, 1.5);
    const double centre = frame->h * 0.5;
    const double scale = source()->value(QStringLiteral("mirrorHeight")) * frame->h;
    painter->setPen(Qt::NoPen);
    for (int i = 0; i < n; ++i) {
        const double h = std::max(scale * frame->levels[i], 1.0);
        painter->setBrush(frame->colour(i));
        painter->drawRoundedRect(QRectF((slot - w) * 0.5 + slot * i, centre - h, w, 2 * h), radius,
                                 radius);
    }
}

} // namespace MirlPlayer
