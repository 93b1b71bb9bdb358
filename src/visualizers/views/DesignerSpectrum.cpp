#include "look/Theme.h"
#include "visualizers/views/PaintedSpectrum.h"
#include "visualizers/views/SpectrumColours.h"
#include "visualizers/views/SpectrumSource.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace MirlPlayer {

void DesignerSpectrum::setStyle(const QString& style) {
    if (m_style == style)
        return;
    m_style = style;
    update();
    Q_EMIT styleChanged();
}

namespace {

QLinearGradient acrossGradient(const QList<QColor>& colours, double width, double opacity) {
    QLinearGradient g(0, 0, width, 0);
    for (int i = 0; i < colours.size(); ++i) {
        QColor c = colours[i];
        c.setAlphaF(float(opacity));
        g.setColorAt(double(i) / double(colours.size() - 1), c);
    }
    return g;
}

QColor withOpacity(QColor c, double opacity) {
    c.setAlphaF(float(opacity));
    return c;
}

} // namespace

void DesignerSpectrum::paint(QPainter* painter) {
    const SpectrumSource* src = source();
    const double W = width(), H = height();
    if (!src || !src->theme() || W <= 0 || H <= 0)
        return;
    const QList<double> levels = src->levels();
    if (levels.isEmpty())
        return;
    const Theme& theme = *src->theme();
    const EQTuning& tuning = src->tuning();
    const int n = m_style == QLatin1String("silk") ? 64 : 40;
    const QList<double> column = spectrumColumns(levels, n);
    const QList<QColor> gradient = designerGradient(theme, tuning);
    const double d = src->value(QStringLiteral("designHeight"));

    if (m_style == QLatin1String("silk")) {
        QPainterPath line;
        for (int i = 0; i < n; ++i) {
            const QPointF p(i * W / (n - 1), (d * column[i] * -0.72 + 0.85) * H);
            i == 0 ? line.moveTo(p) : line.lineTo(p);
        }
        QPainterPath fill = line;
        fill.lineTo(W, H);
        fill.lineTo(0, H);
        fill.closeSubpath();
        painter->fillPath(fill, acrossGradient(gradient, W, 0.22));
        QPen pen(QBrush(acrossGradient(gradient, W, 1.0)), 1.5, Qt::SolidLine, Qt::RoundCap,
                 Qt::RoundJoin);
        painter->strokePath(line, pen);
        return;
    }

    const double slot = W / n;
    const double barW = std::max(slot * 0.64, 1.0);
    const double segH = std::max(H / 12 - 2, 1.0);
    const double capW = std::max(barW * 0.5, 1.0);
    if (m_style == QLatin1String("circuitry")) {
        QPen pen(QBrush(acrossGradient(gradient, W, 0.12)), 0.5);
        pen.setDashPattern({2 / 0.5, 4 / 0.5}); // in pen widths: 2 on, 4 off
        painter->setPen(pen);
        for (double y : {H * 0.25, H * 0.5, H * 0.75})
            painter->drawLine(QPointF(0, y), QPointF(W, y));
    }
    painter->setPen(Qt::NoPen);
    const double hue = theme.currentSkin().hue;
    for (int i = 0; i < n; ++i) {
        const double v = column[i];
        const double x = slot * i;
        const HSB place = theme.colorAt(hue, double(i) / double(n - 1));
        const QColor colour = toColor(levelColour(place, v, tuning));
        const double height = std::min(d * v * H, H);
        if (m_style == QLatin1String("phosphor")) {
            // Twelve cells lit from the bottom; high cells run hot whatever the level, and unlit
            // ones stay faintly visible.
            for (int k = 0; k < 12; ++k) {
                const bool lit = k / 12.0 < d * v;
                painter->setBrush(
                    toColor(levelColour(place, (k + 1) / 12.0, tuning), lit ? 0.9 : 0.06));
                painter->drawRoundedRect(QRectF(x, H - (k + 1) * H / 12, barW, segH), 0.5, 0.5);
            }
        } else if (m_style == QLatin1String("circuitry")) {
            const double hh = std::max(height, 1.0);
            painter->setBrush(withOpacity(colour, 0.65));
            painter->drawRect(QRectF(x, H * 0.5 - hh * 0.5, capW, hh));
            painter->setBrush(colour);
            painter->drawRect(QRectF(x - 1, H * 0.5 - hh * 0.5, barW, 2));
            painter->drawRect(QRectF(x - 1, H * 0.5 + hh * 0.5 - 2, barW, 2));
        } else { // skyline
            const double hh = std::max(height, 1.0);
            const double y = H - hh;
            QLinearGradient building(0, y, 0, H);
            building.setColorAt(0, withOpacity(colour, 0.95));
            building.setColorAt(1, withOpacity(colour, 0.4));
            painter->fillRect(QRectF(x, y, barW, hh), building);
            painter->fillRect(QRectF(x, y, barW, 1.5), colour);
            for (double floor = 5; floor < hh; floor += 6)
                painter->fillRect(QRectF(x, H - floor, barW, 1), QColor(0, 0, 0, 102));
        }
    }
}

} // namespace MirlPlayer
