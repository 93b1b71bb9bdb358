#include "settings/SettingsCatalogue.h"

#include "look/Skin.h"
#include "visualizers/VizConfig.h"
#include "visualizers/VizStyle.h"

#include <QRegularExpression>
#include <QSet>
#include <algorithm>

namespace MirlPlayer::SettingsCatalogue {

namespace {

using P = SettingsPage;

const QList<SettingsSearchResult>& writtenRows() {
    static const QList<SettingsSearchResult> rows{
        {"Report a problem", P::updates, "feedback",
         "bug issue problem broken crash help support contact email kestrova feedback report"},
        {"Share an idea", P::updates, "feedback",
         "idea suggestion feature request wish feedback contact email kestrova"},
        {"Light along the edges", P::appearance, "reflection",
         "edge border light glow artwork only album art reflection music frame"},
        {"Control style", P::appearance, "player",
         "transport playback buttons retro minimal cyberpunk blade runner"},
        {"Position", P::appearance, "player", "notch right corner location"},
        {"Player background", P::appearance, "background",
         "glass transparent transparency translucent black solid frosted tint material liquid"},
        {"Glass tint", P::appearance, "background",
         "transparency transparent see through opacity glass blur frosted tint solid clear"},
        {"Reflect visualizer colours", P::appearance, "reflection",
         "glass light glow reflect eq visualizer frosted intensity colour reaction sustain attack "
         "release"},
        {"Light reflection in Spotify library", P::appearance, "libraryReflection",
         "library spotify reflection light glow intensity strength brightness diffusion spread "
         "soft glass"},
        {"Visualizer colour: album art", P::visualizer, "colour",
         "dynamic adaptive artwork cover album colours colors theme match automatic fixed"},
        {"Text and controls colour", P::appearance, "ink",
         "title artist name subtext buttons controls timeline text white black colour color ink "
         "font"},
        {"Visualizer colour: fixed", P::visualizer, "colour",
         "accent color custom skin theme preset"},
        {"Balance quiet and loud songs", P::audio, "loudness",
         "normalize volume sound check quiet loud level gain auto spotify apple music"},
        {"Show visualizer", P::visualizer, "visible", "eq visualiser artwork only off"},
        {"Visualizer style", P::visualizer, "style", "eq spectrum animation"},
        {"Let the visualizer hear your music", P::audio, "capture",
         "enable audio capture record system sound spotify music microphone"},
        {"Music connection status", P::audio, "status",
         "retry connection capture status check again silent troubleshoot"},
        {"Audio permission", P::audio, "permission", "capture recording privacy access allow"},
        {"Open Setup Assistant", P::audio, "setup",
         "setup assistant welcome onboarding permissions install first launch help"},
        {"Playback controls permission", P::audio, "automation",
         "automation spotify apple music access allow"},
        {"Motion speed", P::appearance, "motion",
         "animation transition speed fast slow snappy relaxed motion quick"},
        {"Spotify account", P::spotify, "account",
         "spotify connect disconnect reconnect account login sign in library liked songs"},
        {"Check for Updates", P::updates, "check",
         "update upgrade new version latest download sparkle release"},
        {"Automatic updates", P::updates, "automatic",
         "update automatically install download background daily"},
    };
    return rows;
}

QList<SettingsSearchResult> controlRows(const QString& vizID) {
    QList<VizControl> controls = styleControls(vizID);
    std::sort(controls.begin(), controls.end(),
              [](const VizControl& a, const VizControl& b) { return a.key < b.key; });
    QList<SettingsSearchResult> rows;
    for (const VizControl& c : controls)
        rows.append(
            {c.label, P::visualizer,
             isResponseControl(c.key) ? QStringLiteral("response") : QStringLiteral("adjustments"),
             QStringLiteral("visualizer eq ") + c.key});
    return rows;
}

} // namespace

QList<VizControl> styleControls(const QString& vizID) {
    const VizStyle style = VizStyles::fromID(vizID).value_or(VizStyles::all().first());
    QList<VizControl> controls = VizConfig::controls(style);
    if (style != VizStyle::stereo && style != VizStyle::stereoAnalyzer)
        controls.append(*VizConfig::control(QStringLiteral("sensitivity")));
    controls.append(*VizConfig::control(QStringLiteral("smoothing")));
    return controls;
}

bool isResponseControl(const QString& key) {
    return key == u"sensitivity" || key == u"smoothing";
}

QList<SettingsSearchResult> build(const QString& vizID) {
    QList<SettingsSearchResult> all = writtenRows();
    all += controlRows(vizID);
    // A result must lead to a choice that is on screen, and not every build offers liquid glass.
    if (availableBackgrounds().contains(PlayerBackground::liquid))
        all.append({title(PlayerBackground::liquid), P::appearance, QStringLiteral("background"),
                    QStringLiteral("liquid glass native material refraction clear tinted")});
    for (VizStyle s : VizStyles::all())
        all.append({VizStyles::title(s), P::visualizer, QStringLiteral("style"),
                    QStringLiteral("visualizer spectrum")});
    for (PlayerStyle s : allPlayerStyles())
        all.append({title(s), P::appearance, QStringLiteral("player"),
                    QStringLiteral("control style transport")});

    QSet<QString> seen;
    QList<SettingsSearchResult> rows;
    for (const SettingsSearchResult& row : all) {
        const QString identity = SettingsPages::title(row.page) + row.title;
        if (seen.contains(identity))
            continue;
        seen.insert(identity);
        rows.append(row);
    }
    return rows;
}

QString fold(const QString& text) {
    const QString decomposed = text.normalized(QString::NormalizationForm_KD);
    QString out;
    out.reserve(decomposed.size());
    for (QChar c : decomposed) {
        if (c.category() != QChar::Mark_NonSpacing)
            out.append(c);
    }
    return out.toCaseFolded();
}

QStringList tokens(const QString& query) {
    return fold(query.trimmed())
        .split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
}

bool matches(const SettingsSearchResult& row, const QStringList& tokens) {
    const QString haystack =
        fold(row.title + u' ' + SettingsPages::title(row.page) + u' ' + row.keywords);
    return std::all_of(tokens.begin(), tokens.end(),
                       [&haystack](const QString& t) { return haystack.contains(t); });
}

QList<SettingsSearchResult> search(const QList<SettingsSearchResult>& catalogue,
                                   const QString& query) {
    const QStringList words = tokens(query);
    QList<SettingsSearchResult> found;
    if (words.isEmpty())
        return found;
    for (const SettingsSearchResult& row : catalogue) {
        if (matches(row, words))
            found.append(row);
    }
    return found;
}

} // namespace MirlPlayer::SettingsCatalogue
