#include "core/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace MirlPlayer {

namespace {

constexpr auto kOwnerOnly =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;

} // namespace

bool ensurePrivateDir(const QString& dir) {
    // Each missing folder is made with its mode at once (mkpath would leave the parents to the
    // umask, and others could look inside the tree for a moment or for good).
    QStringList missing;
    for (QString folder = QDir::cleanPath(QDir(dir).absolutePath()); !QFileInfo::exists(folder);
         folder = QFileInfo(folder).path()) {
        missing.prepend(folder);
        if (folder == QFileInfo(folder).path())
            break;
    }
    for (const QString& folder : std::as_const(missing))
        if (!QDir().mkdir(folder, kOwnerOnly) && !QFileInfo(folder).isDir())
            return false;
    return QFileInfo(dir).isDir() && QFile::setPermissions(dir, kOwnerOnly);
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
