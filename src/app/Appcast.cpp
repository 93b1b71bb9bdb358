#include "app/Appcast.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

namespace MirlPlayer {

namespace {

// The namespace of the update extensions, as feeds of this kind declare it.
const QString extensions = QStringLiteral("http://www.andymatuschak.org/xml-namespaces/sparkle");

QStringView extensionAttribute(const QXmlStreamAttributes& attributes, const char* name) {
    return attributes.value(extensions, QLatin1String(name));
}

void readEnclosure(const QXmlStreamAttributes& a, AppcastItem& item, QString& os) {
    item.url = QUrl(a.value(QStringLiteral("url")).toString().trimmed(), QUrl::StrictMode);
    bool ok = false;
    const qint64 length = a.value(QStringLiteral("length")).toLongLong(&ok);
    item.length = ok && length > 0 ? length : 0;
    const QByteArray signature = extensionAttribute(a, "edSignature").toLatin1().trimmed();
    const auto decoded =
        QByteArray::fromBase64Encoding(signature, QByteArray::AbortOnBase64DecodingErrors);
    item.signature = decoded ? *decoded : QByteArray();
    // Older feeds put the versions on the enclosure.
    if (item.version.isEmpty())
        item.version = extensionAttribute(a, "version").toString().trimmed();
    if (item.shortVersion.isEmpty())
        item.shortVersion = extensionAttribute(a, "shortVersionString").toString().trimmed();
    os = extensionAttribute(a, "os").toString().trimmed().toLower();
}

} // namespace

std::optional<QList<AppcastItem>> parseAppcast(const QByteArray& feed) {
    QXmlStreamReader xml(feed);
    QList<AppcastItem> items;
    std::optional<AppcastItem> item;
    bool enclosed = false;
    QString os;
    bool sawRSS = false;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::DTD)
            return std::nullopt; // no entity declarations, no entity expansion
        if (token == QXmlStreamReader::StartElement) {
            const QStringView name = xml.name();
            if (name == u"rss" && xml.namespaceUri().isEmpty())
                sawRSS = true;
            else if (name == u"item") {
                item = AppcastItem{};
                enclosed = false;
                os.clear();
            } else if (item && name == u"enclosure" && xml.namespaceUri().isEmpty()) {
                readEnclosure(xml.attributes(), *item, os);
                enclosed = true;
            } else if (item && xml.namespaceUri() == extensions && name == u"version")
                item->version = xml.readElementText().trimmed();
            else if (item && xml.namespaceUri() == extensions && name == u"shortVersionString")
                item->shortVersion = xml.readElementText().trimmed();
        } else if (token == QXmlStreamReader::EndElement && xml.name() == u"item" && item) {
            if (enclosed && !item->version.isEmpty() && (os.isEmpty() || os == u"linux"))
                items.append(*item);
            item.reset();
        }
    }
    if (xml.hasError() || !sawRSS)
        return std::nullopt;
    return items;
}

std::optional<AppcastItem> newestUpdate(const QList<AppcastItem>& items, const QString& current) {
    std::optional<AppcastItem> best;
    for (const AppcastItem& item : items)
        if (compareVersions(item.version, current) > 0 &&
            (!best || compareVersions(item.version, best->version) > 0))
            best = item;
    return best;
}

int compareVersions(const QString& a, const QString& b) {
    static const QRegularExpression separators(QStringLiteral("[.\\-_+ ]"));
    const QStringList left = a.split(separators, Qt::SkipEmptyParts);
    const QStringList right = b.split(separators, Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < std::max(left.size(), right.size()); ++i) {
        const QString l = left.value(i, QStringLiteral("0"));
        const QString r = right.value(i, QStringLiteral("0"));
        bool lNumber = false, rNumber = false;
        const qulonglong ln = l.toULongLong(&lNumber);
        const qulonglong rn = r.toULongLong(&rNumber);
        if (lNumber && rNumber) {
            if (ln != rn)
                return ln < rn ? -1 : 1;
        } else if (lNumber != rNumber) {
            return lNumber ? 1 : -1; // "1.0.1" is newer than "1.0.beta"
        } else if (const int c = l.compare(r); c != 0) {
            return c < 0 ? -1 : 1;
        }
    }
    return 0;
}

} // namespace MirlPlayer
