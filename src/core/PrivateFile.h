#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace MirlPlayer {

// Files that hold the user's private data (tokens, caches of the library) live in folders only
// the user may enter (0700) and are readable by the user alone (0600). Writes are atomic: a
// reader sees the old content or the new, never half of it.

// Creates `dir` and its parents; the last folder gets mode 0700. Returns false on failure.
bool ensurePrivateDir(const QString& dir);

// Writes `data` to `path` atomically with mode 0600, creating its folder with mode 0700.
bool writePrivateFile(const QString& path, const QByteArray& data);

// Reads a whole file, or nothing when it is missing or unreadable.
std::optional<QByteArray> readFile(const QString& path, qint64 maxBytes = 64 * 1024 * 1024);

} // namespace MirlPlayer
