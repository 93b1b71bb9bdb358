#include "visualizers/views/GpuSpectrumViews.h"

#include "audio/StereoStore.h"
#include "look/Theme.h"
#include "visualizers/views/NeonWaterfallRenderer.h"
#include "visualizers/views/SpectrumSource.h"
#include "visualizers/views/StereoAnalyzerRenderer.h"
#include "visualizers/views/StereoWaterfallRenderer.h"

namespace MirlPlayer {

namespace {

std::span<const float> curveOf(const SpectrumSource* source) {
    const StereoStore* store = source ? source->stereoStore() : nullptr;
    return store ? std::span<const float>(store->curve()) : std::span<const float>();
}

} // namespace

NeonWaterfallView::NeonWaterfallView(QQuickItem* parent)
    : GpuSpectrumView(parent)
    , m_history(NeonWaterfallRenderer::rows, NeonWaterfallRenderer::cols,
                SpectrumHistory::Newest::first) {}

void NeonWaterfallView::advance() {
    const QList<double> levels = source() ? source()->levels() : QList<double>();
    m_history.push(std::span<const double>(levels.constData(), levels.size()));
}

GLSpectrumNode* NeonWaterfallView::createNode() {
    return new NeonWaterfallRenderer;
}

void NeonWaterfallView::sync(GLSpectrumNode& node, bool moved) {
    auto& renderer = static_cast<NeonWaterfallRenderer&>(node);
    if (moved)
        renderer.setHeights(m_history.heights());
    if (source())
        renderer.setTuning(source()->value(QStringLiteral("waterGlow")),
                           source()->value(QStringLiteral("waterHeight")),
                           source()->value(QStringLiteral("waterDepth")));
}

StereoWaterfallView::StereoWaterfallView(QQuickItem* parent)
    : GpuSpectrumView(parent)
    , m_history(StereoWaterfallRenderer::rows, StereoWaterfallRenderer::cols,
                SpectrumHistory::Newest::first) {}

void StereoWaterfallView::advance() {
    m_history.push(curveOf(source()));
}

GLSpectrumNode* StereoWaterfallView::createNode() {
    return new StereoWaterfallRenderer;
}

void StereoWaterfallView::sync(GLSpectrumNode& node, bool moved) {
    auto& renderer = static_cast<StereoWaterfallRenderer&>(node);
    if (moved)
        renderer.setHeights(m_history.heights());
    if (source())
        renderer.setTuning(source()->value(QStringLiteral("stereoHeight")),
                           source()->value(QStringLiteral("stereoDepth")));
}

StereoAnalyzerView::StereoAnalyzerView(QQuickItem* parent)
    : GpuSpectrumView(parent)
    , m_history(StereoAnalyzerRenderer::timeCols, StereoAnalyzerRenderer::stereoRows,
                SpectrumHistory::Newest::last) {}

void StereoAnalyzerView::advance() {
    const StereoStore* store = source() ? source()->stereoStore() : nullptr;
    if (!store || store->generation() == m_lastGeneration)
        return;
    m_lastGeneration = store->generation();
    m_history.push(std::span<const float>(store->curve()));
}

GLSpectrumNode* StereoAnalyzerView::createNode() {
    return new StereoAnalyzerRenderer;
}

void StereoAnalyzerView::sync(GLSpectrumNode& node, bool moved) {
    auto& renderer = static_cast<StereoAnalyzerRenderer&>(node);
    if (moved)
        renderer.setHeights(m_history.heights());
    const SpectrumSource* s = source();
    if (!s)
        return;
    StereoAnalyzerRenderer::Tuning t;
    t.width = s->value(QStringLiteral("anaWidth"));
    t.height = s->value(QStringLiteral("anaHeight"));
    t.depth = s->value(QStringLiteral("anaDepth"));
    t.sensitivity = s->value(QStringLiteral("anaSens"));
    t.grid = s->value(QStringLiteral("anaGrid"));
    t.bloom = s->value(QStringLiteral("anaBloom"));
    t.hue = s->theme() ? s->theme()->currentSkin().hue : 0;
    renderer.setTuning(t);
}

} // namespace MirlPlayer
