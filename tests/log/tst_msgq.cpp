// Queue and list primitives on real POSIX message queues.
#include <QElapsedTimer>
#include <QtTest>
#include <fcntl.h>
#include <unistd.h>

#include "log/Mq.h"
#include "log/RtosProtMsgQ.h"
#include "log/UtilLinkedList.h"

namespace {
QByteArray runName(const char* tag)
{
    return QByteArray("tst_msgq_") + tag + "_" + QByteArray::number(getpid());
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

QList<int> values(const UtilLinkedListT& list)
{
    QList<int> out;
    for (UtilLinkedListEntryT* e = utilLinkedListFirst(&list); e; e = utilLinkedListNext(e))
        out << *static_cast<int*>(utilLinkedListEntryToDataP(e));
    return out;
}

QList<int> valuesBackwards(const UtilLinkedListT& list)
{
    QList<int> out;
    for (UtilLinkedListEntryT* e = utilLinkedListLast(&list); e; e = utilLinkedListPrev(e))
        out.prepend(*static_cast<int*>(utilLinkedListEntryToDataP(e)));
    return out;
}
}  // namespace

class TestMsgQ : public QObject
{
    Q_OBJECT
private slots:
    void descriptionNameIsCutAndTerminated()
    {
        rtosProtMsgQInfo info;
        memset(&info, 0x55, sizeof info);
        rtosProtMsgQInfoZero(&info);
        QCOMPARE(info.capacity, 0);
        QCOMPARE(info.name[0], '\0');

        const QByteArray longName(300, 'q');
        rtosProtMsgQInfoSetName(&info, longName.constData());
        QCOMPARE(strlen(info.name), size_t(1 + 251));
        QCOMPARE(QByteArray(info.name), "/" + longName.left(251));

        rtosProtMsgQInfoSetName(&info, "smqlogq");
        QCOMPARE(QByteArray(info.name), QByteArray("/smqlogq"));
        rtosProtMsgQInfoSetName(&info, nullptr);
        QCOMPARE(QByteArray(info.name), QByteArray("/"));
    }

    void optionBit4SelectsBlocking()
    {
        rtosProtMsgQInfo info;
        rtosProtMsgQInfoZero(&info);
        for (int options : {0, 1, 2, 4, 8, 12, 0x20}) {
            rtosProtMsgQInfoSetOptions(&info, options);
            QCOMPARE(info.flags, 2048);
        }
        rtosProtMsgQInfoSetOptions(&info, 0x10);
        QCOMPARE(info.flags, 0);
        rtosProtMsgQInfoSetOptions(&info, 0x1C);
        QCOMPARE(info.flags, 0);
    }

    void createOnlyDescribes()
    {
        QCOMPARE(rtosProtMsgQCreate(nullptr, 10, 548, 12), -1);
        rtosProtMsgQInfo info;
        rtosProtMsgQInfoZero(&info);
        rtosProtMsgQInfoSetName(&info, runName("describe").constData());
        QCOMPARE(rtosProtMsgQCreate(&info, 5, 64, 12), 0);
        QCOMPARE(info.capacity, 5);
        QCOMPARE(info.msgSize, 64);
        QCOMPARE(info.flags, O_NONBLOCK);
        // No system call happened: the queue does not exist yet.
        QCOMPARE(mqOpen(info.name, O_RDONLY, 0, nullptr), (mqd_t)-1);
        QCOMPARE(errno, ENOENT);
        QVERIFY(!rtosProtMsgQOpenExisting(&info, RTOS_PROT_MSGQ_MODE_RX));
    }

    void sendReceiveCountDelete()
    {
        rtosProtMsgQInfo info;
        rtosProtMsgQInfoZero(&info);
        rtosProtMsgQInfoSetName(&info, runName("roundtrip").constData());
        QCOMPARE(rtosProtMsgQCreate(&info, 4, 32, 12), 0);
        rtosProtMsgQ tx = rtosProtMsgQOpen(&info, RTOS_PROT_MSGQ_MODE_TX);
        QVERIFY(tx);
        rtosProtMsgQ rx = rtosProtMsgQOpenExisting(&info, RTOS_PROT_MSGQ_MODE_RX);
        QVERIFY(rx);

        QCOMPARE(rtosProtMsgQNumMsgs(tx), 0);
        QCOMPARE(rtosProtMsgQSend(tx, "low", 4, 0, 1), 0);
        QCOMPARE(rtosProtMsgQSend(tx, "high", 5, 0, 5), 0);
        QCOMPARE(rtosProtMsgQNumMsgs(rx), 2);
        char buffer[32];
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), 5);
        QCOMPARE(QByteArray(buffer), QByteArray("high"));  // priority first
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), 4);
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), -1);  // empty, no wait

        QCOMPARE(rtosProtMsgQSend(nullptr, "x", 1, 0, 1), -1);
        QCOMPARE(rtosProtMsgQSend(tx, nullptr, 1, 0, 1), -1);
        QCOMPARE(rtosProtMsgQSend(tx, buffer, 33, 0, 1), -1);  // above the message size
        QCOMPARE(rtosProtMsgQNumMsgs(nullptr), -1);

        QCOMPARE(rtosProtMsgQDelete(&info), 0);
        QVERIFY(!rtosProtMsgQOpenExisting(&info, RTOS_PROT_MSGQ_MODE_RX));
        // Open handles outlive the name.
        QCOMPARE(rtosProtMsgQSend(tx, "late", 5, 0, 1), 0);
        QCOMPARE(rtosProtMsgQReceive(rx, buffer, sizeof buffer, 0), 5);
        QCOMPARE(rtosProtMsgQClose(tx), 0);
        QCOMPARE(rtosProtMsgQClose(rx), 0);
        QCOMPARE(rtosProtMsgQClose(nullptr), -1);
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
        rtosProtMsgQInfo info;
        rtosProtMsgQInfoZero(&info);
        rtosProtMsgQInfoSetName(&info, runName(QTest::currentDataTag()).constData());
        QCOMPARE(rtosProtMsgQCreate(&info, 2, 16, options), 0);
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
        rtosProtMsgQInfoSetName(&info, runName("bad").constData());
        rtosProtMsgQCreate(&info, 1, 1 << 30, 12);  // message size the system refuses
        QVERIFY(!rtosProtMsgQOpen(&info, RTOS_PROT_MSGQ_MODE_TX));
    }

    void listOperations()
    {
        UtilLinkedListT list;
        utilLinkedListInit(&list);
        QCOMPARE(utilLinkedListCount(&list), 0);
        QVERIFY(!utilLinkedListFirst(&list) && !utilLinkedListLast(&list));
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
        QCOMPARE(valuesBackwards(list), QList<int>({0, 1, 2, 3, 4}));
        QCOMPARE(utilLinkedListCount(&list), 5);
        QCOMPARE(utilLinkedListNth(&list, 3), &items[3].links);
        QVERIFY(!utilLinkedListNth(&list, 5));
        QVERIFY(!utilLinkedListNth(&list, -1));

        const int key = 2;
        QCOMPARE(utilLinkedListFind(&list, matchValue, &key), &items[2].links);
        const int missing = 9;
        QVERIFY(!utilLinkedListFind(&list, matchValue, &missing));

        utilLinkedListDel(&list, &items[0].links);
        utilLinkedListDel(&list, &items[4].links);
        utilLinkedListDel(&list, &items[2].links);
        QCOMPARE(values(list), QList<int>({1, 3}));
        QCOMPARE(valuesBackwards(list), QList<int>({1, 3}));
        utilLinkedListDel(&list, &items[2].links);  // no longer in the list
        QCOMPARE(utilLinkedListCount(&list), 2);

        QCOMPARE(utilLinkedListGet(&list), &items[1].links);
        QCOMPARE(utilLinkedListGet(&list), &items[3].links);
        QCOMPARE(utilLinkedListCount(&list), 0);
        QVERIFY(!utilLinkedListFirst(&list) && !utilLinkedListLast(&list));
    }

    void listFreeReleasesEntries()
    {
        UtilLinkedListT list;
        utilLinkedListInit(&list);
        for (int i = 0; i < 100; ++i) {
            auto* item = static_cast<Item*>(malloc(sizeof(Item)));
            item->value = i;
            utilLinkedListAdd(&list, &item->links);
        }
        QCOMPARE(utilLinkedListCount(&list), 100);
        utilLinkedListFree(&list);  // LeakSanitizer checks the entries went
        QCOMPARE(utilLinkedListCount(&list), 0);
        QVERIFY(!utilLinkedListFirst(&list));
    }
};

QTEST_GUILESS_MAIN(TestMsgQ)
#include "tst_msgq.moc"
