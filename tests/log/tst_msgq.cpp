// Queue and list primitives on real POSIX message queues.
#include <QElapsedTimer>
#include <QtTest>
#include <fcntl.h>
#include <unistd.h>

#include "LogTestSupport.h"
#include "log/Mq.h"
#include "log/RtosProtMsgQ.h"
#include "log/UtilLinkedList.h"

namespace {
rtosProtMsgQInfo describe(const char* tag, int capacity, int size, int options)
{
    rtosProtMsgQInfo info;
    rtosProtMsgQInfoZero(&info);
    const QByteArray name = QByteArray("tst_msgq_") + tag + "_" + QByteArray::number(getpid());
    rtosProtMsgQInfoSetName(&info, name.constData());
    rtosProtMsgQCreate(&info, capacity, size, options);
    return info;
}

struct Item
{
    UtilLinkedListEntryT links;
    int value;
};

int matchValue(const void* data, const void* key)
{
    return *static_cast<const int*>(data) == *static_cast<const int*>(key);
}

// The values read forwards, checked against the backward walk.
QList<int> values(const UtilLinkedListT& list)
{
    QList<int> out, back;
    for (UtilLinkedListEntryT* e = utilLinkedListFirst(&list); e; e = utilLinkedListNext(e))
        out << *static_cast<int*>(utilLinkedListEntryToDataP(e));
    for (UtilLinkedListEntryT* e = utilLinkedListLast(&list); e; e = utilLinkedListPrev(e))
        back.prepend(*static_cast<int*>(utilLinkedListEntryToDataP(e)));
    if (back != out || utilLinkedListCount(&list) != out.size())
        return {-1};
    return out;
}
}  // namespace

class TestMsgQ : public QObject
{
    Q_OBJECT
private slots:
    void description()
    {
        rtosProtMsgQInfo info;
        const QByteArray longName(300, 'q');
        rtosProtMsgQInfoSetName(&info, longName.constData());
        QCOMPARE(QByteArray(info.name), "/" + longName.left(251));

        // Only option bit 4 makes a blocking queue.
        auto flags = [&info](int options) {
            rtosProtMsgQInfoSetOptions(&info, options);
            return info.flags;
        };
        for (int options : {0, 1, 2, 4, 8, 12, 0x20})
            QCOMPARE(flags(options), 2048);
        QCOMPARE(flags(0x10), 0);
        QCOMPARE(flags(0x1C), 0);

        const QByteArray refused =
            logtest::captureStdout([] { QCOMPARE(rtosProtMsgQCreate(nullptr, 10, 548, 12), -1); });
        QCOMPARE(refused, QByteArray("info=(nil),qsize=10,msgSize=548,option=0xc"));
        info = describe("describe", 5, 64, 12);
        QCOMPARE(info.capacity, 5);
        QCOMPARE(info.msgSize, 64);
        // No system call happened: the queue does not exist yet.
        QCOMPARE(mqOpen(info.name, O_RDONLY, 0, nullptr), (mqd_t)-1);
        QCOMPARE(errno, ENOENT);
    }

    void sendReceiveCountDelete()
    {
        rtosProtMsgQInfo info = describe("roundtrip", 4, 32, 12);
        rtosProtMsgQ tx = rtosProtMsgQOpen(&info, RTOS_PROT_MSGQ_MODE_TX);
        rtosProtMsgQ rx = rtosProtMsgQOpenExisting(&info, RTOS_PROT_MSGQ_MODE_RX);
        QVERIFY(tx && rx);
        QCOMPARE(rtosProtMsgQSend(tx, "low", 4, 0, 1), 0);
        QCOMPARE(rtosProtMsgQSend(tx, "high", 5, 0, 5), 0);
        QCOMPARE(rtosProtMsgQSend(nullptr, "x", 1, 0, 1), -1);
        QCOMPARE(rtosProtMsgQSend(tx, nullptr, 1, 0, 1), -1);
        QCOMPARE(rtosProtMsgQNumMsgs(rx), 2);
        char buffer[32];
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), 5);
        QCOMPARE(QByteArray(buffer), QByteArray("high"));  // priority first
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), 4);
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), -1);  // empty, no wait

        QCOMPARE(rtosProtMsgQDelete(&info), 0);
        QVERIFY(!rtosProtMsgQOpenExisting(&info, RTOS_PROT_MSGQ_MODE_RX));
        // Open handles outlive the name.
        QCOMPARE(rtosProtMsgQSend(tx, "late", 5, 0, 1), 0);
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), 5);
        QCOMPARE(rtosProtMsgQClose(tx), 0);
        QCOMPARE(rtosProtMsgQClose(rx), 0);
    }

    void fullQueueTimeouts_data()
    {
        QTest::addColumn<int>("options");
        QTest::newRow("non-blocking") << 12;
        QTest::newRow("blocking") << 0x10;
    }
    void fullQueueTimeouts()
    {
        QFETCH(int, options);
        rtosProtMsgQInfo info = describe(QTest::currentDataTag(), 2, 16, options);
        rtosProtMsgQ q = rtosProtMsgQOpen(&info, RTOS_PROT_MSGQ_MODE_RXTX);
        QVERIFY(q);
        QCOMPARE(rtosProtMsgQSend(q, "a", 2, 0, 1), 0);
        QCOMPARE(rtosProtMsgQSend(q, "b", 2, 0, 1), 0);

        QElapsedTimer timer;
        timer.start();
        QCOMPARE(rtosProtMsgQSend(q, "c", 2, 0, 1), -1);
        QVERIFY2(timer.elapsed() < 50, "timeout 0 must not wait");

        const int ticks = rtosLinuxProtGetTicksPerSec() / 10;  // 100 ms
        timer.restart();
        QCOMPARE(rtosProtMsgQSend(q, "c", 2, ticks, 1), -1);
        if (options & RTOS_PROT_MSGQ_OPT_BLOCKING)
            QVERIFY2(timer.elapsed() >= 90, "a blocking queue waits for the timeout");
        else
            QVERIFY2(timer.elapsed() < 50, "a non-blocking queue never waits");

        char buffer[16];
        QCOMPARE(rtosProtMsgQReceive(q, buffer, sizeof buffer, ticks), 2);
        QCOMPARE(rtosProtMsgQSend(q, "c", 2, ticks, 1), 0);
        rtosProtMsgQDelete(&info);
        rtosProtMsgQClose(q);
    }

    void openFailureReturnsNull()
    {
        rtosProtMsgQInfo info;
        rtosProtMsgQInfoZero(&info);
        QVERIFY(!rtosProtMsgQOpen(&info, RTOS_PROT_MSGQ_MODE_TX));  // no name
        QVERIFY(!rtosProtMsgQOpen(nullptr, RTOS_PROT_MSGQ_MODE_TX));
        info = describe("bad", 1, 1 << 30, 12);  // message size the system refuses
        rtosProtMsgQ q = nullptr;
        const QByteArray out =
            logtest::captureStdout([&] { q = rtosProtMsgQOpen(&info, RTOS_PROT_MSGQ_MODE_TX); });
        QVERIFY(!q);
        QVERIFY2(out.startsWith("rtosLinuxMsg::rtosProtMsgQOpen:failed: qName=<" + QByteArray(info.name)
                                + "> mid=<0x0> errno=<22:"),
                 out.constData());
    }

    void listOperations()
    {
        UtilLinkedListT list;
        utilLinkedListInit(&list);
        QVERIFY(!utilLinkedListGet(&list));
        Item items[5];
        for (int i = 0; i < 5; ++i)
            items[i].value = i;
        utilLinkedListAdd(&list, &items[1].links);
        utilLinkedListAdd(&list, &items[3].links);
        utilLinkedListAdd(nullptr, &items[4].links);
        utilLinkedListAdd(&list, nullptr);
        utilLinkedListInsert(&list, nullptr, &items[0].links);         // head
        utilLinkedListInsert(&list, &items[1].links, &items[2].links);  // middle
        utilLinkedListInsert(&list, &items[3].links, &items[4].links);  // tail
        QCOMPARE(values(list), QList<int>({0, 1, 2, 3, 4}));
        QCOMPARE(utilLinkedListNth(&list, 3), &items[3].links);
        QVERIFY(!utilLinkedListNth(&list, 5));
        const int key = 2;
        QCOMPARE(utilLinkedListFind(&list, matchValue, &key), &items[2].links);

        utilLinkedListDel(&list, &items[0].links);
        utilLinkedListDel(&list, &items[4].links);
        utilLinkedListDel(&list, &items[2].links);
        utilLinkedListDel(&list, &items[2].links);  // no longer in the list
        QCOMPARE(values(list), QList<int>({1, 3}));
        QCOMPARE(utilLinkedListGet(&list), &items[1].links);
        QCOMPARE(values(list), QList<int>({3}));

        utilLinkedListInit(&list);
        for (int i = 0; i < 100; ++i)
            utilLinkedListAdd(&list, static_cast<UtilLinkedListEntryT*>(malloc(sizeof(Item))));
        QCOMPARE(utilLinkedListCount(&list), 100);
        utilLinkedListFree(&list);  // LeakSanitizer checks the entries went
        QCOMPARE(values(list), QList<int>());
    }
};

QTEST_GUILESS_MAIN(TestMsgQ)
#include "tst_msgq.moc"
