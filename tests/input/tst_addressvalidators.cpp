// The address rules of the network fields: the free functions by kind of
// address, and the two validators as a QLineEdit sees them while typing.
#include <QtTest>

#include <QLineEdit>

#include "input/CTavoIPv6AddressValidator.h"
#include "input/CTavoIpAddressValidator.h"
#include "input/TavoIpAddressValidation.h"

class TestAddressValidators : public QObject
{
    Q_OBJECT

private slots:
    // One row per text: what each family of checks says of it.
    void addressChecks_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("ipv4");
        QTest::addColumn<bool>("ipv6");        // isValidIPv6Address without prefix
        QTest::addColumn<bool>("ipv6Prefix");  // isValidIPv6Address with prefix
        QTest::addColumn<bool>("configure");   // isValidIPv6ToConfigure

        QTest::newRow("ipv4") << "192.168.1.20" << true << false << false << false;
        QTest::newRow("ipv4 group above 255") << "192.168.1.256" << false << false << false << false;
        QTest::newRow("ipv4 short form, as QHostAddress reads it") << "10.0.1" << true << false << false << false;
        QTest::newRow("ipv4 with port") << "10.0.0.1:5060" << false << false << false << false;
        QTest::newRow("host name") << "pbx.example.com" << false << false << false << false;
        QTest::newRow("empty") << "" << false << false << false << false;
        QTest::newRow("global") << "2001:db8::1" << false << true << false << true;
        QTest::newRow("global with prefix") << "2001:db8::1/64" << false << false << true << false;
        QTest::newRow("prefix 128 refused") << "2001:db8::1/128" << false << false << false << false;
        QTest::newRow("prefix four digits") << "2001:db8::1/0064" << false << false << false << false;
        QTest::newRow("empty prefix") << "2001:db8::1/" << false << false << false << false;
        QTest::newRow("loopback") << "::1" << false << false << false << false;
        QTest::newRow("full form") << "2001:0db8:0000:0000:0000:ff00:0042:8329" << false << true << false << true;
        QTest::newRow("nine groups") << "1:2:3:4:5:6:7:8:9" << false << false << false << false;
        QTest::newRow("five hex digits") << "2001:db8::12345" << false << false << false << false;
        QTest::newRow("two double colons") << "2001::db8::1" << false << false << false << false;
        QTest::newRow("not hex") << "2001:db8::g" << false << false << false << false;
        QTest::newRow("mapped ipv4 (dots refused)") << "::ffff:10.0.0.1" << false << false << false << true;
        QTest::newRow("scope id refused") << "fe80::1%eth0" << false << false << false << true;
        QTest::newRow("bracketed") << "[2001:db8::1]" << false << false << false << false;
    }

    void addressChecks()
    {
        QFETCH(QString, text);
        QFETCH(bool, ipv4);
        QFETCH(bool, ipv6);
        QCOMPARE(isValidIPv4Address(text), ipv4);
        QCOMPARE(isValidIPv6Address(text, false), ipv6);
        QTEST(isValidIPv6Address(text, true), "ipv6Prefix");
        QTEST(isValidIPv6ToConfigure(text), "configure");
        // The selector types: 1 IPv4, 2 IPv6 of any configurable kind, 3 either.
        QCOMPARE(isValidIPAddress(text, 1, QString()), ipv4);
        QCOMPARE(isValidIPAddress(text, 2, QString()), ipv6);
        QCOMPARE(isValidIPAddress(text, 3, QString()), ipv4 || ipv6);
        QVERIFY(!isValidIPAddress(text, 0, QString()));
        QVERIFY(!isValidIPAddress(text, 4, QString()));
    }

    void prefixes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::newRow("0") << "0" << true;
        QTest::newRow("128") << "128" << false;
        QTest::newRow("leading zeros") << "007" << true;
        QTest::newRow("four digits") << "0001" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("sign") << "-1" << false;
        QTest::newRow("blank") << " 6" << false;
        QTest::newRow("hex") << "1f" << false;
    }

    void prefixes()
    {
        QFETCH(QString, text);
        QTEST(isValidIPv6Prefix(text), "valid");
    }

    // Each kind by the sixteen bytes of the address before the "/".
    void kinds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("valid");

        QTest::newRow("LLA fe80") << "fe80::1/64" << "LLA" << true;
        QTest::newRow("LLA needs a prefix") << "fe80::1" << "LLA" << false;
        QTest::newRow("LLA fe81 is outside the narrow test") << "fe81::1/64" << "LLA" << false;
        QTest::newRow("ULA fd") << "fd12:3456::1/48" << "ULA" << true;
        QTest::newRow("ULA fc") << "fc00::1/7" << "ULA" << true;
        QTest::newRow("ULA fe is not") << "fe00::1/7" << "ULA" << false;
        QTest::newRow("ULA needs a prefix") << "fd12::1" << "ULA" << false;
        QTest::newRow("MCA") << "ff02::1" << "MCA" << true;
        QTest::newRow("MCA with prefix refused") << "ff02::1/8" << "MCA" << false;
        QTest::newRow("GTW global") << "2001:db8::1" << "GTW" << true;
        QTest::newRow("GTW with prefix refused") << "2001:db8::1/64" << "GTW" << false;
        QTest::newRow("GTW link local") << "fe80::1" << "GTW" << true;
        QTest::newRow("GLA global") << "2001:db8::1/64" << "GLA" << true;
        QTest::newRow("GLA without prefix refused") << "2001:db8::1" << "GLA" << false;
        QTest::newRow("GLA not link local") << "fe80::1/64" << "GLA" << false;
        // The multicast test wants no prefix, so a prefixed multicast passes as global.
        QTest::newRow("GLA multicast with prefix passes") << "ff02::1/64" << "GLA" << true;
        QTest::newRow("ANY loopback is IPv6") << "::1" << "ANY" << true;
        QTest::newRow("ANY ipv4") << "10.0.0.1" << "ANY" << false;
        QTest::newRow("ANY with prefix") << "2001:db8::1/64" << "ANY" << false;
        QTest::newRow("empty kind") << "2001:db8::1" << "" << true;
        QTest::newRow("empty kind with prefix") << "2001:db8::1/64" << "" << false;
        QTest::newRow("unknown kind") << "2001:db8::1" << "XYZ" << false;
        QTest::newRow("lower case kind") << "fe80::1/64" << "lla" << false;
    }

    void kinds()
    {
        QFETCH(QString, text);
        QFETCH(QString, kind);
        QFETCH(bool, valid);
        QCOMPARE(isValidIPv6AddressType(text, kind), valid);
        QCOMPARE(isValidIPAddress(text, 2, kind), valid);
    }

    void kindFunctionsAgreeWithTheSelector()
    {
        const QString global = "2001:db8::1";
        QVERIFY(isValidGlobalAddress(global + "/64"));
        QVERIFY(isValidGatewayAddress(global));
        QVERIFY(!isValidGlobalAddress(global));
        QVERIFY(!isValidGatewayAddress(global + "/64"));
        QVERIFY(isValidLinkLocalAddress("FE80::abcd/10"));
        QVERIFY(isValidULAAddress("FD00::1/8"));
        QVERIFY(isValidMulticastAddress("FF05::2"));
    }

    // The IPv4 validator as the field's mask hands it texts: blanks are "_".
    void ipv4Validator_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("state");
        QTest::newRow("empty") << "" << int(QValidator::Acceptable);
        QTest::newRow("complete") << "192.168.001.020" << int(QValidator::Acceptable);
        QTest::newRow("blank groups skipped") << "19_.___.___.___" << int(QValidator::Acceptable);
        QTest::newRow("256") << "256.000.000.000" << int(QValidator::Invalid);
        QTest::newRow("five groups") << "1.2.3.4.5" << int(QValidator::Invalid);
        QTest::newRow("letters") << "1a.2.3.4" << int(QValidator::Invalid);
        QTest::newRow("empty group") << "1..3.4" << int(QValidator::Invalid);
        QTest::newRow("negative") << "-1.0.0.0" << int(QValidator::Acceptable);
    }

    void ipv4Validator()
    {
        QFETCH(QString, text);
        CTavoIpAddressValidator validator;
        int pos = 0;
        QTEST(int(validator.validate(text, pos)), "state");
    }

    void ipv6Validator_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("state");
        QTest::newRow("complete") << "2001:db8::1" << int(QValidator::Acceptable);
        QTest::newRow("blanks around complete") << " 2001:db8::1 " << int(QValidator::Acceptable);
        QTest::newRow("half typed") << "2001:db8:" << int(QValidator::Intermediate);
        QTest::newRow("with prefix") << "2001:db8::1/64" << int(QValidator::Intermediate);
        QTest::newRow("loopback") << "::1" << int(QValidator::Intermediate);
        QTest::newRow("empty") << "" << int(QValidator::Intermediate);
        QTest::newRow("not hex") << "2001:dbg::1" << int(QValidator::Invalid);
        QTest::newRow("ipv4") << "10.0.0.1" << int(QValidator::Invalid);
        QTest::newRow("prefix four digits") << "::1/1280" << int(QValidator::Invalid);
        QTest::newRow("nine groups") << "1:2:3:4:5:6:7:8:9" << int(QValidator::Invalid);
    }

    void ipv6Validator()
    {
        QFETCH(QString, text);
        CTavoIPv6AddressValidator validator;
        int pos = 0;
        QTEST(int(validator.validate(text, pos)), "state");
    }

    // A plain QLineEdit with the IPv6 validator refuses keys that leave the shape.
    void ipv6ValidatorGuardsALineEdit()
    {
        QLineEdit edit;
        CTavoIPv6AddressValidator validator;
        edit.setValidator(&validator);
        QTest::keyClicks(&edit, "fe80::zz1/64/");
        QCOMPARE(edit.text(), QString("fe80::1/64"));
        QVERIFY(!edit.hasAcceptableInput());
        edit.setText("2001:db8::1");
        QVERIFY(edit.hasAcceptableInput());
    }
};

QTEST_MAIN(TestAddressValidators)
#include "tst_addressvalidators.moc"
