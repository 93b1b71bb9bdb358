#pragma once

namespace MirlPlayer {

// Makes the styles' C++ views known to the QML module "MirlPlayer.Visualizers" 1.0, beside its
// QML types (SpectrumView, MiniEQ). Call once, on the GUI thread, before loading QML that
// imports the module.
void registerVisualizerTypes();

// Asks for the graphics the 3D styles draw with: Qt Quick on OpenGL, with a 3.3 core context.
// Call before the application object exists.
void requestVisualizerGraphics();

} // namespace MirlPlayer
