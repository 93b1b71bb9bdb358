#include "app/PropertyList.h"

#include <QDateTime>
#include <QXmlStreamReader>

namespace MirlPlayer {

namespace {

constexpr int maxDepth = 64; // a hostile file cannot exhaust the stack

std::optional<QVariant> readValue(QXmlStreamReader& xml, int depth);

std::optional<QVariant> readDict(QXmlStreamReader& xml, int depth) {
    QVariantMap map;
    while (xml.readNextStartElement()) {
        if (xml.name() != u"key")
            return std::nullopt;
        const QString key = xml.readElementText();
        if (xml.hasError() || !xml.readNextStartElement())
            return std::nullopt;
        auto value = readValue(xml, depth + 1);
        if (!value)
            return std::nullopt;
        map.insert(key, *value);
    }
    return xml.hasError() ? std::nullopt : std::optional<QVariant>(map);
}

std::optional<QVariant> readArray(QXmlStreamReader& xml, int depth) {
    QVariantList list;
    while (xml.readNextStartElement()) {
        auto value = readValue(xml, depth + 1);
        if (!value)
            return std::nullopt;
        list.append(*value);
    }
    return xml.hasError() ? std::nullopt : std::optional<QVariant>(list);
}

// Called with the reader on a start element; leaves it on that element's end.
std::optional<QVariant> readValue(QXmlStreamReader& xml, int depth) {
    if (depth > maxDepth)
        return std::nullopt;
    const auto name = xml.name();
    if (name == u"dict")
        return readDict(xml, depth);
    if (name == u"array")
        return readArray(xml, depth);
    if (name == u"true" || name == u"false") {
        const bool value = name == u"true";
        xml.skipCurrentElement();
        return QVariant(value);
    }
    const QString text = xml.readElementText();
    if (xml.hasError())
        return std::nullopt;
    bool ok = false;
    if (name == u"string")
        return QVariant(text);
    if (name == u"integer") {
        const qlonglong v = text.trimmed().toLongLong(&ok);
        return ok ? std::optional<QVariant>(v) : std::nullopt;
    }
    if (name == u"real") {
        const double v = text.trimmed().toDouble(&ok);
        return ok ? std::optional<QVariant>(v) : std::nullopt;
    }
    if (name == u"data")
        return QVariant(QByteArray::fromBase64(text.toLatin1()));
    if (name == u"date") {
        const QDateTime v = QDateTime::fromString(text.trimmed(), Qt::ISODate);
        return v.isValid() ? std::optional<QVariant>(v) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<QVariant> parsePropertyList(const QByteArray& data) {
    QXmlStreamReader xml(data);
    if (!xml.readNextStartElement() || xml.name() != u"plist")
        return std::nullopt;
    if (!xml.readNextStartElement())
        return std::nullopt;
    auto value = readValue(xml, 0);
    if (!value || xml.hasError())
        return std::nullopt;
    return value;
}

} // namespace MirlPlayer
