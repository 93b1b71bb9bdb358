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
    m_source = source;
    SpectrumSource::refollow(m_connections, source, this, [this] { update(); });
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
