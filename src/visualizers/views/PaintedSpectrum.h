#pragma once

#include "visualizers/views/SpectrumSource.h"

#include <QPointer>
#include <QQuickPaintedItem>

namespace MirlPlayer {

// A flat style drawn with QPainter: once per publication of the levels, and again when the look,
// a tuning value or the size changes. Nothing is drawn in between.
class PaintedSpectrum : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::SpectrumSource* source READ source WRITE setSource NOTIFY sourceChanged)
public:
    explicit PaintedSpectrum(QQuickItem* parent = nullptr);

    SpectrumSource* source() const { return m_source; }
    void setSource(SpectrumSource* source);

Q_SIGNALS:
    void sourceChanged();

private:
    QPointer<SpectrumSource> m_source;
    QList<QMetaObject::Connection> m_connections;
};

// Bars standing on the bottom edge, one per band.
class BarsEQ : public PaintedSpectrum {
    Q_OBJECT
public:
    using PaintedSpectrum::PaintedSpectrum;
    void paint(QPainter* painter) override;
};

// Bars mirrored about the middle line, one per band.
class MirrorEQ : public PaintedSpectrum {
    Q_OBJECT
public:
    using PaintedSpectrum::PaintedSpectrum;
    void paint(QPainter* painter) override;
};

// The four stylised spectrums over a few display columns: "skyline", "circuitry", "silk" and
// "phosphor".
class DesignerSpectrum : public PaintedSpectrum {
    Q_OBJECT
    Q_PROPERTY(QString style READ style WRITE setStyle NOTIFY styleChanged)
public:
    using PaintedSpectrum::PaintedSpectrum;
    QString style() const { return m_style; }
    void setStyle(const QString& style);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void styleChanged();

private:
    QString m_style;
};

} // namespace MirlPlayer
