#pragma once

#include <QByteArray>
#include <QVariant>
#include <optional>

namespace MirlPlayer {

// Reads an XML property list: dict → QVariantMap, array → QVariantList, string, integer, real,
// true/false, data (base64) and date. Nothing for a malformed document.
std::optional<QVariant> parsePropertyList(const QByteArray& xml);

} // namespace MirlPlayer
