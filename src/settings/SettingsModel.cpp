#include "settings/SettingsModel.h"

#include "core/Preferences.h"
#include "look/Theme.h"
#include "visualizers/VizConfig.h"

#include <QTimer>
#include <QVariantMap>

namespace MirlPlayer {

namespace {
const QString matchLoudnessKey = QStringLiteral("matchLoudness");
}

SettingsModel::SettingsModel(Theme& theme, VizConfig& viz, Preferences& prefs, QObject* parent)
    : QObject(parent)
    , m_theme(theme)
    , m_viz(viz)
    , m_prefs(prefs) {
    connect(&prefs, &Preferences::changed, this, [this](const QString& key) {
        if (key == matchLoudnessKey)
            Q_EMIT matchLoudnessChanged();
    });
    connect(&theme, &Theme::vizIDChanged, this, &SettingsModel::vizControlsChanged);
    // The catalogue follows the current style, so an open search is answered again.
    connect(&theme, &Theme::vizIDChanged, this, [this] {
        if (searching())
            Q_EMIT searchChanged();
    });
}

void SettingsModel::setSelection(int page) {
    if (page < 0 || page >= SettingsPages::all().size() || page == int(m_selection))
        return;
    m_selection = SettingsPage(page);
    Q_EMIT selectionChanged();
    Q_EMIT headerChanged();
    if (m_searchTarget.isEmpty())
        Q_EMIT scrollRequested(QStringLiteral("settingsTop"));
}

QVariantList SettingsModel::pages() const {
    QVariantList rows;
    for (SettingsPage p : SettingsPages::all())
        rows.append(QVariantMap{{QStringLiteral("title"), SettingsPages::title(p)},
                                {QStringLiteral("subtitle"), SettingsPages::subtitle(p)},
                                {QStringLiteral("symbol"), SettingsPages::symbol(p)}});
    return rows;
}

void SettingsModel::setSearch(const QString& text) {
    if (text == m_search)
        return;
    const bool wasSearching = searching();
    m_search = text;
    Q_EMIT searchChanged();
    if (wasSearching != searching())
        Q_EMIT headerChanged();
    // Posted, so that the page exists and its sections have opened before the scroll looks for
    // the anchor.
    if (m_search.isEmpty() && !m_searchTarget.isEmpty())
        QTimer::singleShot(0, this, [this] {
            if (!m_searchTarget.isEmpty())
                Q_EMIT scrollRequested(m_searchTarget);
        });
}

QList<SettingsSearchResult> SettingsModel::resultRows() const {
    return SettingsCatalogue::search(SettingsCatalogue::build(m_theme.vizID()), m_search);
}

QVariantList SettingsModel::results() const {
    QVariantList rows;
    for (const SettingsSearchResult& r : resultRows())
        rows.append(QVariantMap{{QStringLiteral("title"), r.title},
                                {QStringLiteral("pageTitle"), SettingsPages::title(r.page)}});
    return rows;
}

QString SettingsModel::headerTitle() const {
    return searching() ? QStringLiteral("Search") : SettingsPages::title(m_selection);
}

QString SettingsModel::headerSubtitle() const {
    return searching() ? QStringLiteral("Find a setting by name or what it does.")
                       : SettingsPages::subtitle(m_selection);
}

void SettingsModel::openSectionsFor(const QString& target, bool closeOthers) {
    const bool fine = target == u"adjustments" || target == u"response";
    const bool reflection = target == u"reflection";
    const bool library = target == u"libraryReflection";
    const bool before[] = {m_fineTuning, m_reflectionTuning, m_libraryReflectionTuning};
    m_fineTuning = fine || (!closeOthers && m_fineTuning);
    m_reflectionTuning = reflection || (!closeOthers && m_reflectionTuning);
    m_libraryReflectionTuning = library || (!closeOthers && m_libraryReflectionTuning);
    if (before[0] != m_fineTuning || before[1] != m_reflectionTuning ||
        before[2] != m_libraryReflectionTuning)
        Q_EMIT sectionsChanged();
}

void SettingsModel::setSearchTarget(const QString& target) {
    if (target == m_searchTarget)
        return;
    m_searchTarget = target;
    // A target set by any route opens the section it lies in.
    openSectionsFor(target, false);
    Q_EMIT searchTargetChanged();
}

void SettingsModel::openResult(int index) {
    const QList<SettingsSearchResult> rows = resultRows();
    if (index >= 0 && index < rows.size())
        openResult(rows.at(index));
}

void SettingsModel::openResult(const SettingsSearchResult& row) {
    openSectionsFor(row.target, true);
    setSelection(int(row.page));
    setSearchTarget(row.target);
    if (m_search.isEmpty()) // already clear: the scroll still has to happen
        QTimer::singleShot(0, this, [this] { Q_EMIT scrollRequested(m_searchTarget); });
    setSearch(QString());
}

void SettingsModel::openPage(const QString& title) {
    const std::optional<SettingsPage> page = SettingsPages::fromTitle(title);
    if (!page)
        return;
    setSearchTarget(QString());
    setSearch(QString());
    setSelection(int(*page));
}

QString SettingsModel::formatValue(const QString& key, double value) const {
    const std::optional<VizControl> control = VizConfig::control(key);
    return control ? VizConfig::format(*control, value) : QString();
}

bool SettingsModel::matchLoudness() const {
    return m_prefs.boolValue(matchLoudnessKey, true);
}

void SettingsModel::setMatchLoudness(bool on) {
    if (on != matchLoudness())
        m_prefs.setValue(matchLoudnessKey, on);
}

void SettingsModel::setTuning(const QString& key, double value, bool held) {
    m_viz.beginEditing(held, key);
    m_viz.set(key, value);
}

void SettingsModel::resetTuning(const QStringList& keys) {
    m_viz.reset(keys);
}

namespace {

QVariantMap controlRow(const VizControl& c, const QString& section) {
    return {{QStringLiteral("key"), c.key},       {QStringLiteral("label"), c.label},
            {QStringLiteral("min"), c.min},       {QStringLiteral("max"), c.max},
            {QStringLiteral("section"), section}, {QStringLiteral("help"), VizConfig::helpText(c)}};
}

} // namespace

QVariantList SettingsModel::vizStyles() const {
    QVariantList rows;
    for (VizStyle s : VizStyles::all())
        rows.append(QVariantMap{{QStringLiteral("id"), VizStyles::id(s)},
                                {QStringLiteral("title"), VizStyles::title(s)}});
    return rows;
}

QVariantList SettingsModel::vizControls() const {
    QVariantList rows;
    for (const VizControl& c : SettingsCatalogue::styleControls(m_theme.vizID()))
        rows.append(controlRow(c, SettingsCatalogue::isResponseControl(c.key)
                                      ? QStringLiteral("response")
                                      : QStringLiteral("adjustments")));
    return rows;
}

QVariantList SettingsModel::reflectionControls(bool library) const {
    const QString prefix =
        m_theme.showVisualizer() ? QStringLiteral("reflect") : QStringLiteral("edge");
    QVariantList rows;
    for (const VizControl& c : VizConfig::allControls()) {
        if (c.key.startsWith(prefix) && c.key.contains(u"Library") == library)
            rows.append(controlRow(c, QStringLiteral("reflection")));
    }
    return rows;
}

} // namespace MirlPlayer
