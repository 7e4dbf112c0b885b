// Icons by number and name: the name table, directories by base profile and
// family, lazy raster and vector loading, inversion and the shared placeholder.
#include <QtTest>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include "style/CIconResource.h"
#include "style/CTavoIconDefinition.h"
#include "style/CTavoIconRepository.h"
#include "StyleTestFiles.h"

static const QByteArray kSquareSvg = svgOf(20, 10, "#ff0000");
static const QByteArray kInvertedSvg = svgOf(20, 10, "#0000ff");

class TestIconRepository : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_oldCwd;
    QByteArray m_profileFile;
    const char* m_oldProfileFile = nullptr;

    void setBaseProfile(const QByteArray* content)
    {
        QFile::remove(QString::fromLocal8Bit(m_profileFile));
        if (content)
            QVERIFY(writeFile(QString::fromLocal8Bit(m_profileFile), *content));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_oldCwd = QDir::currentPath();
        QDir::setCurrent(m_dir.path());
        // Never touch the device's own file from a test.
        m_profileFile = m_dir.filePath("device.baseProfile").toLocal8Bit();
        m_oldProfileFile = CTavoIconRepository::s_baseProfileFile;
        CTavoIconRepository::s_baseProfileFile = m_profileFile.constData();
    }
    void cleanupTestCase()
    {
        CTavoIconRepository::s_baseProfileFile = m_oldProfileFile;
        iconRepository.clear();
        QDir::setCurrent(m_oldCwd);
    }

    void rowsOfOneNameShareOneResourceAndOutOfRangeTheEmptyOne()
    {
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        // "Applications" stands in rows 9 and 55, "CallOnHold" in 32 and 89.
        QCOMPARE(&repo[9], &repo[55]);
        QCOMPARE(&repo[32], &repo[89]);
        QCOMPARE(&repo[QString("Applications")], &repo[9]);
        CIconResource& below = repo[-1];
        QCOMPARE(&below, &repo[522]);
        QVERIFY(below.getType() == 0 && below.fileName().isEmpty() && repo.getFileName(522).isEmpty());
        QCOMPARE(repo.getFileName(5), repo.iconPath() + "Messages");
        for (int number : {0, 522, -3})
            QVERIFY(!getIconPixmap(number));
    }

    // --- directories -------------------------------------------------------------
    void directoryFollowsTheBaseProfile()
    {
        // Profile file content ("-" for no file), greyscale, one bit, directory.
        const struct { const char* profile; bool greyscale, oneBit; const char* expected; } rows[] = {
            {"-", false, false, "Skins/common/icons/"}, {"", false, false, "Skins/common/icons/"},
            {"x", false, false, "Skins/common/icons/"}, {"2", false, false, "Skins/common_sfb/icons/"},
            {"2\nfoo\n", false, false, "Skins/common_sfb/icons/"}, {"3", false, false, "Skins/common_bsft/icons/"},
            {"0", false, false, "Skins/common_opensip/icons/"}, {"7", false, false, "Skins/common/icons/"},
            {"-", true, false, "Skins/common/greyscale_icons/"}, {"2", true, false, "Skins/common_sfb/greyscale_icons/"},
            {"3", true, true, "Skins/common_bsft/greyscale_icons/"}, {"0", true, false, "Skins/common/greyscale_icons/"},
            {"2", false, true, "Skins/common/OneBit_icons/"}};
        for (const auto& row : rows) {
            const QByteArray content(row.profile);
            setBaseProfile(content == "-" ? nullptr : &content);
            CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, row.greyscale, row.oneBit);
            QVERIFY2(repo.iconPath() == row.expected, row.expected);
        }
        setBaseProfile(nullptr);
    }

    void familySwitchesAndExplicitPaths()
    {
        setBaseProfile(nullptr);
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        repo.useZenithIcons();
        QVERIFY(repo.zenithIconsUsed());
        QCOMPARE(repo.iconPath(), QString("Skins/common_zenith/icons/"));
        const QList<QPair<int, QString>> custom = {{2, "Skins/common_sfb/icons/"}, {3, "Skins/common_bsft/icons/"},
            {0, "Skins/common_opensip/icons/"}, {9, "Skins/common_zenith/icons/"}};
        for (const auto& row : custom) {
            repo.setCustomIconsPath(row.first);
            QCOMPARE(repo.iconPath(), row.second);
        }
        repo.useOneBitIcons();
        QCOMPARE(repo.iconPath(), QString("Skins/common/OneBit_icons/"));
        repo.useGreyscaleIcons();
        QCOMPARE(repo.iconPath(), QString("Skins/common/greyscale_icons/"));
        repo.setIconPath(QString());
        QCOMPARE(repo.iconPath(), QString("Skins/common/icons/"));

        // A profile of 0 wins over the zenith switch when the path is determined.
        const QByteArray zero("0");
        setBaseProfile(&zero);
        CTavoIconRepository os("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        os.useZenithIcons();
        QCOMPARE(os.iconPath(), QString("Skins/common_opensip/icons/"));
        setBaseProfile(nullptr);
    }

    // --- resources -----------------------------------------------------------------
    void bareNamesPreferTheVectorAndExtensionsAreTrusted()
    {
        QVERIFY(writeFile("res/a.svg", kSquareSvg));
        QVERIFY(writePicture("res/a.png", Qt::green));
        QVERIFY(writePicture("res/r.png", Qt::green));
        // An explicit extension is not looked up on disk at all.
        const struct { const char* path; int type; const char* file; } rows[] = {{"res/a", 3, "res/a.svg"},
            {"res/r", 1, "res/r.png"}, {"res/missing", 0, "res/missing"}, {"res/b.png", 1, "res/b.png"},
            {"res/c.svg", 3, "res/c.svg"}};
        for (const auto& row : rows) {
            const CIconResource resource(row.path);
            QVERIFY2(resource.getType() == row.type && resource.fileName() == row.file, row.path);
        }
    }

    void missingRastersShareThePlaceholder()
    {
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        repo.setIconPath("nowhere/");
        bool first = false, second = false, again = false;
        QPixmap* one = repo[QString("b.png")].getImage(&first, false);
        QVERIFY(first && one && !one->isNull());
        QCOMPARE(repo[QString("other.png")].getImage(&second, false), one);
        QVERIFY(second);
        QCOMPARE(one, CIconResource::placeholderPixmap());
        // Cached: asking again does not touch the flag.
        QCOMPARE(repo[QString("b.png")].getImage(&again, false), one);
        QVERIFY(!again);
        repo.clear();
        QVERIFY(repo.resources().isEmpty());
        QVERIFY(!CIconResource::placeholderPixmap()->isNull());
    }

    void rastersLoadOnceAndInvertWhereTheSkinHasIt()
    {
        QVERIFY(writePicture("icons/Messages.png", QColor(255, 0, 0)));
        QVERIFY(writePicture("icons/Messages_Inv.png", QColor(0, 0, 255)));
        QVERIFY(writePicture("icons/Contacts.png", QColor(0, 255, 0)));
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        repo.setIconPath("icons/");
        CIconResource& messages = repo[5];
        QCOMPARE(messages.getType(), 1);
        bool placeholder = false;
        QPixmap* plain = messages.getImage(&placeholder, false);
        QPixmap* inverted = messages.getImage(&placeholder, true);
        QVERIFY(!placeholder && plain != inverted);
        QCOMPARE(plain->toImage().pixelColor(1, 1), QColor(255, 0, 0));
        QCOMPARE(inverted->toImage().pixelColor(1, 1), QColor(0, 0, 255));
        QCOMPARE(messages.getImage(nullptr, false), plain);

        QString name;
        QVERIFY(messages.getInvertedFilename(name));
        QCOMPARE(name, QString("icons/Messages_Inv.png"));

        // Without an "_Inv" file the plain picture serves inverted, cached in the inverted slot.
        CIconResource& contacts = repo[28];
        QVERIFY(!contacts.getInvertedFilename(name));
        QCOMPARE(name, QString("icons/Contacts.png"));
        QPixmap* fallback = contacts.getImage(&placeholder, true);
        QVERIFY(!placeholder);
        QCOMPARE(fallback->toImage().pixelColor(1, 1), QColor(0, 255, 0));
        QCOMPARE(contacts.getImage(nullptr, true), fallback);
    }

    void loadedNamesKeepTheirDirectoryUntilCleared()
    {
        QVERIFY(writePicture("first/Settings.png", Qt::red));
        QVERIFY(writePicture("second/Settings.png", Qt::blue));
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        repo.setIconPath("first/");
        QCOMPARE(repo[8].fileName(), QString("first/Settings.png"));
        repo.setIconPath("second/");
        QCOMPARE(repo[8].fileName(), QString("first/Settings.png"));
        repo.clear();
        QCOMPARE(repo[8].fileName(), QString("second/Settings.png"));
    }

    void vectorsRenderPerSizeAndInversion()
    {
        QVERIFY(writeFile("vec/Call.svg", kSquareSvg));
        QVERIFY(writeFile("vec/Call_Inv.svg", kInvertedSvg));
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        repo.setIconPath("vec/");
        CIconResource& call = repo[22];
        QCOMPARE(call.getType(), 3);
        QVERIFY(!call.getCachedSvgPixmap(QSize(0, 10), false));
        QVERIFY(!call.getCachedSvgPixmap(QSize(10, -1), false));
        QPixmap* small = call.getCachedSvgPixmap(QSize(20, 10), false);
        QCOMPARE(small->size(), QSize(20, 10));
        QCOMPARE(small->toImage().pixelColor(10, 5), QColor(255, 0, 0));
        QCOMPARE(call.getCachedSvgPixmap(QSize(20, 10), false), small);
        QPixmap* inverted = call.getCachedSvgPixmap(QSize(20, 10), true);
        QVERIFY(inverted != small);
        QCOMPARE(inverted->toImage().pixelColor(10, 5), QColor(0, 0, 255));
        QVERIFY(call.getCachedSvgPixmap(QSize(40, 20), false) != small);
        // Clearing the repository keeps the rasterised vectors.
        repo.clear();
        for (const char* key : {"vec/Call.svg-(20:10)", "vec/Call.svg-(20:10)-inv", "vec/Call.svg-(40:20)"})
            QVERIFY2(gSvgPixmapCache.contains(key), key);

        bool placeholder = false;
        QSvgRenderer* renderer = repo[22].getSvg(&placeholder, false);
        QVERIFY(!placeholder);
        QVERIFY(renderer && renderer->isValid());
        QCOMPARE(repo[22].getSvg(&placeholder, true), renderer);
        QVERIFY(!placeholder);
    }

    void missingVectorsAnswerWithThePlaceholderRenderer()
    {
        CTavoIconRepository repo("T", tavoIconNames, TAVO_ICON_COUNT, false, false);
        repo.setIconPath("vec-missing/");
        bool placeholder = false;
        QSvgRenderer* renderer = repo[QString("ghost.svg")].getSvg(&placeholder, false);
        QVERIFY(placeholder);
        QCOMPARE(renderer, CIconResource::placeholderSvg());
        QVERIFY(renderer->isValid());
        placeholder = false;
        QCOMPARE(repo[QString("ghost.svg")].getSvg(&placeholder, false), renderer);
        QVERIFY(placeholder);
        // The file appears later: the resource gets its own renderer, the placeholder stays intact.
        QVERIFY(writeFile("vec-missing/ghost.svg", kSquareSvg));
        placeholder = false;
        QSvgRenderer* own = repo[QString("ghost.svg")].getSvg(&placeholder, false);
        QVERIFY(!placeholder);
        QVERIFY(own != renderer);
        QVERIFY(CIconResource::placeholderSvg()->isValid());
    }

    void globalPixmapsByNumberAndStyleUpdates()
    {
        QVERIFY(writePicture("Skins/common/icons/Messages.png", Qt::red));
        iconRepository.setIconPath(QString());
        iconRepository.clear();
        QPixmap* messages = getIconPixmap(5);
        QVERIFY(messages);
        QCOMPARE(messages->toImage().pixelColor(1, 1), QColor(Qt::red));
        QCOMPARE(getIconPixmap(5), messages);
        QVERIFY(getIconPixmap(27));  // missing: the placeholder

        QByteArray style("CTavoIconRepository { size: 32x32; }");
        QByteArray attributes("");
        updateIconResource(style.data(), attributes.data());
        QVERIFY(iconRepository.resources().isEmpty());
        QVERIFY(iconRepository.get("CTavoIconRepository"));
    }

    // --- definitions -----------------------------------------------------------------
    void definitionsCompareAndFilterTheirNumbers()
    {
        CTavoIconDefinition a("url", "label", 5, 6, QList<int>() << 7 << 5 << 8);
        CTavoIconDefinition b = a;
        QVERIFY(a == b);
        b.m_label = "other";
        QVERIFY(a != b);
        QVERIFY(a.containsIndex(5) && a.containsIndex(6) && a.containsIndex(8) && !a.containsIndex(9));
        a.removeIndex(5);
        QVERIFY(a.m_iconIndex == -1 && !a.containsIndex(5));
        QCOMPARE(a.m_iconIndexes, QList<int>() << 7 << 8);

        CTavoIconDefinition c("", "", 10, 11, QList<int>() << 12 << 13);
        c.removeAllExcept(QStringList() << "11" << "13" << "x");
        QVERIFY(c.m_iconIndex == -1 && c.m_pressedIconIndex == 11 && c.m_iconIndexes == QList<int>{13});
    }
};

QTEST_MAIN(TestIconRepository)
#include "tst_iconrepository.moc"
