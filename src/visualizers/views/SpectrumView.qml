import QtQuick
import MirlPlayer.Visualizers

// The visualizer of the card: the style that `vizID` names, drawn from the player's levels and
// stereo curve in the colours of the theme. An unknown id shows the 3D waterfall.
Item {
    id: view
    property string vizID
    property var levelsStore
    property var stereoStore
    property var theme

    Accessible.role: Accessible.Graphic
    Accessible.name: VizCatalogue.accessibilityLabel(vizID)

    SpectrumSource {
        id: spectrumSource
        levelsStore: view.levelsStore
        stereoStore: view.stereoStore
        theme: view.theme
    }

    // The bars are one mesh where the scene graph draws geometry; the software one gets them
    // painted.
    readonly property bool painted: GraphicsInfo.api === GraphicsInfo.Software

    Loader {
        objectName: "styleLoader"
        anchors.fill: parent
        sourceComponent: {
            switch (view.vizID) {
            case "bars": return view.painted ? bars : meshBars
            case "mirror": return view.painted ? mirror : meshMirror
            case "stereo": return stereo
            case "stereoAnalyzer": return analyzer
            case "skyline":
            case "circuitry":
            case "silk":
            case "phosphor": return designer
            default: return waterfall
            }
        }
    }

    Component { id: bars; BarsEQ { source: spectrumSource } }
    Component { id: mirror; MirrorEQ { source: spectrumSource } }
    Component { id: meshBars; GeometryBars { source: spectrumSource } }
    Component { id: meshMirror; GeometryBars { source: spectrumSource; mirrored: true } }
    Component { id: designer; DesignerSpectrum { source: spectrumSource; style: view.vizID } }
    Component { id: waterfall; NeonWaterfallView { source: spectrumSource } }
    Component { id: stereo; StereoWaterfallView { source: spectrumSource } }
    Component { id: analyzer; StereoAnalyzerView { source: spectrumSource } }
}
