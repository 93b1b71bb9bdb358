#include "app/UpdateDownload.h"

#include "app/UpdateFetch.h"
#include "app/UpdateSignature.h"
#include "core/Logging.h"
#include "core/PrivateFile.h"

#include <QDir>
#include <QFile>
#include <QFutureWatcher>
#include <QRegularExpression>
#include <QtConcurrent>

namespace MirlPlayer {

UpdateDownload::UpdateDownload(QNetworkAccessManager& network, const AppcastItem& update,
                               const QByteArray& publicKey, const QString& folder,
                               bool allowLoopback, Done done, QObject* parent)
    : QObject(parent)
    , m_update(update)
    , m_publicKey(publicKey)
    , m_final(pathFor(update, folder))
    , m_part(m_final + QStringLiteral(".part"))
    , m_done(std::move(done)) {
    QDir dir(folder);
    if (ensurePrivateDir(dir.path()))
        for (const QString& old : dir.entryList(QDir::Files | QDir::Hidden))
            dir.remove(old);
    m_file = std::make_unique<QFile>(m_part);
    if (!m_file->open(QIODevice::WriteOnly | QIODevice::Truncate,
                      QFile::ReadOwner | QFile::WriteOwner)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                finish({}, QStringLiteral("MIRL PRO couldn’t save the update. Check that there "
                                          "is room on your disk."));
            },
            Qt::QueuedConnection);
        return;
    }
    UpdateFetch::Options options;
    options.limit = update.length;
    options.exactLength = true;
    options.allowLoopback = allowLoopback;
    options.idleTimeoutMs = 60000;
    m_fetch = new UpdateFetch(
        network, update.url, options, m_file.get(),
        [this](const QString& error) { fetched(error); }, this);
}

UpdateDownload::~UpdateDownload() {
    m_done = nullptr;
    if (m_fetch)
        m_fetch->abort();
}

void UpdateDownload::fetched(const QString& error) {
    m_fetch->deleteLater();
    m_file.reset();
    if (!error.isEmpty()) {
        qCWarning(lcCore) << "update download:" << error;
        QFile::remove(m_part);
        finish({}, QStringLiteral("MIRL PRO couldn’t download the update. Try again later."));
        return;
    }
    auto* watcher = new QFutureWatcher<bool>(this);
    connect(watcher, &QFutureWatcher<bool>::finished, this, [this, watcher] {
        watcher->deleteLater();
        verified(watcher->result());
    });
    watcher->setFuture(
        QtConcurrent::run(verifyFileSignature, m_part, m_update.signature, m_publicKey));
}

void UpdateDownload::verified(bool good) {
    if (!good) {
        QFile::remove(m_part);
        finish({}, QStringLiteral("The update to MIRL PRO ") + m_update.displayVersion() +
                       QStringLiteral(" isn’t signed by its maker, so it wasn’t installed and "
                                      "the downloaded file was deleted."));
        return;
    }
    QFile::remove(m_final);
    if (!QFile::rename(m_part, m_final)) {
        QFile::remove(m_part);
        finish({}, QStringLiteral("MIRL PRO couldn’t save the update."));
        return;
    }
    finish(m_final, {});
}

void UpdateDownload::finish(const QString& file, const QString& problem) {
    if (Done done = std::exchange(m_done, nullptr))
        done(file, problem);
}

QString UpdateDownload::pathFor(const AppcastItem& update, const QString& folder) {
    // The installer goes by the file's ending, so the enclosure's name is kept, made safe.
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._+-]"));
    QString name = QFileInfo(update.url.path()).fileName().replace(unsafe, QStringLiteral("_"));
    if (name.isEmpty() || name.startsWith(u'.'))
        name = QStringLiteral("mirl-pro-update");
    return QDir(folder).filePath(name);
}

} // namespace MirlPlayer
