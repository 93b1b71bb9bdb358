#pragma once

namespace MirlPlayer {

class MusicController;
class Theme;

// Covers become colours: the controller extracts the palette of each new cover on its poll queue,
// sets the accent to the palette's first colour, and hands the palette to the theme, which glides
// the visualizer colours to it.
void connectArtworkPalette(MusicController& controller, Theme& theme);

} // namespace MirlPlayer
