#include "core/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace MirlPlayer {

bool ensurePrivateDir(const QString& dir) {
    if (!QDir().mkpath(dir))
        return false;
    return QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                          QFileDevice::ExeOwner);
}

bool writePrivateFile(const QString& path, const QByteArray& data) {
    if (!ensurePrivateDir(QFileInfo(path).absolutePath()))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // Set before any byte is written, so the content is never readable by others.
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    if (file.write(data) != data.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

std::optional<QByteArray> readFile(const QString& path, qint64 maxBytes) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    if (file.size() > maxBytes)
        return std::nullopt;
    return file.readAll();
}

} // namespace MirlPlayer
