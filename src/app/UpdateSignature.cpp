#include "app/UpdateSignature.h"

#include <QFile>
#include <sodium.h>

namespace MirlPlayer {

bool verifyFileSignature(const QString& path, const QByteArray& signature,
                         const QByteArray& publicKey) {
    if (signature.size() != crypto_sign_BYTES || publicKey.size() != crypto_sign_PUBLICKEYBYTES)
        return false;
    if (sodium_init() < 0)
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const qint64 size = file.size();
    // An empty file cannot be mapped; its signature is checked over no bytes.
    const uchar* bytes = size > 0 ? file.map(0, size) : reinterpret_cast<const uchar*>("");
    if (!bytes)
        return false;
    return crypto_sign_verify_detached(
               reinterpret_cast<const unsigned char*>(signature.constData()), bytes, quint64(size),
               reinterpret_cast<const unsigned char*>(publicKey.constData())) == 0;
}

} // namespace MirlPlayer
