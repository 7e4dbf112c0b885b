// Skin files over expat and the profile/INI selection of the skin.
#include <QtTest>

#include "style/CTavoStyleSheet.h"
#include "style/CTavoStyleSheetFile.h"
#include "style/TavoProfile.h"
#include "style/TavoSkinConfig.h"
#include "StyleTestFiles.h"

class TestSkinFile : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString write(const QString& name, const QByteArray& content)
    {
        return writeFile(m_dir.filePath(name), content) ? m_dir.filePath(name) : QString();
    }

private slots:
    void elementTypesByFirstLetters()
    {
        // Only the first letters count: "Size" is a style, "Attr" attributes, "Aux" and "A" auxiliary.
        const QList<QPair<const char*, int>> rows = {{"Item", 1}, {"Ivy", 1}, {"Name", 2}, {"Attributes", 3},
            {"Attr", 3}, {"Aux", 5}, {"A", 5}, {"Style", 4}, {"Size", 4}, {"item", 0}, {"Root", 0}, {"", 0}};
        for (const auto& row : rows)
            QVERIFY2(CTavoStyleSheetFile::getElementType(row.first) == row.second, row.first);
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
        if (QFile::exists("/tmp/qt.conf") || QFile::exists("/usr/local/root/qt.conf"))
            QSKIP("a system qt.conf takes precedence on this machine");
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_dir.path()));
        QFile::remove("qt.conf");
        QCOMPARE(tavoGetDefaultConfigFile(), QString());
        QCOMPARE(tavoGetActiveProfile(true), QString());
        QCOMPARE(tavoGetSkinConfigFile(), QString()); // no profile file: no path
        write("qt.conf", "[Other]\nActive=x\n");
        QCOMPARE(tavoGetSkinConfigFile(), QString("Skins/.conf"));
        // Without keepSuffix only the first of "_sfb", "_opensip", "_bsft" found goes.
        const QList<QPair<QString, QString>> rows = {{"demo_sfb", "demo"}, {"x_opensip", "x"}, {"y_bsft", "y"},
            {"a_bsft_sfb", "a_bsft"}, {"a_bsft_opensip", "a_bsft"}, {"plain", "plain"}};
        for (const auto& row : rows) {
            write("qt.conf", "[Profile]\nActive=" + row.first.toUtf8() + "\n");
            QCOMPARE(tavoGetDefaultConfigFile(), QString("qt.conf"));
            QCOMPARE(tavoGetActiveProfile(false), row.second);
            QCOMPARE(tavoGetActiveProfile(true), row.first);
            QCOMPARE(tavoGetSkinConfigFile(), "Skins/" + row.first + ".conf");
        }
        QFile::remove("qt.conf");
        QVERIFY(QDir::setCurrent(previous));

        QCOMPARE(tavoGetDefaultSkinFile("zedagui"), QString("Skins/default/default.xml"));
        QCOMPARE(tavoGetDefaultSkinFile("browser"), QString("Skins/default/default-browser.xml"));
    }

};

QTEST_MAIN(TestSkinFile)
#include "tst_skinfile.moc"
