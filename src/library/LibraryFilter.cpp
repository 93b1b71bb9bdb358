#include "library/LibraryFilter.h"

namespace MirlPlayer {

namespace {

bool isPlainASCII(const QString& text) {
    for (QChar c : text)
        if (c.unicode() >= 0x80)
            return false;
    return true;
}

} // namespace

QString LibraryFilter::fold(const QString& text) {
    // Most names are plain ASCII; they need no decomposition.
    if (isPlainASCII(text))
        return text.toLower();
    const QString decomposed = text.toCaseFolded().normalized(QString::NormalizationForm_KD);
    QString out;
    out.reserve(decomposed.size());
    for (QChar c : decomposed) {
        const QChar::Category category = c.category();
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
            category == QChar::Mark_Enclosing)
            continue;
        out.append(c);
    }
    // Case folding turns "ß" into "ss" only through the full folding; do it by hand.
    out.replace(QChar(0x00DF), QStringLiteral("ss"));
    return out;
}

QList<int> LibraryFilter::matching(const QList<SpotifyItem>& items, const QString& text) {
    if (items.constData() != m_list.constData() || items.size() != m_list.size()) {
        m_list = items;
        m_keys.clear();
        m_keys.reserve(items.size());
        for (const SpotifyItem& item : items)
            m_keys.append(fold(item.name));
    }
    const QString needle = fold(text);
    QList<int> out;
    for (qsizetype i = 0; i < m_keys.size(); ++i)
        if (m_keys.at(i).contains(needle))
            out.append(int(i));
    return out;
}

} // namespace MirlPlayer
