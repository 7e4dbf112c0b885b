// Skin files over expat and the profile/INI selection of the skin.
#include <QtTest>

#include "style/CTavoStyleSheet.h"
#include "style/CTavoStyleSheetFile.h"
#include "style/TavoProfile.h"
#include "style/TavoSkinConfig.h"

class TestSkinFile : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString write(const QString& name, const QByteArray& content)
    {
        const QString path = m_dir.filePath(name);
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly))
            return QString();
        f.write(content);
        return path;
    }

private slots:
    void elementTypesByFirstLetters_data()
    {
        QTest::addColumn<QString>("element");
        QTest::addColumn<int>("type");
        QTest::newRow("Item") << "Item" << 1;
        QTest::newRow("Ivy") << "Ivy" << 1;
        QTest::newRow("Name") << "Name" << 2;
        QTest::newRow("Attributes") << "Attributes" << 3;
        QTest::newRow("Attr") << "Attr" << 3;
        QTest::newRow("Aux") << "Aux" << 5;
        QTest::newRow("A alone") << "A" << 5;
        QTest::newRow("Style") << "Style" << 4;
        QTest::newRow("Size") << "Size" << 4;
        QTest::newRow("root") << "Skin" << 4;
        QTest::newRow("lower case") << "item" << 0;
        QTest::newRow("other") << "Root" << 0;
    }
    void elementTypesByFirstLetters()
    {
        QFETCH(QString, element);
        QFETCH(int, type);
        QCOMPARE(CTavoStyleSheetFile::getElementType(element.toLatin1().constData()), type);
    }

    void itemsWithSimplifiedStyleAndRawAttributes()
    {
        const QString path = write("skin.xml",
            "<?xml version='1.0' encoding='UTF-8'?>\n<Root>\n"
            " <Item>\n  <Name>manager</Name>\n"
            "  <Attributes>design-x=800;design-y=480;max-x=800;max-y=480</Attributes>\n"
            "  <Style>\n    CTavoLayoutMgr {\n      size:   800x480;\n      background: rgb(0, 0, 0);\n    }\n  </Style>\n"
            "  <AuxStyle>  QLineEdit { font:\t10px; }  </AuxStyle>\n"
            " </Item>\n"
            " <Item><Name>x</Name><Attributes>a=1</Attributes><Style>A { c: 1; }</Style></Item>\n"
            " <Item><Name>x</Name><Attributes>a=2</Attributes><Size>B { c: 2; }</Size></Item>\n"
            " <Item><Style>Nameless { c: 3; }</Style></Item>\n"
            " <Item><Name>ignored</Name><Other>text goes nowhere</Other></Item>\n"
            "</Root>\n");
        CTavoStyleSheetFile file;
        QCOMPARE(file.parse(path), 0);
        QCOMPARE(file.items().size(), 4);
        QCOMPARE(file.getAttributes("manager"), QString("design-x=800;design-y=480;max-x=800;max-y=480"));
        QCOMPARE(file.getStyle("manager"), QString("CTavoLayoutMgr {size: 800x480;background: rgb(0, 0, 0);}"));
        QCOMPARE(file.getAuxStyle("manager"), QString("QLineEdit { font: 10px; }"));
        // Two items of one name: styles joined with a line break, the first attributes kept.
        QCOMPARE(file.getStyle("x"), QString("A { c: 1; }\nB { c: 2; }"));
        QCOMPARE(file.getAttributes("x"), QString("a=1"));
        QVERIFY(file.get(""));
        QCOMPARE(file.get("")->m_style, QString("Nameless { c: 3; }"));
        QCOMPARE(file.getStyle("ignored"), QString());
        QVERIFY(!file.get("missing"));
        QCOMPARE(file.getStyle("missing"), QString());

        // The manager item feeds a sheet as the manager does it.
        CTavoStyleSheet sheet;
        sheet.set(file.getStyle("manager").toLatin1().constData(), file.getAttributes("manager").toLatin1().constData());
        QVERIFY(sheet.get("CTavoLayoutMgr"));
        QCOMPARE(sheet.get("CTavoLayoutMgr")->Size("size"), QSize(800, 480));
    }

    void brokenXmlKeepsCompletedItems()
    {
        const QString path = write("broken.xml", "<R><Item><Name>a</Name><Style>A{}</Style></Item>"
                                                 "<Item><Name>b</Name><Style>B{</Style>");
        CTavoStyleSheetFile file;
        QCOMPARE(file.parse(path), -1);
        QVERIFY(file.get("a"));
        QVERIFY(!file.get("b"));
        QCOMPARE(file.parse(m_dir.filePath("none.xml")), -1);
        QVERIFY(file.get("a")); // a failed parse adds nothing and removes nothing
        QCOMPARE(file.parse(write("empty.xml", "")), -1);
    }

    void profileSuffixesAndSkinConfigPath()
    {
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir.path()));
        if (QFile::exists("/tmp/qt.conf") || QFile::exists("/usr/local/root/qt.conf"))
            QSKIP("a system qt.conf takes precedence on this machine");
        QFile::remove("qt.conf");
        QCOMPARE(tavoGetDefaultConfigFile(), QString());
        QCOMPARE(tavoGetActiveProfile(false), QString());
        QCOMPARE(tavoGetSkinConfigFile(), QString("Skins/.conf"));
        write("qt.conf", "[Profile]\nActive=demo_sfb\n");
        QCOMPARE(tavoGetActiveProfile(false), QString("demo"));
        QCOMPARE(tavoGetActiveProfile(true), QString("demo_sfb"));
        QCOMPARE(tavoGetSkinConfigFile(), QString("Skins/demo_sfb.conf"));
        write("qt.conf", "[Profile]\nActive=a_bsft_opensip\n");
        QCOMPARE(tavoGetActiveProfile(false), QString("a_bsft")); // only the first listed suffix found goes
        QFile::remove("qt.conf");
        QVERIFY(QDir::setCurrent(previous));

        QCOMPARE(tavoGetDefaultSkinFile("zedagui"), QString("Skins/default/default.xml"));
        QCOMPARE(tavoGetDefaultSkinFile("browser"), QString("Skins/default/default-browser.xml"));
    }

    void sampleSkinLoadsFromRunFolder()
    {
        const QString run = qEnvironmentVariable("TGUI_RUN_DIR", QStringLiteral(TGUI_SOURCE_DIR "/run"));
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(run));
        QSettings conf(tavoGetSkinConfigFile(), QSettings::IniFormat);
        const QString skin = conf.value("zedagui/SkinFile", tavoGetDefaultSkinFile("zedagui")).toString();
        CTavoStyleSheetFile file;
        const int result = file.parse(skin);
        CTavoStyleSheet sheet;
        if (CTavoStyleItem* manager = file.get("manager"))
            sheet.set(manager->m_style.toLatin1().constData(), manager->m_attributes.toLatin1().constData());
        QVERIFY(QDir::setCurrent(previous));
        CTavoWidgetStyle::resetScaling();
        QCOMPARE(result, 0);
        QCOMPARE(sheet.getAttribute("design-x"), QString("800"));
        QVERIFY(sheet.get("CTavoLayoutMgr"));
        QCOMPARE(sheet.get("CTavoLayoutMgr")->Size("size"), QSize(800, 480));
    }
};

QTEST_MAIN(TestSkinFile)
#include "tst_skinfile.moc"
