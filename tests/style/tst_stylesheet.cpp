// Style sheets: lookup order over class, object name and pseudo state; merging;
// attributes and the process-wide design resolution.
#include <QtTest>

#include "style/CTavoStyleSheet.h"

class BaseThing : public QObject
{
    Q_OBJECT
};

class FancyThing : public BaseThing
{
    Q_OBJECT
};

// Marks each block with its own selector so a lookup says which block it found.
static QByteArray markedSheet(const QStringList& selectors)
{
    QByteArray text;
    for (const QString& s : selectors)
        text += s.toUtf8() + " { tag: " + s.toUtf8() + "; }\n";
    return text;
}

static QString tagOf(CTavoWidgetStyle* style)
{
    return style ? style->String("tag") : QStringLiteral("<none>");
}

class TestStyleSheet : public QObject
{
    Q_OBJECT
private slots:
    void init() { CTavoWidgetStyle::resetScaling(); }
    void cleanup() { CTavoWidgetStyle::resetScaling(); }

    void lookupOrder_data()
    {
        QTest::addColumn<QStringList>("selectors");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("pseudo");
        QTest::addColumn<QString>("expected");
        const QString full = "FancyThing#x:p", classPseudo = "FancyThing:p", named = "FancyThing#x",
                      cls = "FancyThing", base = "BaseThing", object = "QObject";
        QTest::newRow("full key first") << QStringList{object, base, cls, named, classPseudo, full} << "x" << "p" << full;
        QTest::newRow("class with pseudo") << QStringList{object, base, cls, named, classPseudo} << "x" << "p" << classPseudo;
        QTest::newRow("named without pseudo") << QStringList{object, base, cls, named} << "x" << "p" << named;
        QTest::newRow("class") << QStringList{object, base, cls} << "x" << "p" << cls;
        QTest::newRow("superclass") << QStringList{object, base} << "x" << "p" << base;
        QTest::newRow("QObject") << QStringList{object} << "x" << "p" << object;
        QTest::newRow("pseudo of base class is not inherited") << QStringList{"BaseThing:p"} << "x" << "p" << "<none>";
        QTest::newRow("other name is ignored") << QStringList{"FancyThing#y:p", "FancyThing#y"} << "x" << "p" << "<none>";
        const QStringList unnamed{cls, "FancyThing:pressed", "FancyThing#:pressed"};
        QTest::newRow("unnamed in pseudo") << unnamed << "" << "pressed" << "FancyThing:pressed";
        QTest::newRow("unnamed plain") << unnamed << "" << "" << cls;
        QTest::newRow("unnamed, unknown pseudo") << unnamed << "" << "focused" << cls;
        // The name "ss" also occurs inside the pseudo state, and goes from there too.
        QTest::newRow("name removed everywhere") << QStringList{"FancyThing:prestate", "FancyThing:pressstate"} << "ss"
                                                 << "pressstate" << "FancyThing:prestate";
    }
    void lookupOrder()
    {
        QFETCH(QStringList, selectors);
        QFETCH(QString, name);
        QFETCH(QString, pseudo);
        CTavoStyleSheet sheet;
        sheet.set(markedSheet(selectors).constData(), "");
        FancyThing thing;
        thing.setObjectName(name);
        QTEST(tagOf(sheet.get(&thing, pseudo)), "expected");
        QVERIFY(!sheet.get(static_cast<QObject*>(nullptr), pseudo));
    }

    void exactAndMetaObjectLookups()
    {
        CTavoStyleSheet sheet;
        QVERIFY(!sheet.get("A"));
        sheet.set(markedSheet({"BaseThing", "A"}).constData(), "");
        QCOMPARE(tagOf(sheet.get("A")), QString("A"));
        QCOMPARE(tagOf(sheet.get(QString("A"))), QString("A"));
        QVERIFY(!sheet.get("a"));
        QCOMPARE(tagOf(sheet.get(&FancyThing::staticMetaObject)), QString("BaseThing"));
        QVERIFY(!sheet.get(static_cast<const QMetaObject*>(nullptr)));
    }

    void hasPseudoStateChecksNamedThenClass()
    {
        CTavoStyleSheet sheet;
        FancyThing thing;
        QVERIFY(!sheet.hasPseudoState(&thing, "p"));
        sheet.set(markedSheet({"FancyThing#:unnamed", "BaseThing:p", "FancyThing#x:n"}).constData(), "");
        QVERIFY(sheet.hasPseudoState(&thing, "unnamed")); // "#" stands even without a name
        QVERIFY(!sheet.hasPseudoState(&thing, "p"));      // only the own class counts
        thing.setObjectName("x");
        QVERIFY(sheet.hasPseudoState(&thing, "n"));
        QVERIFY(!sheet.hasPseudoState(nullptr, "n"));
    }

    void repeatedSelectorsMergeAndNullKeepsEarlierValue()
    {
        CTavoStyleSheet sheet;
        sheet.set("A { color: red; } A { font: 12px; } B { color: red; } B { color: null; }"
                  "C { color: blue; } C { color: green; }",
                  "");
        QCOMPARE(sheet.get("A")->Color("color"), QColor(Qt::red));
        QCOMPARE(sheet.get("A")->Font("font").pixelSize(), 12);
        QCOMPARE(sheet.get("B")->Color("color"), QColor(Qt::red));
        QCOMPARE(sheet.get("C")->Color("color"), QColor("green"));
    }

    void malformedPiecesAreSkipped()
    {
        // A piece without "{" goes; one that begins with "{" takes its first text as selector.
        CTavoStyleSheet sheet;
        sheet.set("{bare: 1; } junk } { orphan: 1; } A { x: 1; nocolon; : 2; y : 3 ; } B { z: 4", "");
        QCOMPARE(sheet.styles().keys(), (QList<QString>{"", "A", "B", "bare: 1;"}));
        QCOMPARE(sheet.get("")->String("orphan"), QString("1"));
        QVERIFY(!sheet.get("bare: 1;")->isValid());
        QCOMPARE(sheet.get("A")->String("y"), QString("3"));
        QCOMPARE(sheet.get("A")->properties().size(), 3); // x, "" and y
        QCOMPARE(sheet.get("B")->String("z"), QString("4")); // last block needs no "}"
    }

    void setWithNullLeavesSheetAndSetReplacesIt()
    {
        CTavoStyleSheet sheet;
        sheet.set("A { x: 1; }", "k=v");
        sheet.set(nullptr, "k=w");
        sheet.set("B { x: 1; }", nullptr);
        QVERIFY(sheet.get("A"));
        QCOMPARE(sheet.getAttribute("k"), QString("v"));
        sheet.set("B { x: 2; }", "");
        QVERIFY(!sheet.get("A"));
        QCOMPARE(sheet.get("B")->String("x"), QString("2"));
        QVERIFY(!sheet.attributes().contains("k"));
    }

    void attributesAreTrimmedAndMissingOnesCreatedEmpty()
    {
        CTavoStyleSheet sheet;
        sheet.set("", " a = 1 ;;noequals; b=2=3 ;c=");
        QCOMPARE(sheet.getAttribute("a"), QString("1"));
        QCOMPARE(sheet.getAttribute("b"), QString("2"));
        QCOMPARE(sheet.getAttribute("c"), QString(""));
        QVERIFY(!sheet.attributes().contains("noequals"));
        QVERIFY(!sheet.attributes().contains("missing"));
        QCOMPARE(sheet.getAttribute("missing"), QString());
        QVERIFY(sheet.attributes().contains("missing"));
    }

    void designAttributesSetGlobalScaleOnlyWhenComplete()
    {
        CTavoStyleSheet sheet;
        // The offscreen screen is 800x600: a 400x240 design capped at 800x480 doubles.
        sheet.set("A { size: 10x10; }", "design-x=400;design-y=240;max-x=800");
        QVERIFY(!CTavoWidgetStyle::isScaled());
        QCOMPARE(sheet.get("A")->Size("size"), QSize(10, 10));

        sheet.set("A { size: 10x10; }", "design-x=400;design-y=240;max-x=800;max-y=480");
        QVERIFY(CTavoWidgetStyle::isScaled());
        QCOMPARE(CTavoWidgetStyle::scaleFactorX(), 2.0);
        QCOMPARE(sheet.get("A")->Size("size"), QSize(20, 20));

        // Another sheet with matching resolutions turns it off again for later parses.
        CTavoStyleSheet other;
        other.set("A { size: 10x10; }", "design-x=800;design-y=480;max-x=800;max-y=480");
        QVERIFY(!CTavoWidgetStyle::isScaled());
        QCOMPARE(other.get("A")->Size("size"), QSize(10, 10));
        QCOMPARE(sheet.get("A")->Size("size"), QSize(20, 20)); // parsed once, at load
    }

    void definedClassesByColumnName()
    {
        CTavoStyleSheet sheet;
        sheet.set(markedSheet({"CTavoLabel#name", "CTavoIcon#icon:pressed", "CTavoLabel#other", "Plain"}).constData(), "");
        const QList<QPair<int, QString>> found = sheet.getDefinedClasses({"icon", "name", "missing"});
        QCOMPARE(found.size(), 2);
        QCOMPARE(found.at(0), qMakePair(0, QString("CTavoIcon")));
        QCOMPARE(found.at(1), qMakePair(1, QString("CTavoLabel")));
    }
};

QTEST_MAIN(TestStyleSheet)
#include "tst_stylesheet.moc"
