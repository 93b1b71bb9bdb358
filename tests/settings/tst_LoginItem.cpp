#include "settings/LoginItem.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_LoginItem : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writesAndRemovesTheAutostartEntry();
};

void tst_LoginItem::writesAndRemovesTheAutostartEntry() {
    QTemporaryDir dir;
    // A folder that does not exist yet, and a program path that needs quoting.
    LoginItem item(dir.filePath(QStringLiteral("autostart")),
                   QStringLiteral("/opt/My \"Apps\"/mirl"));
    QVERIFY(!item.enabled());

    QVERIFY(item.setEnabled(true));
    QVERIFY(item.enabled());
    QFile file(item.entryPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    QVERIFY(text.startsWith(QStringLiteral("[Desktop Entry]\n")));
    QVERIFY(text.contains(QStringLiteral("Exec=\"/opt/My \\\"Apps\\\"/mirl\"\n")));

    QVERIFY(item.setEnabled(false));
    QVERIFY(!item.enabled());
    QVERIFY(!QFile::exists(item.entryPath()));
}

QTEST_GUILESS_MAIN(tst_LoginItem)
#include "tst_LoginItem.moc"
