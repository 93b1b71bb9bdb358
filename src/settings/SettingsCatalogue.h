#pragma once

#include "settings/SettingsPage.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace MirlPlayer {

struct VizControl;

// One place a search can take the user: a setting's title, its page, the anchor inside the page
// and the words people use for it.
struct SettingsSearchResult {
    QString title;
    SettingsPage page = SettingsPage::appearance;
    QString target;
    QString keywords;

    bool operator==(const SettingsSearchResult&) const = default;
};

namespace SettingsCatalogue {

// The written rows, then the controls of the visualizer style `vizID` (an unknown id uses the
// first style's), every style and every control style; a row whose page and title were seen
// before is dropped.
QList<SettingsSearchResult> build(const QString& vizID);
// The sliders of the style `vizID` in the order Settings shows them: its own ("Shape & detail"),
// then "Sensitivity" (not for the stereo styles) and "Smoothing" ("Movement").
QList<VizControl> styleControls(const QString& vizID);
bool isResponseControl(const QString& key);
// Case and accents removed, as queries and haystacks are compared.
QString fold(const QString& text);
// The query's words, folded; none for a query of blanks.
QStringList tokens(const QString& query);
// Every token occurs somewhere in the row's title, page title or keywords.
bool matches(const SettingsSearchResult& row, const QStringList& tokens);
// The matching rows in catalogue order.
QList<SettingsSearchResult> search(const QList<SettingsSearchResult>& catalogue,
                                   const QString& query);

} // namespace SettingsCatalogue

} // namespace MirlPlayer
