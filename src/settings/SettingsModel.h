#pragma once

#include "settings/SettingsCatalogue.h"

#include <QObject>
#include <QVariantList>

namespace MirlPlayer {

class Preferences;
class Theme;
class VizConfig;

// The settings window's state: the selected page, the search field and its results, the anchor
// a result leads to, and which collapsible sections are open. The pages bind to it; the stores
// behind the controls are the Theme, VizConfig and the settings each page names. GUI thread.
class SettingsModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(int selection READ selection WRITE setSelection NOTIFY selectionChanged)
    Q_PROPERTY(QVariantList pages READ pages CONSTANT)
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    Q_PROPERTY(bool searching READ searching NOTIFY searchChanged)
    Q_PROPERTY(QVariantList results READ results NOTIFY searchChanged)
    Q_PROPERTY(QString headerTitle READ headerTitle NOTIFY headerChanged)
    Q_PROPERTY(QString headerSubtitle READ headerSubtitle NOTIFY headerChanged)
    Q_PROPERTY(QString searchTarget READ searchTarget NOTIFY searchTargetChanged)
    Q_PROPERTY(bool fineTuning MEMBER m_fineTuning NOTIFY sectionsChanged)
    Q_PROPERTY(bool reflectionTuning MEMBER m_reflectionTuning NOTIFY sectionsChanged)
    Q_PROPERTY(bool libraryReflectionTuning MEMBER m_libraryReflectionTuning NOTIFY sectionsChanged)
    Q_PROPERTY(
        bool matchLoudness READ matchLoudness WRITE setMatchLoudness NOTIFY matchLoudnessChanged)
    Q_PROPERTY(QVariantList vizStyles READ vizStyles CONSTANT)
    Q_PROPERTY(QVariantList vizControls READ vizControls NOTIFY vizControlsChanged)
public:
    SettingsModel(Theme& theme, VizConfig& viz, Preferences& prefs, QObject* parent = nullptr);

    int selection() const { return int(m_selection); }
    void setSelection(int page);
    QVariantList pages() const;
    QString search() const { return m_search; }
    void setSearch(const QString& text);
    bool searching() const { return !m_search.trimmed().isEmpty(); }
    QVariantList results() const;
    QList<SettingsSearchResult> resultRows() const;
    QString headerTitle() const;
    QString headerSubtitle() const;
    QString searchTarget() const { return m_searchTarget; }
    bool fineTuning() const { return m_fineTuning; }
    bool reflectionTuning() const { return m_reflectionTuning; }
    bool libraryReflectionTuning() const { return m_libraryReflectionTuning; }
    // "Balance quiet and loud songs", read by the analysis as the preference changes.
    bool matchLoudness() const;
    void setMatchLoudness(bool on);
    // The styles by id and title, in picker order.
    QVariantList vizStyles() const;
    // The current style's sliders: key, label, min, max and section ("adjustments"/"response").
    QVariantList vizControls() const;

    // The jump to a result: the sections it needs open and no others, its page, its anchor.
    Q_INVOKABLE void openResult(int index);
    void openResult(const SettingsSearchResult& row);
    // `mirl.openSettings`: a page title selects that page and clears the search; anything else
    // is ignored.
    Q_INVOKABLE void openPage(const QString& title);
    // The text beside a slider.
    Q_INVOKABLE QString formatValue(const QString& key, double value) const;
    // The sliders of the reflection sections: the glass or edge light, in the library or not.
    Q_INVOKABLE QVariantList reflectionControls(bool library) const;
    // A slider moved (`held` while it is dragged): the value goes straight into VizConfig.
    Q_INVOKABLE void setTuning(const QString& key, double value, bool held);
    Q_INVOKABLE void resetTuning(const QStringList& keys);
    Q_INVOKABLE void showSetupAssistant() { Q_EMIT setupAssistantRequested(); }
    // "Report a Problem…" (false) or "Share an Idea…" (true).
    Q_INVOKABLE void composeFeedback(bool idea) { Q_EMIT feedbackRequested(idea); }

Q_SIGNALS:
    void selectionChanged();
    void searchChanged();
    void headerChanged();
    void searchTargetChanged();
    void sectionsChanged();
    void vizControlsChanged();
    void matchLoudnessChanged();
    // Scroll the page so that the anchor sits 14% from the top ("settingsTop": to the top).
    void scrollRequested(const QString& anchor);
    void setupAssistantRequested();
    void feedbackRequested(bool idea);

private:
    void setSearchTarget(const QString& target);
    void openSectionsFor(const QString& target, bool closeOthers);

    Theme& m_theme;
    VizConfig& m_viz;
    Preferences& m_prefs;
    SettingsPage m_selection = SettingsPage::appearance;
    QString m_search;
    QString m_searchTarget;
    bool m_fineTuning = false;
    bool m_reflectionTuning = false;
    bool m_libraryReflectionTuning = false;
};

} // namespace MirlPlayer
