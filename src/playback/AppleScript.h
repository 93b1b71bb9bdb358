#pragma once

#include "playback/Snapshot.h"

#include <QString>

// The scripting layer for players driven through AppleScript: the sample script of each player,
// the one-line command scripts and the grammar of the sample's reply. Pure text functions; the
// runner that hands them to osascript exists only where osascript does.
namespace MirlPlayer::AppleScript {

// Fields of a sample reply are separated by ASCII 30, the record separator, unescaped.
inline constexpr char16_t fieldSeparator = 0x1E;

// The sample script of a player: its state, and when it has a current track, name, artist,
// album, duration and position in integer milliseconds (Spotify adds artwork URL and track id).
// A closed player answers "notrunning", a stopped one "stopped". Empty for Source::none.
QString sampleScript(Source source);

// "tell application "App" to <verb>": "playpause", "next track", "previous track".
QString commandScript(const QString& app, const QString& verb);

// Moves the player to `seconds`, written with three decimals.
QString seekScript(const QString& app, double seconds);

// Skips to a track queued through the Web API.
QString skipToQueuedScript();

// What osascript is given: the script inside a 5-second AppleScript timeout, which bounds the
// wait for a busy player.
QString withTimeout(const QString& source);

// The text of a finished osascript run: line feeds and carriage returns trimmed from both ends,
// nothing else.
QString trimNewlines(const QString& output);

// Reads a sample reply. Never fails: "notrunning", "stopped", an empty reply or fewer than six
// fields give the empty snapshot of `source`; an unreadable number reads as 0.
Snapshot parseReply(const QString& reply, Source source);

} // namespace MirlPlayer::AppleScript
