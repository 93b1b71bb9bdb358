#pragma once

#include "app/Appcast.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>

class QFile;
class QNetworkAccessManager;

namespace MirlPlayer {

class UpdateFetch;

// One update's file: fetched into the download folder (only the newest update is kept there),
// its length held to what the feed announced, and its Ed25519 signature checked on a worker
// thread before it takes its final name. A file that fails is deleted. `done` runs once on the
// GUI thread, with the verified file or a finished sentence for the user; never after the
// download is destroyed.
class UpdateDownload : public QObject {
    Q_OBJECT
public:
    using Done = std::function<void(const QString& file, const QString& problem)>;

    UpdateDownload(QNetworkAccessManager& network, const AppcastItem& update,
                   const QByteArray& publicKey, const QString& folder, bool allowLoopback,
                   Done done, QObject* parent = nullptr);
    ~UpdateDownload() override;

    // Where the update's file goes: the enclosure's own name in plain characters.
    static QString pathFor(const AppcastItem& update, const QString& folder);

private:
    void fetched(const QString& error);
    void verified(bool good);
    void finish(const QString& file, const QString& problem);

    AppcastItem m_update;
    QByteArray m_publicKey;
    QString m_final;
    QString m_part;
    std::unique_ptr<QFile> m_file;
    QPointer<UpdateFetch> m_fetch;
    Done m_done;
};

} // namespace MirlPlayer
