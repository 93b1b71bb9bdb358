#include "core/Clock.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "settings/SettingsCatalogue.h"
#include "settings/SettingsModel.h"
#include "visualizers/VizConfig.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

namespace {

// A settings model over a fresh preferences file.
struct ModelWorld {
    QTemporaryDir home;
    Preferences prefs{home.filePath(QStringLiteral("p.conf"))};
    ManualClock clock;
    Theme theme{prefs, clock};
    VizConfig viz{prefs, clock};
    SettingsModel model{theme, viz, prefs};
};

} // namespace

class tst_SettingsSearch : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void search_data();
    void search();
    void openResultGoesToTheAnchor();
    void openPageIgnoresUnknownNames();
};

void tst_SettingsSearch::search_data() {
    QTest::addColumn<QString>("vizID");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QStringList>("titles");
    const QString bars = QStringLiteral("bars");
    QTest::newRow("keyword") << bars << "transparency"
                             << QStringList{"Player background", "Glass tint"};
    QTest::newRow("two words") << bars << "blade runner" << QStringList{"Control style"};
    QTest::newRow("a material not offered here")
        << bars << "liquid" << QStringList{"Player background"};
    QTest::newRow("sign in") << bars << "sign in" << QStringList{"Spotify account"};
    QTest::newRow("across pages, in order") << bars << "glass blur" << QStringList{"Glass tint"};
    QTest::newRow("case and accents") << bars << "  GLÀSS   BLUR " << QStringList{"Glass tint"};
    QTest::newRow("blanks") << bars << " \n " << QStringList{};
    QTest::newRow("bars' control") << bars << "width" << QStringList{"Bar width"};
    QTest::newRow("analyzer's control")
        << QStringLiteral("stereoAnalyzer") << "width" << QStringList{"Width"};
    QTest::newRow("unknown style uses the first's")
        << QStringLiteral("nonsense") << "depth visualizer eq" << QStringList{"Depth"};
    QTest::newRow("stereo styles have no sensitivity")
        << QStringLiteral("stereo") << "sensitivity" << QStringList{};
    QTest::newRow("style list") << bars << "silk" << QStringList{"Silk"};
}

void tst_SettingsSearch::search() {
    QFETCH(QString, vizID);
    QFETCH(QString, query);
    QFETCH(QStringList, titles);
    QStringList found;
    for (const SettingsSearchResult& row :
         SettingsCatalogue::search(SettingsCatalogue::build(vizID), query))
        found.append(row.title);
    QCOMPARE(found, titles);
}

void tst_SettingsSearch::openResultGoesToTheAnchor() {
    ModelWorld world;
    SettingsModel& model = world.model;
    model.setProperty("reflectionTuning", true);
    model.setSearch(QStringLiteral("smoothing"));
    QVERIFY(model.searching());
    QSignalSpy scrolls(&model, &SettingsModel::scrollRequested);

    model.openResult(0);
    QCOMPARE(model.selection(), int(SettingsPage::visualizer));
    QVERIFY(model.fineTuning());
    QVERIFY(!model.reflectionTuning()); // the jump closes what it does not need
    QCOMPARE(model.searchTarget(), QStringLiteral("response"));
    QVERIFY(model.search().isEmpty());
    QVERIFY(scrolls.wait(1000));
    QCOMPARE(scrolls.last().first().toString(), QStringLiteral("response"));
}

void tst_SettingsSearch::openPageIgnoresUnknownNames() {
    ModelWorld world;
    SettingsModel& model = world.model;
    model.openPage(QStringLiteral("Spotify"));
    QCOMPARE(model.selection(), int(SettingsPage::spotify));
    model.openPage(QStringLiteral("Nowhere"));
    QCOMPARE(model.selection(), int(SettingsPage::spotify));
}

QTEST_MAIN(tst_SettingsSearch)
#include "tst_SettingsSearch.moc"
