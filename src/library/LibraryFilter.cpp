#include "library/LibraryFilter.h"

namespace MirlPlayer {

namespace {

// One character, folded: decomposed as far as it goes, marks left out, case folded.
void appendFolded(QString& out, QChar c) {
    const char16_t u = c.unicode();
    if (u < 0x80) {
        out.append(u >= u'A' && u <= u'Z' ? QChar(u + 32) : c);
        return;
    }
    const QChar::Category category = c.category();
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining ||
        category == QChar::Mark_Enclosing)
        return;
    if (u == 0x00DF || u == 0x1E9E) { // ß and ẞ fold to "ss" only in full case folding
        out.append(QStringLiteral("ss"));
        return;
    }
    if (c.decompositionTag() != QChar::NoDecomposition && !c.isSurrogate()) {
        for (QChar part : c.decomposition())
            appendFolded(out, part);
        return;
    }
    out.append(c.toCaseFolded());
}

} // namespace

QString LibraryFilter::fold(const QString& text) {
    // Character by character: most names are plain ASCII and cost a lower-casing only.
    QString out;
    out.reserve(text.size());
    for (QChar c : text)
        appendFolded(out, c);
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
