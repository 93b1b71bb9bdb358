#pragma once

#include "visualizers/views/GpuSpectrumView.h"

#include <QtGlobal>

namespace MirlPlayer {

// "3D Waterfall": a row of 128 levels enters at the front with every publication.
class NeonWaterfallView : public GpuSpectrumView {
    Q_OBJECT
public:
    explicit NeonWaterfallView(QQuickItem* parent = nullptr);
    const SpectrumHistory& history() const override { return m_history; }

protected:
    void advance() override;
    GLSpectrumNode* createNode() override;
    void sync(GLSpectrumNode& node, bool moved) override;

private:
    SpectrumHistory m_history;
};

// "Stereo 3D": a row of the stereo curve enters at the front with every publication.
class StereoWaterfallView : public GpuSpectrumView {
    Q_OBJECT
public:
    explicit StereoWaterfallView(QQuickItem* parent = nullptr);
    const SpectrumHistory& history() const override { return m_history; }

protected:
    bool readsStereo() const override { return true; }
    void advance() override;
    GLSpectrumNode* createNode() override;
    void sync(GLSpectrumNode& node, bool moved) override;

private:
    SpectrumHistory m_history;
};

// "Stereo 3D Analyzer": a column of the stereo curve enters at the right, but only when the
// curve is new (its generation moved), so the view moves with the data alone.
class StereoAnalyzerView : public GpuSpectrumView {
    Q_OBJECT
public:
    explicit StereoAnalyzerView(QQuickItem* parent = nullptr);
    const SpectrumHistory& history() const override { return m_history; }

protected:
    bool readsStereo() const override { return true; }
    void advance() override;
    GLSpectrumNode* createNode() override;
    void sync(GLSpectrumNode& node, bool moved) override;

private:
    SpectrumHistory m_history;
    quint64 m_lastGeneration = 0;
};

} // namespace MirlPlayer
