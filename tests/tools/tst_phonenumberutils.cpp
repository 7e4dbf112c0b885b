// The punctuation people type into numbers, and only that, goes.
#include <QtTest>

#include "tools/PhoneNumberUtils.h"

class TestPhoneNumberUtils : public QObject
{
    Q_OBJECT

private slots:
    void removePunctuation_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("north american") << "(555) 123-4567" << "5551234567";
        QTest::newRow("plus kept") << "+1 555-123-4567" << "+15551234567";
        QTest::newRow("other marks kept") << "555.123/4567,#*" << "555.123/4567,#*";
        QTest::newRow("sip uri") << "sip:(555) 12" << "sip:55512";
        QTest::newRow("tab kept") << "1\t2" << "1\t2";
        QTest::newRow("only punctuation") << "( - ) " << "";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("letters") << "1-800-FLOWERS" << "1800FLOWERS";
        QTest::newRow("non-ascii") << QString::fromUtf8("（５５５） ２") << QString::fromUtf8("（５５５）２");
    }

    void removePunctuation()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(PhoneNumberUtils::removePunctuation(text), expected);
    }
};

QTEST_APPLESS_MAIN(TestPhoneNumberUtils)
#include "tst_phonenumberutils.moc"
