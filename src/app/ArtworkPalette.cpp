#include "app/ArtworkPalette.h"

#include "look/Palette.h"
#include "look/Theme.h"
#include "playback/MusicController.h"

#include <QPointer>

namespace MirlPlayer {

void connectArtworkPalette(MusicController& controller, Theme& theme) {
    QPointer<Theme> target(&theme);
    controller.setPaletteHandoff(
        [](const QImage& image) {
            const Palette palette = extractPalette(image);
            return palette.isEmpty() ? QVariant() : QVariant::fromValue(palette);
        },
        [](const QVariant& palette) { return accentColour(palette.value<Palette>()); },
        [target](const QVariant& palette) {
            if (!target)
                return;
            target->setArtPalette(palette.isValid()
                                      ? std::optional<Palette>(palette.value<Palette>())
                                      : std::nullopt);
        });
}

} // namespace MirlPlayer
