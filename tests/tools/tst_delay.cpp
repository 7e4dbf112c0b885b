// tavoToolsDelay: blocks its caller for the time asked while the event loop
// goes on, ends early when the application quits, refuses negative times.
#include <QElapsedTimer>
#include <QtTest>

#include "tools/TavoTools.h"

class TestDelay : public QObject
{
    Q_OBJECT

private slots:
    void blocksWhileEventsGoOn()
    {
        int ticks = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, this, [&] { ++ticks; });
        ticker.start(20);
        QElapsedTimer clock;
        clock.start();
        tavoToolsDelay(300);
        QVERIFY(clock.elapsed() >= 300);
        // Timers of the caller's thread fired meanwhile.
        QVERIFY2(ticks >= 3, qPrintable(QString::number(ticks)));
    }

    void zeroAndNegativeReturnAtOnce()
    {
        QElapsedTimer clock;
        clock.start();
        tavoToolsDelay(0);
        QTest::ignoreMessage(QtDebugMsg, "tavoToolsDelay: negative delay -5 ms ignored");
        tavoToolsDelay(-5);
        QVERIFY(clock.elapsed() < 200);
    }

    void endsWhenTheApplicationQuits()
    {
        qint64 waited = -1;
        QTimer::singleShot(0, this, [&] {
            QElapsedTimer clock;
            clock.start();
            tavoToolsDelay(20000);
            waited = clock.elapsed();
        });
        QTimer::singleShot(200, this, [] { QCoreApplication::exit(0); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY2(waited >= 150 && waited < 10000, qPrintable(QString::number(waited)));
    }
};

QTEST_GUILESS_MAIN(TestDelay)
#include "tst_delay.moc"
