#include "playback/AppleScript.h"

#include <QRegularExpression>
#include <QStringList>
#include <cmath>

namespace MirlPlayer::AppleScript {

namespace {

// A plain decimal over the whole text: no blanks, no "inf" or "nan", no hexadecimal.
std::optional<double> parseDecimal(const QString& text) {
    static const QRegularExpression decimal(
        QStringLiteral(R"(\A[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?\z)"));
    if (!decimal.match(text).hasMatch())
        return std::nullopt;
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace

QString sampleScript(Source source) {
    if (source == Source::none)
        return {};
    const QString app = sourceRawValue(source);
    const bool spotify = source == Source::spotify;
    // Spotify reports durations in milliseconds, Music in seconds; both replies are in ms.
    const QString durationExpr =
        spotify ? QStringLiteral("((duration of curTrack) as integer)")
                : QStringLiteral("((round ((duration of curTrack) * 1000)) as integer)");
    const QString positionExpr = QStringLiteral("(round ((player position) * 1000)) as integer");
    const QString extras =
        spotify ? QStringLiteral(" & sep & (artwork url of curTrack) & sep & (id of curTrack)")
                : QString();
    const QStringList lines{
        QStringLiteral("set sep to (ASCII character 30)"),
        u"if application \"" + app + u"\" is running then",
        u"\ttell application \"" + app + u"\"",
        QStringLiteral("\t\tset pState to player state as string"),
        QStringLiteral("\t\tif pState is \"stopped\" then return \"stopped\""),
        QStringLiteral("\t\tset curTrack to current track"),
        u"\t\treturn pState & sep & (name of curTrack) & sep & (artist of curTrack) & sep & (album "
        u"of curTrack) & sep & " +
            durationExpr + u" & sep & (" + positionExpr + u")" + extras,
        QStringLiteral("\tend tell"),
        QStringLiteral("else"),
        QStringLiteral("\treturn \"notrunning\""),
        QStringLiteral("end if"),
    };
    return lines.join(u'\n');
}

QString commandScript(const QString& app, const QString& verb) {
    return u"tell application \"" + app + u"\" to " + verb;
}

QString seekScript(const QString& app, double seconds) {
    return commandScript(app, u"set player position to " + QString::asprintf("%.3f", seconds));
}

QString skipToQueuedScript() {
    return commandScript(QStringLiteral("Spotify"), QStringLiteral("next track"));
}

QString withTimeout(const QString& source) {
    return u"with timeout of 5 seconds\n" + source + u"\nend timeout";
}

QString trimNewlines(const QString& output) {
    qsizetype begin = 0;
    qsizetype end = output.size();
    const auto isNewline = [](QChar c) { return c == u'\n' || c == u'\r'; };
    while (begin < end && isNewline(output.at(begin)))
        ++begin;
    while (end > begin && isNewline(output.at(end - 1)))
        --end;
    return output.mid(begin, end - begin);
}

Snapshot parseReply(const QString& reply, Source source) {
    if (reply.isEmpty() || reply == u"notrunning" || reply == u"stopped")
        return Snapshot::empty(source);
    const QStringList fields = reply.split(QChar(fieldSeparator));
    if (fields.size() < 6)
        return Snapshot::empty(source);

    Snapshot s;
    s.source = source;
    s.hasTrack = true;
    s.playing = fields.at(0).toLower() == u"playing";
    s.title = fields.at(1);
    s.artist = fields.at(2);
    s.album = fields.at(3);
    s.durationMs = parseDecimal(fields.at(4)).value_or(0);
    s.positionMs = parseDecimal(fields.at(5)).value_or(0);
    if (fields.size() > 6)
        s.artURL = fields.at(6);
    if (source == Source::spotify && fields.size() >= 8)
        s.trackURI = fields.at(7);
    return s;
}

} // namespace MirlPlayer::AppleScript
