#include "visualizers/views/VisualizerTypes.h"

#include "visualizers/VizStyle.h"
#include "visualizers/views/GeometryBars.h"
#include "visualizers/views/GpuSpectrumViews.h"
#include "visualizers/views/PaintedSpectrum.h"
#include "visualizers/views/PixelEase.h"
#include "visualizers/views/SpectrumSource.h"

#include <QQmlEngine>
#include <QQuickWindow>
#include <QSurfaceFormat>

namespace MirlPlayer {

namespace {

// The catalogue as QML needs it: what a screen reader says for a style.
class VizCatalogue : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    Q_INVOKABLE static QString accessibilityLabel(const QString& vizID) {
        return VizStyles::accessibilityLabel(
            VizStyles::fromID(vizID).value_or(VizStyle::waterfall));
    }
};

} // namespace

void registerVisualizerTypes() {
    static bool done = false;
    if (done)
        return;
    done = true;
    constexpr const char* uri = "MirlPlayer.Visualizers";
    qmlRegisterType<SpectrumSource>(uri, 1, 0, "SpectrumSource");
    qmlRegisterType<BarsEQ>(uri, 1, 0, "BarsEQ");
    qmlRegisterType<MirrorEQ>(uri, 1, 0, "MirrorEQ");
    qmlRegisterType<GeometryBars>(uri, 1, 0, "GeometryBars");
    qmlRegisterType<DesignerSpectrum>(uri, 1, 0, "DesignerSpectrum");
    qmlRegisterType<NeonWaterfallView>(uri, 1, 0, "NeonWaterfallView");
    qmlRegisterType<StereoWaterfallView>(uri, 1, 0, "StereoWaterfallView");
    qmlRegisterType<StereoAnalyzerView>(uri, 1, 0, "StereoAnalyzerView");
    qmlRegisterType<PixelEase>(uri, 1, 0, "PixelEase");
    // By file as well: an engine finds them without an import path for the module's folder.
    for (const char* name : {"SpectrumView", "MiniEQ"})
        qmlRegisterType(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Visualizers/%1.qml")
                                 .arg(QLatin1String(name))),
                        uri, 1, 0, name);
    qmlRegisterSingletonType<VizCatalogue>(
        uri, 1, 0, "VizCatalogue",
        [](QQmlEngine*, QJSEngine*) -> QObject* { return new VizCatalogue; });
}

void requestVisualizerGraphics() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::OpenGL);
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QSurfaceFormat::setDefaultFormat(format);
}

} // namespace MirlPlayer

#include "VisualizerTypes.moc"
