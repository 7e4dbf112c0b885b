// The cached table as a Qt model, fed with what the database peer sends:
// synchronisations in batches, insert, update and delete notifications, and
// the malformed or unexpected ones. QAbstractItemModelTester watches every
// change for broken model signals.
#include <QAbstractItemModelTester>
#include <QtTest>

#include "DbTestSupport.h"
#include "data/CTavoDbQuery.h"
#include "data/CTavoDbTable.h"

using namespace TJDB;

class TestDbTable : public QObject
{
    Q_OBJECT

    QStringList cells(const CTavoDbTable& t, int row)
    {
        QStringList out;
        for (const QVariant& v : t.record(row))
            out.append(v.isNull() ? QStringLiteral("~") : v.toString());
        return out;
    }

private slots:
    void synchronisationInBatches()
    {
        CTavoDbTable table(QStringLiteral("contacts"));
        QAbstractItemModelTester tester(&table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy inserted(&table, &QAbstractItemModel::rowsInserted);
        QSignalSpy header(&table, &QAbstractItemModel::headerDataChanged);
        QSignalSpy changed(&table, &QAbstractItemModel::dataChanged);
        const QStringList columns = {"rowid", "name", "number"};
        auto rows = [](int from, int to) {
            QList<QStringList> list;
            for (int id = from; id <= to; ++id)
                list.append({QString::number(id), QStringLiteral("name %1").arg(id), id % 10 ? "+41 %1" : "~"});
            return list;
        };
        // 250 rows in batches of 100: each batch places its rows by position.
        for (int start : {0, 100, 200}) {
            CTJDbResp batch = dbResponse("t", NotificationSync, columns, rows(start + 1, qMin(start + 100, 250)), 250, start);
            QTest::ignoreMessage(QtDebugMsg, qPrintable(QStringLiteral("Synchronizing table with %1 rows and 3 columns")
                                                             .arg(qMin(100, 250 - start))));
            table.updateData(batch);
        }
        QCOMPARE(table.rowCount(), 250);
        QCOMPARE(table.columnCount(), 3);
        QCOMPARE(table.rowCountReported(), 250);
        QCOMPARE(inserted.count(), 3);
        QCOMPARE(header.count(), 1);
        QCOMPARE(changed.count(), 3);
        QCOMPARE(changed.last().at(2).value<QVector<int>>(), (QVector<int>{Qt::DisplayRole, Qt::EditRole}));
        QCOMPARE(table.headerData(2, Qt::Horizontal).toString(), QStringLiteral("number"));
        QVERIFY(!table.headerData(3, Qt::Horizontal).isValid());
        QCOMPARE(table.rowIdColumn(), 0);

        // The row id is a qlonglong, the others text; NULL is a null string.
        const QVariant id = table.data(table.index(149, 0));
        QCOMPARE(int(id.type()), int(QVariant::LongLong));
        QCOMPARE(id.toLongLong(), 150LL);
        QCOMPARE(table.data(table.index(149, 1)).toString(), QStringLiteral("name 150"));
        QVERIFY(table.data(table.index(149, 2)).toString().isNull());
        QVERIFY(!table.data(table.index(149, 2), Qt::DecorationRole).isValid());
        QCOMPARE(table.rowId(249), 250LL);
        QCOMPARE(table.rowIndex(77), 76);
        QCOMPARE(table.rowIndex(999), -1);
        QCOMPARE(table.recordByRowId(3).value(1).toString(), QStringLiteral("name 3"));
        QCOMPARE(table.valueByRowId(4, 2).toString(), QStringLiteral("+41 %1"));
        QVERIFY(!table.valueByRowId(999, 1).isValid());
        QCOMPARE(table.findRowWhere(1, "name 42"), 41);
        QCOMPARE(table.findRowWhere(1, "nobody"), -1);
        QCOMPARE(table.findRowsWhere(2, "+41 %1").size(), 225);
        QVERIFY(table.findRowsWhere(7, "x").isEmpty());
        QCOMPARE(table.rowId(-1), -1LL);
        QCOMPARE(table.rowId(250), -1LL);
        QVERIFY(table.record(250).isEmpty());

        // A new synchronisation with the same columns builds the table anew,
        // without a header change; fewer rows leave no stale ones behind.
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 3 columns");
        CTJDbResp again = dbResponse("t", NotificationSync, columns, {{"7", "seven", "7"}, {"9", "nine", "9"}});
        table.updateData(again);
        QCOMPARE(table.rowCount(), 2);
        QCOMPARE(header.count(), 1);
        QCOMPARE(cells(table, 1), (QStringList{"9", "nine", "9"}));
        QCOMPARE(table.rowCountReported(), 2);

        // Other columns: the header follows, and the row id column with it.
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 1 rows and 2 columns");
        CTJDbResp renamed = dbResponse("t", NotificationSync, {"name", "rowid"}, {{"x", "12"}});
        table.updateData(renamed);
        QCOMPARE(table.columnCount(), 2);
        QCOMPARE(header.count(), 2);
        QCOMPARE(table.rowIdColumn(), 1);
        QCOMPARE(table.rowId(0), 12LL);

        // An empty result without columns: that is how a table learns it is empty.
        QSignalSpy empty(&table, &CTavoDbTable::tableIsEmpty);
        CTJDbResp none = dbResponse("t", NotificationSync, {}, {});
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 0 rows and 0 columns");
        table.updateData(none);
        QCOMPARE(table.rowCount(), 0);
        QCOMPARE(empty.count(), 1);
        // An empty result with columns keeps the header.
        CTJDbResp noRows = dbResponse("t", NotificationSync, {"name", "rowid"}, {});
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 0 rows and 2 columns");
        table.updateData(noRows);
        QCOMPARE(table.columnCount(), 2);
        QCOMPARE(table.rowCount(), 0);
    }

    void rowIdColumnByName_data()
    {
        QTest::addColumn<QStringList>("columns");
        QTest::addColumn<int>("rowIdColumn");
        QTest::newRow("rowid") << QStringList{"rowid", "a"} << 0;
        QTest::newRow("docid") << QStringList{"a", "docid"} << 1;
        QTest::newRow("both: the last wins") << QStringList{"rowid", "a", "docid"} << 2;
        QTest::newRow("case matters") << QStringList{"ROWID", "a"} << -1;
        QTest::newRow("none") << QStringList{"id", "a"} << -1;
    }

    void rowIdColumnByName()
    {
        QFETCH(QStringList, columns);
        QFETCH(int, rowIdColumn);
        CTavoDbTable table;
        QStringList row;
        for (int i = 0; i < columns.size(); ++i)
            row.append(QString::number(40 + i));
        CTJDbResp sync = dbResponse("t", NotificationSync, columns, {row});
        QTest::ignoreMessage(QtDebugMsg, qPrintable(QString("Synchronizing table with 1 rows and %1 columns").arg(columns.size())));
        table.updateData(sync);
        QCOMPARE(table.rowIdColumn(), rowIdColumn);
        QCOMPARE(table.rowId(0), rowIdColumn < 0 ? -1LL : 40LL + rowIdColumn);
        QCOMPARE(table.rowIndex(40 + rowIdColumn), rowIdColumn < 0 ? -1 : 0);
    }

    void notifications()
    {
        CTavoDbTable table(QStringLiteral("calls"));
        QAbstractItemModelTester tester(&table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 3 rows and 2 columns");
        CTJDbResp sync = dbResponse("t", NotificationSync, {"rowid", "name"}, contactRows(1, 3));
        table.updateData(sync);

        // Insertions go to the end; a known row id changes nothing, but is counted.
        QSignalSpy inserted(&table, &QAbstractItemModel::rowsInserted);
        QSignalSpy insertCount(&table, &CTavoDbTable::totalInsertRowsFromTJDB);
        CTJDbResp insert = dbResponse("t", NotificationInsert, {"rowid", "name"}, {{"10", "ten"}, {"2", "dup"}, {"11", "eleven"}, {"10", "again"}});
        table.updateData(insert);
        QCOMPARE(table.rowCount(), 5);
        QCOMPARE(insertCount.count(), 1);
        QCOMPARE(insertCount.last().at(0).toInt(), 4);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.last().at(1).toInt(), 3);
        QCOMPARE(inserted.last().at(2).toInt(), 4);
        QCOMPARE(cells(table, 3), (QStringList{"10", "ten"}));
        QCOMPARE(cells(table, 1), (QStringList{"2", "name 2"}));
        CTJDbResp known = dbResponse("t", NotificationInsert, {"rowid", "name"}, {{"3", "x"}});
        table.updateData(known);
        QCOMPARE(insertCount.count(), 2);
        QCOMPARE(inserted.count(), 1);

        // An update replaces the row with the same id; an unknown id is skipped quietly.
        QSignalSpy changed(&table, &QAbstractItemModel::dataChanged);
        CTJDbResp update = dbResponse("t", NotificationUpdate, {"rowid", "name"}, {{"11", "ELEVEN"}, {"99", "nobody"}});
        table.updateData(update);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.last().at(0).toModelIndex(), table.index(4, 0));
        QCOMPARE(changed.last().at(1).toModelIndex(), table.index(4, 1));
        QCOMPARE(table.valueByRowId(11, 1).toString(), QStringLiteral("ELEVEN"));
        QCOMPARE(table.rowCount(), 5);

        // Deletions by the id in the first field; the last one empties the table.
        QSignalSpy removed(&table, &QAbstractItemModel::rowsRemoved);
        QSignalSpy deleteCount(&table, &CTavoDbTable::totalDeleteRowsFromTJDB);
        QSignalSpy empty(&table, &CTavoDbTable::tableIsEmpty);
        CTJDbResp del = dbResponse("t", NotificationDelete, {"rowid"}, {{"2"}, {"10"}, {"77"}});
        table.updateData(del);
        QCOMPARE(deleteCount.last().at(0).toInt(), 3);
        QCOMPARE(removed.count(), 2);
        QCOMPARE(table.rowCount(), 3);
        QCOMPARE(table.rowIndex(11), 2);
        QCOMPARE(empty.count(), 0);
        CTJDbResp rest = dbResponse("t", NotificationDelete, {"rowid"}, {{"1"}, {"3"}, {"11"}});
        table.updateData(rest);
        QCOMPARE(table.rowCount(), 0);
        QCOMPARE(empty.count(), 1);

        // Types that are not notifications change nothing.
        for (int type : {3, 0, 8}) {
            CTJDbResp other = dbResponse("t", type, {"rowid", "name"}, {{"5", "five"}});
            QTest::ignoreMessage(QtDebugMsg, qPrintable(QString("Unsupported notification type: %1, table calls").arg(type)));
            table.updateData(other);
        }
        QCOMPARE(table.rowCount(), 0);
    }

    void notificationsWithoutRowIdAreRefused()
    {
        CTavoDbTable table(QStringLiteral("plain"));
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 1 rows and 2 columns");
        CTJDbResp sync = dbResponse("t", NotificationSync, {"id", "name"}, {{"1", "one"}});
        table.updateData(sync);
        QSignalSpy counts(&table, &CTavoDbTable::totalInsertRowsFromTJDB);
        const char* const texts[] = {
            "Warning: received an insertion notification but the cached table [plain] does not contain rowID information.",
            "Warning: received a update notification but the cached table [plain] does not contain rowID information.",
            "Warning: received a delete notification but the cached table [plain] does not contain rowID information.",
        };
        const int types[] = {NotificationInsert, NotificationUpdate, NotificationDelete};
        for (int i = 0; i < 3; ++i) {
            CTJDbResp n = dbResponse("t", types[i], {"id", "name"}, {{"1", "changed"}, {"2", "two"}});
            QTest::ignoreMessage(QtDebugMsg, texts[i]);
            table.updateData(n);
        }
        QCOMPARE(counts.count(), 0);
        QCOMPARE(table.rowCount(), 1);
        QCOMPARE(table.record(0).value(1).toString(), QStringLiteral("one"));
    }

    void batchesThatDoNotFit()
    {
        CTavoDbTable table(QStringLiteral("t"));
        QAbstractItemModelTester tester(&table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        CTJDbResp sync = dbResponse("t", NotificationSync, {"rowid", "name"}, contactRows(1, 2), 10);
        table.updateData(sync);

        // A batch that overtook others takes its place; the rows before it
        // stay empty until their own batch comes.
        CTJDbResp early = dbResponse("t", NotificationSync, {"rowid", "name"}, contactRows(6, 7), 10, 5);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        table.updateData(early);
        QCOMPARE(table.rowCount(), 7);
        QCOMPARE(table.rowId(2), -1LL);
        QCOMPARE(table.rowIndex(7), 6);

        // A last row far beyond the batch adds only the rows the batch has.
        CTJDbResp wide = dbResponse("t", NotificationSync, {"rowid", "name"}, contactRows(3, 4), 10, 2);
        wide.set(ReqElementEndRow, 2000000000);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        table.updateData(wide);
        QCOMPARE(table.rowCount(), 7);
        QCOMPARE(cells(table, 3), (QStringList{"4", "name 4"}));

        // A batch with more rows than its range: the rows beyond it are logged.
        CTJDbResp over = dbResponse("t", NotificationSync, {"rowid", "name"}, contactRows(5, 7), 10, 4);
        over.set(ReqElementEndRow, 4);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 3 rows and 2 columns");
        QTest::ignoreMessage(QtDebugMsg, "CTavoDbTable::appendRows failed, nStartRow = 4, nEndRow = 4, m_data.size = 7");
        table.updateData(over);
        QCOMPARE(table.rowCount(), 7);
        QCOMPARE(table.rowId(4), 5LL);

        // A place no table reaches is a broken answer: dropped whole.
        CTJDbResp far = dbResponse("t", NotificationSync, {"rowid", "name"}, contactRows(8, 9), 10, 2147483645);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        QTest::ignoreMessage(QtDebugMsg, "CTavoDbTable::appendRows failed, nStartRow = 2147483645, nEndRow = 2147483646, m_data.size = 7");
        table.updateData(far);
        QCOMPARE(table.rowCount(), 7);

        // Missing numbers count as 0; a short batch row gets empty cells.
        CTJDbResp bare;
        bare.set(ReqElementNotification, NotificationSync);
        bare.setColumns({"rowid", "name", "extra"});
        bare.addRow({"8", "eight"});
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 1 rows and 3 columns");
        table.updateData(bare);
        QCOMPARE(table.rowCount(), 1);
        QCOMPARE(cells(table, 0), (QStringList{"8", "eight", "~"}));
    }

    void modelOperations()
    {
        CTavoDbTable table;
        QAbstractItemModelTester tester(&table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(!table.insertRows(1, 1));
        QVERIFY(table.insertColumns(0, 2));
        QVERIFY(table.insertRows(0, 3));
        QCOMPARE(table.rowCount(), 3);
        QCOMPARE(table.record(2).size(), 2);
        QVERIFY(!table.insertRows(0, 0));
        QVERIFY(!table.removeRows(2, 2));
        QVERIFY(!table.insertColumns(3, 1));
        QVERIFY(!table.removeColumns(1, 2));
        QVERIFY(table.removeRows(1, 2));
        QVERIFY(table.removeColumns(0, 1));
        QCOMPARE(table.columnCount(), 1);
        QCOMPARE(table.record(0).size(), 1);
        QCOMPARE(table.rowCount(table.index(0, 0)), 0);

        // Columns inserted before the row id column move it along; removing it forgets it.
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 1 rows and 2 columns");
        CTJDbResp sync = dbResponse("t", NotificationSync, {"rowid", "name"}, {{"5", "five"}});
        table.updateData(sync);
        QVERIFY(table.insertColumns(0, 1));
        QCOMPARE(table.rowIdColumn(), 1);
        QCOMPARE(table.rowId(0), 5LL);
        QVERIFY(table.removeColumns(1, 1));
        QCOMPARE(table.rowIdColumn(), -1);

    }
};

QTEST_GUILESS_MAIN(TestDbTable)
#include "tst_dbtable.moc"
