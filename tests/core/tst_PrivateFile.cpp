#include "core/PrivateFile.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

class tst_PrivateFile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void writesOwnerOnlyFileInOwnerOnlyFolder() {
        QTemporaryDir dir;
        const QString path = dir.filePath("a/b/secret.json");
        QVERIFY(writePrivateFile(path, "{\"token\":1}"));
        const auto filePerms = QFileInfo(path).permissions();
        QCOMPARE(filePerms & (QFileDevice::ReadGroup | QFileDevice::ReadOther |
                              QFileDevice::WriteGroup | QFileDevice::WriteOther),
                 QFileDevice::Permissions());
        QVERIFY(filePerms & QFileDevice::ReadOwner);
        // Every folder made on the way is the user's alone, not only the last.
        const auto ownerOnly =
            QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
        const auto modeBits = QFileDevice::Permissions(0x7077); // without the "User" repeat
        for (const char* folder : {"a", "a/b"})
            QCOMPARE(QFileInfo(dir.filePath(folder)).permissions() & modeBits, ownerOnly);
        QCOMPARE(readFile(path).value(), QByteArray("{\"token\":1}"));
        // Rewriting replaces the whole content.
        QVERIFY(writePrivateFile(path, "x"));
        QCOMPARE(readFile(path).value(), QByteArray("x"));
    }

    void unwritableFolderFailsQuietly() {
        QVERIFY(!writePrivateFile("/proc/mirl-no/such.json", "x"));
        QVERIFY(!readFile("/nonexistent/file").has_value());
    }
};

QTEST_GUILESS_MAIN(tst_PrivateFile)
#include "tst_PrivateFile.moc"
