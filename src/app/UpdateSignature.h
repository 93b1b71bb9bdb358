#pragma once

#include <QByteArray>
#include <QString>

namespace MirlPlayer {

// Whether `signature` (64 bytes) is an Ed25519 signature of the whole file at `path` by
// `publicKey` (32 bytes). Reads the file through a mapping; may take a while for a large file,
// so it runs on a worker thread, never on the GUI thread.
bool verifyFileSignature(const QString& path, const QByteArray& signature,
                         const QByteArray& publicKey);

} // namespace MirlPlayer
