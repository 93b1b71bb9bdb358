#include "visualizers/views/PaintedSpectrum.h"

#include "look/Theme.h"
#include "visualizers/views/BarFrame.h"
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

void paintBars(const PaintedSpectrum& item, QPainter* painter, bool mirrored) {
    const auto frame = BarFrame::of(item.source(), item.width(), item.height());
    if (!frame)
        return;
    const BarShape shape = frame->shape(*item.source(), mirrored);
    painter->setPen(Qt::NoPen);
    for (int i = 0; i < int(frame->levels.size()); ++i) {
        painter->setBrush(frame->colour(i));
        painter->drawRoundedRect(shape.rect(i, frame->levels[i]), shape.radius, shape.radius);
    }
}

} // namespace

void BarsEQ::paint(QPainter* painter) {
    paintBars(*this, painter, false);
}

void MirrorEQ::paint(QPainter* painter) {
    paintBars(*this, painter, true);
}

} // namespace MirlPlayer
