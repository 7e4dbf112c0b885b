// Table views over live tables: the real tgui-core and tgui-dbs on loopback,
// a layout manager whose database link feeds a CTavoDbTableView, and the rows
// of a real SQLite file (made by the peer from a script) changed through it. Rows are placeholders until
// painted, refreshes come in batches, removals at once, filters work on row
// numbers; the row widget's elements, converters, mockers and buttons; the
// widget factory the rows are built with.
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"
#include "data/CTavoDb.h"
#include "data/CTavoDbTableFilter.h"
#include "data/CTavoDbTableRowWidget.h"
#include "data/CTavoDbTableView.h"
#include "layout/CTavoLayoutMgr.h"
#include "tools/TavoTools.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoImageWidget.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"
#include "widgets/CTavoView.h"

#include "GuiProfile.h"
#include "ProgramProcess.h"

namespace {
const QRgb kBlue = qRgb(0, 0, 255);
const QRgb kGreen = qRgb(0, 255, 0);
const QRgb kMagenta = qRgb(255, 0, 255);

// rowid 0, id 1, name 2, number 3, presence 4, ..., read 9.
const char* const kSchema = "CREATE TABLE contacts(id INTEGER PRIMARY KEY, name TEXT, number TEXT, presence INTEGER,"
                            " company TEXT, email TEXT, note TEXT, extra TEXT, read INTEGER DEFAULT 0);";

const QByteArray kSheet =
    "CTavoDbTableView { size: 400x300; location: 0:0; background: #ffffff; }"
    " CTavoView { size: 400x300; location: 0:0; }"
    " CTavoScrollBar { size: 6x300; location: 394:0; auto-hide-timeout: 1; }"
    " CTavoDbTableRowWidget { size: 400x50; background: #0000ff; background-focused: #00ff00;"
    " more-info-location: 340:10; }"
    " CTavoButton#table-row-more-info { size: 40x30; background: #ff00ff; }"
    " CTavoLabelWidget#name { size: 200x20; location: 10:5; }"
    " CTavoLabelWidget#number { size: 120x20; location: 10:27; }"
    " CTavoLabelWidget#db-tableview-info { size: 400x50; location: 0:0; }";

QVariant upper(int, int, const QVariant& value, CTavoDbTable*)
{
    return value.toString().toUpper();
}

QVariant hidden(int, int, const QVariant&, CTavoDbTable*)
{
    return QStringLiteral("***");
}

// Where the row index a converter gets comes from.
int g_lastRowIndex = -2;
QVariant presenceIcon(int rowIndex, int, const QVariant& value, CTavoDbTable*)
{
    g_lastRowIndex = rowIndex;
    return value.toInt() + 20;
}

// Keeps even row numbers, last first.
class EvenReversed : public CTavoDbTableFilter
{
public:
    int calls = 0;
    unsigned char filter(CTavoDbTable*, QVector<unsigned long long>* rows, void*) override
    {
        ++calls;
        QVector<unsigned long long> kept;
        for (int i = rows->size() - 1; i >= 0; --i) {
            if (rows->at(i) % 2 == 0)
                kept.append(rows->at(i));
        }
        rows->swap(kept);
        return 1;
    }
};

class Nothing : public CTavoDbTableFilter
{
public:
    unsigned char filter(CTavoDbTable*, QVector<unsigned long long>* rows, void*) override
    {
        rows->clear();
        return 1;
    }
};

int countOf(const QSignalSpy& spy, CTavoDbTableView::ReasonCode reason)
{
    int n = 0;
    for (const QList<QVariant>& args : spy)
        n += args.at(0).value<CTavoDbTableView::ReasonCode>() == reason ? 1 : 0;
    return n;
}

QString labelText(CTavoObject* item, const char* name)
{
    auto* row = qobject_cast<CTavoDbTableRowWidget*>(item);
    auto* label = row ? qobject_cast<CTavoLabelWidget*>(row->getElement(name)) : nullptr;
    return label ? label->text() : QStringLiteral("<none>");
}
}  // namespace

class TestDbTableView : public QObject
{
    Q_OBJECT

    GuiProfile m_profile;
    QString m_db;
    std::unique_ptr<ProgramProcess> m_core;
    std::unique_ptr<ProgramProcess> m_dbs;
    CTavoLayoutMgr* m_mgr = nullptr;
    QList<QPointer<CTavoDbTableView>> m_views;

    // tgui-core and tgui-dbs on a file of 40 contacts, for the cases that show
    // a table (the others need no peers).
    bool startPeers()
    {
        m_core = std::make_unique<ProgramProcess>("tgui-core", QStringList{"--port", "0", "--listen", "127.0.0.1"});
        const quint16 port = m_core->listeningPort();
        if (!port || !m_profile.enter(port))
            return false;

        m_db = m_profile.filePath(QString("%1.db").arg(QTest::currentTestFunction()));
        QFile::remove(m_db);
        QString sql = QString::fromLatin1(kSchema) + "BEGIN;";
        for (int i = 1; i <= 40; ++i)
            sql += QString("INSERT INTO contacts(name, number, presence, read) VALUES('name %1', '+41 44 %1', %2, %3);")
                       .arg(i)
                       .arg(i % 3)
                       .arg(i % 2);
        sql += "COMMIT;";
        // The peer makes the file from the script.
        const QString script = m_profile.filePath("seed.sql");
        QFile seed(script);
        if (!seed.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        seed.write(sql.toUtf8());
        seed.close();
        m_dbs = std::make_unique<ProgramProcess>(
            "tgui-dbs", QStringList{"--port", QString::number(port), "--poll-interval", "50", "--init", script, m_db});
        return true;
    }

    // A shown table view of the styled size over "contacts", rows arrived.
    CTavoDbTableView* openView(int rows, bool lazy = true)
    {
        if (!m_core && !startPeers())
            return nullptr;
        if (!m_mgr)
            m_mgr = new CTavoLayoutMgr;
        if (!QTest::qWaitFor([&] { return m_mgr->db().isConnected(); }, 15000))
            return nullptr;
        // The table first, so that its rows are there when the view comes, not
        // insertions to focus.
        CTavoDbTable* table = m_mgr->db().subscribeToTable("contacts");
        if (!table || !QTest::qWaitFor([&] { return table->rowCount() == rows; }, 10000))
            return nullptr;
        // A window of its own; the manager's link is found through the manager.
        auto* view = new CTavoDbTableView;
        m_views.append(view);
        view->setLazyRows(lazy);
        view->setColumns({{2, "CTavoLabelWidget"}, {3, "CTavoLabelWidget"}, {4, "CTavoIcon"}});
        view->setRowStyles(QString::fromLatin1(kSheet), QString());
        view->connectToTable("contacts");
        if (view->model() != table)
            return nullptr;
        view->show();
        return view;
    }

    void query(const QString& sql) { m_mgr->db().query(QStringLiteral("t"), sql); }

    static QImage shot(CTavoDbTableView* view)
    {
        return view->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    static void mouse(QWidget* widget, QEvent::Type type, const QPoint& at)
    {
        QMouseEvent event(type, at, widget->mapToGlobal(at), Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(widget, &event);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_profile.make());
    }

    void init() { bRebootInitiated = false; }

    void cleanup()
    {
        for (const QPointer<CTavoDbTableView>& view : qAsConst(m_views))
            delete view.data();
        m_views.clear();
        deleteManager(m_mgr);
        m_dbs.reset();
        m_core.reset();
        m_profile.leave();
    }

    void rowsAreBuiltAsTheyComeIntoView()
    {
        CTavoDbTableView* view = openView(40);
        QVERIFY(view);
        QCOMPARE(view->view()->objectName(), QStringLiteral("db-tableview-view"));
        QCOMPARE(view->getNumOfItems(), 40);
        QCOMPARE(view->items().size(), 40);
        QCOMPARE(view->getItemSize(), QSize(400, 50));
        QCOMPARE(view->builtRows(), 0);
        QVERIFY(!view->infoLabel()->isVisible());
        // Placeholders: bare objects with a rectangle, stacked in table order.
        for (int i = 0; i < 40; ++i) {
            CTavoObject* item = view->items().at(i);
            QVERIFY(!qobject_cast<CTavoWidget*>(item));
            QCOMPARE(item->rect(), QRect(0, 50 * i, 400, 50));
            QCOMPARE(qint64(item->rowId()), view->model()->rowId(i));
        }

        // A paint builds the six rows in view, no others; the next paint shows them.
        QSignalSpy updated(view, &CTavoDbTableView::viewUpdated);
        shot(view);
        QCOMPARE(view->builtRows(), 6);
        QCOMPARE(view->initCount(), 6);
        QCOMPARE(updated.count(), 6);
        QCOMPARE(updated.first().at(0).value<CTavoDbTableView::ReasonCode>(), CTavoDbTableView::ReasonDataChanged);
        QImage image = shot(view);
        QCOMPARE(view->builtRows(), 6);
        QCOMPARE(image.pixel(5, 10), kGreen);   // row 0 has the focus
        QCOMPARE(image.pixel(5, 60), kBlue);    // row 1 does not
        QCOMPARE(image.pixel(350, 65), kMagenta);  // its more-info button

        // Each element shows its column, named after the column's header.
        auto* row = qobject_cast<CTavoDbTableRowWidget*>(view->items().at(2));
        QVERIFY(row);
        QCOMPARE(row->elements().size(), 3);
        QCOMPARE(labelText(row, "name"), QStringLiteral("name 3"));
        QCOMPARE(labelText(row, "number"), QStringLiteral("+41 44 3"));
        QCOMPARE(row->getElement("name")->rect(), QRect(10, 105, 200, 20));
        QVERIFY(qobject_cast<CTavoIcon*>(row->getElement("presence")));
        QVERIFY(!row->getElement("company"));
        // Column 9 holds the read mark: row 3 is read (1), row 2 is not (0).
        QCOMPARE(row->getElement("name")->pseudoState(), QStringLiteral("read"));
        QCOMPARE(labelText(view->items().at(1), "name"), QStringLiteral("name 2"));
        QCOMPARE(qobject_cast<CTavoWidget*>(view->items().at(1))->findChild<CTavoLabelWidget*>("name")->pseudoState(),
                 QString());
        // Beyond the screen, still placeholders.
        QVERIFY(!qobject_cast<CTavoWidget*>(view->items().at(6)));

        // Scrolled to the end, only the rows that came into view are built.
        view->view()->setScrollOffsetAndState(QPoint(0, 40 * 50 - 300));
        shot(view);
        QCOMPARE(view->builtRows(), 12);
        QVERIFY(qobject_cast<CTavoDbTableRowWidget*>(view->items().at(39)));
        QVERIFY(!qobject_cast<CTavoDbTableRowWidget*>(view->items().at(20)));
        // focusTableRow walks to a row and builds it.
        view->focusTableRow(20);
        shot(view);
        QVERIFY(qobject_cast<CTavoDbTableRowWidget*>(view->items().at(20)));
        QCOMPARE(view->view()->focusedIndex(), 20);
        QVERIFY(view->items().at(20)->isFocused());
        QTest::ignoreMessage(QtDebugMsg, "CTavoDbTableView: table row 99 is not in the list");
        view->focusTableRow(99);
        QCOMPARE(view->view()->focusedIndex(), 20);

        // With a pool of six, the rows built longest ago serve the next ones:
        // no more widgets, every item still shows its own row.
        const int built = view->builtRows();
        view->setRowPoolSize(6);
        view->view()->setScrollOffsetAndState(QPoint(0, 1100));
        shot(view);
        QVERIFY(view->builtRows() <= built);
        for (int i = 22; i < 28; ++i) {
            QVERIFY(qobject_cast<CTavoDbTableRowWidget*>(view->items().at(i)));
            QCOMPARE(labelText(view->items().at(i), "name"), QString("name %1").arg(i + 1));
        }
        for (int i = 0; i < 40; ++i) {
            CTavoObject* item = view->items().at(i);
            QCOMPARE(qint64(item->rowId()), view->model()->rowId(i));
            QCOMPARE(item->top(), 50 * i);
            QCOMPARE(view->view()->itemAt(i), item);
        }
        QVERIFY(view->items().at(20)->isFocused());
        view->view()->setScrollOffsetAndState(QPoint(0, 0));
        shot(view);
        QCOMPARE(labelText(view->items().at(0), "name"), QStringLiteral("name 1"));
    }

    void convertersMockersAndUnknownClasses()
    {
        CTavoDbTableView* view = openView(40);
        QVERIFY(view);
        view->setValueConverter(4, &presenceIcon);
        view->setValueConverter(2, &upper);
        shot(view);
        auto* row = qobject_cast<CTavoDbTableRowWidget*>(view->items().at(4));
        QVERIFY(row);
        QCOMPARE(labelText(row, "name"), QStringLiteral("NAME 5"));
        QCOMPARE(qobject_cast<CTavoIcon*>(row->getElement("presence"))->definition().m_iconIndex, 5 % 3 + 20);
        QVERIFY(g_lastRowIndex >= 0 && g_lastRowIndex < 6);

        // A mocker names its column and wins over the converter; removing it restores.
        view->addDataMocker("name", &hidden);
        QCOMPARE(labelText(row, "name"), QStringLiteral("***"));
        view->addDataMocker("number", &hidden);
        QCOMPARE(labelText(row, "number"), QStringLiteral("***"));
        view->removeDataMocker("name");
        QCOMPARE(labelText(row, "name"), QStringLiteral("NAME 5"));
        view->clearAllDataMocker();
        QCOMPARE(labelText(row, "number"), QStringLiteral("+41 44 5"));
        QTest::ignoreMessage(QtDebugMsg, "CTavoDbTableView: no column nosuch for a data mocker in table contacts");
        view->addDataMocker("nosuch", &hidden);

        // Without a table there is nothing to mock.
        CTavoDbTableView bare;
        QTest::ignoreMessage(QtDebugMsg, "Try to set the data mocker when table model is null.");
        bare.addDataMocker("name", &hidden);
        QCOMPARE(bare.getNumOfItems(), 0);

        // A class the factory does not know leaves no element: the columns after it
        // pair with the elements before them.
        QList<QPair<int, QString>> columns{{2, "CTavoNoSuch"}, {3, "CTavoLabelWidget"}, {5, "CTavoLabelWidget"}};
        QTest::ignoreMessage(QtDebugMsg, "tavoToolCreateWidget: unknown class 'CTavoNoSuch'");
        CTavoDbTableRowWidget skewed(view, view->model(), columns, nullptr);
        skewed.setRowId(quint64(view->model()->rowId(0)));
        QCOMPARE(skewed.elements().size(), 2);
        QCOMPARE(labelText(&skewed, "number"), QStringLiteral("name 1"));
        QCOMPARE(labelText(&skewed, "company"), QStringLiteral("+41 44 1"));
        // An image column: base64 text, or a QImage from a converter.
        QList<QPair<int, QString>> imageColumns{{6, "CTavoImageWidget"}, {7, "CTavoParagraph"}};
        CTavoDbTableRowWidget pictures(view, view->model(), imageColumns, nullptr);
        QVERIFY(qobject_cast<CTavoImageWidget*>(pictures.getElement("email")));
        QVERIFY(qobject_cast<CTavoParagraph*>(pictures.getElement("note")));
        query("UPDATE contacts SET note = 'a &#123;b&#125; c' WHERE id = 1");
        QTRY_COMPARE(view->model()->valueByRowId(1, 7).toString(), QStringLiteral("a &#123;b&#125; c"));
        pictures.setRowId(1);
        QCOMPARE(labelText(&pictures, "note"), QStringLiteral("a {b} c"));
        // Without a table a row has no elements and refresh does nothing.
        CTavoDbTableRowWidget empty(view, nullptr, columns, nullptr);
        empty.setRowId(3);
        QVERIFY(empty.elements().isEmpty());
        QCOMPARE(empty.rowId(), quint64(3));
    }

    void insertionsComeInOneRefreshAndTheNewRowIsFocused()
    {
        CTavoDbTableView* view = openView(40);
        QVERIFY(view);
        shot(view);
        QSignalSpy updated(view, &CTavoDbTableView::viewUpdated);
        for (int i = 0; i < 10; ++i)
            query(QString("INSERT INTO contacts(name, number) VALUES('new %1', '%1')").arg(i));
        QTRY_COMPARE(view->items().size(), 50);
        QVERIFY(view->isRefreshPending());
        const long long last = view->model()->rowId(view->model()->rowCount() - 1);
        QTRY_VERIFY(!view->isRefreshPending());
        QTest::qWait(300);
        QCOMPARE(countOf(updated, CTavoDbTableView::ReasonGeneral), 1);
        QCOMPARE(view->getNumOfItems(), 50);
        // The newest row has the focus and is in view, built.
        CTavoObject* focused = view->view()->focussedItem();
        QVERIFY(focused);
        QCOMPARE(qint64(focused->rowId()), last);
        shot(view);
        QCOMPARE(labelText(view->view()->focussedItem(), "name"), QStringLiteral("new 9"));
        QVERIFY(view->view()->visibleRect().contains(view->view()->focussedItem()->rect()));

        // A change rebuilds the row when it is painted next.
        updated.clear();
        QSignalSpy modified(view, &CTavoDbTableView::rowModified);
        query("UPDATE contacts SET name = 'renamed' WHERE id = " + QString::number(last));
        QTRY_COMPARE(view->model()->valueByRowId(last, 2).toString(), QStringLiteral("renamed"));
        // The window's next paint builds it again.
        QTRY_COMPARE(labelText(view->view()->focussedItem(), "name"), QStringLiteral("renamed"));
        QVERIFY(modified.count() >= 1);
        QCOMPARE(modified.last().at(0).toULongLong(), quint64(last));
    }

    void removalsAreImmediateAndAnEmptyTableSaysSo()
    {
        CTavoDbTableView* view = openView(40);
        QVERIFY(view);
        shot(view);
        // A finger is on row 1 when it is removed.
        mouse(view, QEvent::MouseButtonPress, QPoint(100, 75));
        QVERIFY(view->view()->pressedItem());
        QCOMPARE(view->view()->pressedItem(), view->items().at(1));
        QSignalSpy updated(view, &CTavoDbTableView::viewUpdated);
        query("DELETE FROM contacts WHERE id = 2");
        QTRY_COMPARE(view->items().size(), 39);
        QCOMPARE(countOf(updated, CTavoDbTableView::ReasonRowsRemoved), 1);
        QCOMPARE(countOf(updated, CTavoDbTableView::ReasonGeneral), 0);
        QVERIFY(!view->isRefreshPending());
        QVERIFY(!view->view()->pressedItem());
        mouse(view, QEvent::MouseButtonRelease, QPoint(100, 75));
        QCOMPARE(view->getNumOfItems(), 39);
        for (CTavoObject* item : view->items())
            QVERIFY(item->rowId() != 2);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        shot(view);
        QCOMPARE(labelText(view->items().at(1), "name"), QStringLiteral("name 3"));
        QCOMPARE(view->items().at(1)->top(), 50);

        // Emptied: "tableEmpty" first, then the refresh, and the note shows.
        QStringList order;
        connect(view, &CTavoDbTableView::tableEmpty, view, [&] { order << "empty"; });
        connect(view, &CTavoDbTableView::viewUpdated, view,
                [&](CTavoDbTableView::ReasonCode reason) { order << QString::number(reason); });
        query("DELETE FROM contacts");
        QTRY_COMPARE(view->items().size(), 0);
        QVERIFY(order.indexOf("empty") >= 0);
        QCOMPARE(order.at(order.indexOf("empty") + 1), QStringLiteral("2"));
        QCOMPARE(view->getNumOfItems(), 0);
        QVERIFY(view->infoLabel()->isVisible());
        QCOMPARE(view->infoLabel()->objectName(), QStringLiteral("db-tableview-info"));
        QCOMPARE(view->infoLabel()->text(), QStringLiteral("No records"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const QImage empty = shot(view);
        QCOMPARE(empty.pixel(5, 10), qRgb(255, 255, 255));
        // A row again: the note goes.
        query("INSERT INTO contacts(name) VALUES('back')");
        QTRY_COMPARE(view->getNumOfItems(), 1);
        QTRY_VERIFY(!view->infoLabel()->isVisible());
    }

    void filtersReorderRowNumbersOnly()
    {
        CTavoDbTableView* view = openView(40);
        QVERIFY(view);
        shot(view);
        // Without filters the position stays across a refresh.
        view->view()->setScrollOffsetAndState(QPoint(0, 400));
        view->filterAndSort(CTavoDbTableView::ReasonGeneral);
        QCOMPARE(view->view()->scrollOffset().y(), 400);

        EvenReversed filter;
        view->addDataFilter(&filter);
        view->addDataFilter(&filter);
        QCOMPARE(view->filters().size(), 1);
        CTavoDbTableFilter stub;
        view->addDataFilter(&stub);
        QSignalSpy updated(view, &CTavoDbTableView::viewUpdated);
        view->filterAndSort(CTavoDbTableView::ReasonGeneral);
        QCOMPARE(filter.calls, 1);
        QCOMPARE(view->viewMap().size(), 20);
        QCOMPARE(view->viewMap().first(), 38ULL);
        QCOMPARE(view->viewMap().last(), 0ULL);
        QCOMPARE(view->getNumOfItems(), 20);
        QCOMPARE(view->view()->itemAt(0), view->items().at(38));
        // The filtered view starts at the top, on its first item.
        QCOMPARE(view->view()->scrollOffset().y(), 0);
        QCOMPARE(view->view()->focusedIndex(), 0);
        QCOMPARE(countOf(updated, CTavoDbTableView::ReasonGeneral), 1);
        shot(view);
        QCOMPARE(labelText(view->view()->itemAt(0), "name"), QStringLiteral("name 39"));
        QCOMPARE(labelText(view->view()->itemAt(1), "name"), QStringLiteral("name 37"));
        QVERIFY(!view->items().at(39)->isVisible());  // filtered out, not painted

        // Keeping the position: the list stays where it was.
        view->setKeepPosition(true);
        view->view()->setScrollOffsetAndState(QPoint(0, 200));
        view->filterAndSort(CTavoDbTableView::ReasonGeneral);
        QCOMPARE(view->view()->scrollOffset().y(), 200);

        Nothing nothing;
        view->addDataFilter(&nothing);
        view->filterAndSort(CTavoDbTableView::ReasonGeneral);
        QCOMPARE(view->getNumOfItems(), 0);
        QVERIFY(view->infoLabel()->isVisible());
        view->removeDataFilter(&nothing);
        view->removeDataFilter(&filter);
        view->removeDataFilter(&stub);
        // The last filter gone, the list is the table again.
        QCOMPARE(view->getNumOfItems(), 40);
        QCOMPARE(view->view()->itemAt(39), view->items().at(39));
        view->setKeepPosition(false);
        view->addDataFilter(&stub);
        view->filterAndSort(CTavoDbTableView::ReasonGeneral);
        QCOMPARE(view->getNumOfItems(), 40);
        QVERIFY(!view->infoLabel()->isVisible());
    }

    void filterOptions()
    {
        CTavoDbTableFilter f;
        QCOMPARE(f.currentSelection(), QString());
        QCOMPARE(f.filter(nullptr, nullptr, nullptr), (unsigned char)0);
        f.setOptions({"All", "Missed", "Received"});
        QCOMPARE(f.findIndex("Missed"), 1);
        QCOMPARE(f.findIndex("nope"), -1);
        f.setName("calls", "direction", 1, false);
        QCOMPARE(f.currentSelection(), QStringLiteral("Missed"));
        f.setOptions({"Received", "Missed"});
        QCOMPARE(f.currentIndex(), 1);
        f.setOptions({"All"});
        QCOMPARE(f.currentIndex(), -1);
        f.setName("calls", "direction", 7, true);
        QCOMPARE(f.options(), QStringList());
        QCOMPARE(f.currentIndex(), -1);
    }

    void rowButtonsAndEvents()
    {
        CTavoDbTableView* view = openView(40);
        QVERIFY(view);
        shot(view);
        auto* row = qobject_cast<CTavoDbTableRowWidget*>(view->items().at(1));
        QVERIFY(row);
        QCOMPARE(row->url(), QStringLiteral("table-row-clicked"));
        QCOMPARE(row->url(2), QStringLiteral("table-row-held"));
        QCOMPARE(row->moreInfo()->objectName(), QStringLiteral("table-row-more-info"));
        QCOMPARE(row->moreInfo()->rect(), QRect(340, 60, 40, 30));
        // Both show as pressed together.
        row->setDown(true);
        QVERIFY(row->moreInfo()->isDown());
        row->setDown(false);
        QVERIFY(!row->moreInfo()->isDown());

        // Moving the row takes its elements and its button along.
        CTavoDbTableRowWidget loose(view, view->model(), *const_cast<QList<QPair<int, QString>>*>(&view->columns()),
                                    nullptr);
        loose.layout();
        const QRect name = loose.getElement("name")->rect();
        const QRect more = loose.moreInfo()->rect();
        loose.move(7, 300);
        QCOMPARE(loose.getElement("name")->rect(), name.translated(7, 300));
        QCOMPARE(loose.moreInfo()->rect(), more.translated(7, 300));

        // A tap on the row and one on its button, through the surface and the list.
        QSignalSpy events(view, &CTavoDbTableView::rowEvent);
        mouse(view, QEvent::MouseButtonPress, QPoint(100, 75));
        mouse(view, QEvent::MouseButtonRelease, QPoint(100, 75));
        QTRY_COMPARE(events.count(), 1);
        QCOMPARE(events.last().at(0).toString(), QStringLiteral("table-row-clicked"));
        QCOMPARE(events.last().at(1).toULongLong(), row->rowId());
        mouse(view, QEvent::MouseButtonPress, QPoint(350, 75));
        mouse(view, QEvent::MouseButtonRelease, QPoint(350, 75));
        QTRY_COMPARE(events.count(), 2);
        QCOMPARE(events.last().at(0).toString(), QStringLiteral("table-row-more-info"));
        QCOMPARE(events.last().at(1).toULongLong(), row->rowId());
    }

    void eagerRows()
    {
        CTavoDbTableView* view = openView(40, false);
        QVERIFY(view);
        QCOMPARE(view->builtRows(), 40);
        QCOMPARE(labelText(view->items().at(39), "name"), QStringLiteral("name 40"));
        QSignalSpy updated(view, &CTavoDbTableView::viewUpdated);
        query("INSERT INTO contacts(name) VALUES('eager')");
        QTRY_COMPARE(countOf(updated, CTavoDbTableView::ReasonRowsInserted), 1);
        QCOMPARE(countOf(updated, CTavoDbTableView::ReasonGeneral), 0);
        QCOMPARE(labelText(view->view()->focussedItem(), "name"), QStringLiteral("eager"));
    }

    void widgetFactory_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addColumn<QString>("made");
        QTest::newRow("button") << "CTavoButton" << "CTavoButton";
        QTest::newRow("paragraph") << "CTavoParagraph" << "CTavoParagraph";
        QTest::newRow("scrolling") << "CTavoScrollingLabel" << "";
        QTest::newRow("unknown") << "QLabel" << "";
        QTest::newRow("case") << "ctavobutton" << "";
    }

    void widgetFactory()
    {
        QFETCH(QString, className);
        QFETCH(QString, made);
        QWidget surface;
        if (made.isEmpty())
            QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^tavoToolCreateWidget: "));
        CTavoWidget* widget = tavoToolCreateWidget(className, "element", &surface);
        if (made.isEmpty()) {
            QVERIFY(!widget);
            return;
        }
        QVERIFY(widget);
        QCOMPARE(QString::fromLatin1(widget->metaObject()->className()), made);
        QCOMPARE(widget->objectName(), QStringLiteral("element"));
        QCOMPARE(widget->parentWidget(), &surface);
    }
};

QTEST_MAIN(TestDbTableView)
#include "tst_dbtableview.moc"
