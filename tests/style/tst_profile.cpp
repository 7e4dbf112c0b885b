// Profile selection from qt.conf in the working directory.
#include <QtTest>

#include "style/TavoProfile.h"

class TestProfile : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_oldCwd;

    void writeProfile(const QString& active)
    {
        QFile f(m_dir.filePath("qt.conf"));
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write("[Profile]\nActive=" + active.toUtf8() + "\n");
    }

private slots:
    void initTestCase()
    {
        QVERIFY(!QFile::exists("/tmp/qt.conf"));
        QVERIFY(!QFile::exists("/usr/local/root/qt.conf"));
        m_oldCwd = QDir::currentPath();
        QDir::setCurrent(m_dir.path());
    }
    void cleanupTestCase() { QDir::setCurrent(m_oldCwd); }

    void noConfigFileGivesEmptyProfile()
    {
        QFile::remove(m_dir.filePath("qt.conf"));
        QCOMPARE(tavoGetDefaultConfigFile(), QString());
        QCOMPARE(tavoGetActiveProfile(true), QString());
    }

    void suffixesAreRemovedOnlyOnRequest_data()
    {
        QTest::addColumn<QString>("active");
        QTest::addColumn<QString>("cut");
        QTest::newRow("sfb") << "demo_sfb" << "demo";
        QTest::newRow("opensip") << "x_opensip" << "x";
        QTest::newRow("bsft") << "y_bsft" << "y";
        QTest::newRow("first listed wins") << "a_bsft_sfb" << "a_bsft";
        QTest::newRow("none") << "plain" << "plain";
    }
    void suffixesAreRemovedOnlyOnRequest()
    {
        QFETCH(QString, active);
        QFETCH(QString, cut);
        writeProfile(active);
        QCOMPARE(tavoGetDefaultConfigFile(), QString("qt.conf"));
        QCOMPARE(tavoGetActiveProfile(false), cut);
        QCOMPARE(tavoGetActiveProfile(true), active);
    }
};

QTEST_GUILESS_MAIN(TestProfile)
#include "tst_profile.moc"
