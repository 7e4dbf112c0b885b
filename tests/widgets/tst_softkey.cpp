// The softkey bar fed with real documents through a manager, as a host feeds
// it: pages of four with More, keys that share a place folded into a flyout,
// choice keys, context sensitive keys asked for by a field, the badge, the
// held talk key, font equalisation, and documents that ask for too much.
#include <QSignalSpy>
#include <QtTest>

#include "CTXMLRoot.h"
#include "CTXMLUriLib.h"
#include "input/CTavoInput.h"
#include "layout/CTavoLayoutMgr.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoFlyoutCluster.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoPageView.h"
#include "widgets/CTavoSoftkey.h"

namespace {

// A host that hands every softkey document to its bar, and asks for the
// document again when the phone's state changes.
class Host : public CTavoLayoutMgr
{
public:
    CTavoSoftkey* bar;
    CTavoFlyoutCluster* flyout;

    explicit Host(const QByteArray& barStyle)
        : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), true)
    {
        resize(800, 480);
        bar = new CTavoSoftkey(this);
        QByteArray text = "CTavoSoftkey { size: 800x64; location: 0:416; background: #0c121e; " + barStyle + " }"
                          " CTavoPageView#softkey-pageview { size: 800x56; location: 0:4; page-layout: 4x1;"
                          " item-gap: 2; inter-page-gap: 4; enable-auto-scroll: false; }"
                          " CTavoButton { size: 196x56; font: 18px DejaVu Sans; }"
                          " CTavoLabelWidget#softkey-badge { size: 14x14; location: 576:10; background: #e0453a; }";
        QByteArray name;
        bar->updateStyle(text.data(), name.data(), true);
        flyout = new CTavoFlyoutCluster(this);
        QByteArray flyoutStyle = "CTavoFlyoutCluster { size: 320x200; location: 0:0; items-maximum: 20; }"
                                 " CTavoFlyoutItem { size: 308x40; }";
        flyout->updateStyle(flyoutStyle.data(), name.data(), true);
        bar->setFlyout(flyout);
        QObject::connect(bar, &CTavoSoftkey::softkeyChanged, bar, [this] {
            QList<int> excluded;
            bar->set(bar->getXMLSoftKeyData(), excluded, SoftkeyLayoutDefault, true);
        });
        show();
    }
    void deliver(const QByteArray& softkeys)
    {
        onNewDocument("<TXML>" + softkeys + "</TXML>", GuiAppsTavoapp, GuiAppsMsgTxml);
    }

protected:
    void handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type) override
    {
        CTavoLayoutMgr::handleTXmlMsg(data, source, type);
        if (xmlRoot().flags & TXML_FLAG_SOFTKEYS) {
            QList<int> excluded;
            bar->set(xmlRoot().softkeys, excluded, SoftkeyLayoutDefault, false);
        }
    }
};

QByteArray key(const char* label, const char* url, int position, const QByteArray& more = QByteArray())
{
    return "<Softkey url=\"" + QByteArray(url) + "\" label=\"" + label + "\" position=\"" + QByteArray::number(position)
        + "\" " + more + "/>";
}

QByteArray keys(const QList<QByteArray>& list)
{
    QByteArray text = "<Softkeys type=\"1\">";
    for (const QByteArray& k : list)
        text += k;
    return text + "</Softkeys>";
}

QByteArray sixKeys()
{
    return keys({key("One", "softkey:1-One", 0), key("Two", "softkey:2-Two", 1), key("Three", "softkey:3-Three", 2),
                 key("Four", "softkey:4-Four", 3), key("Five", "softkey:5-Five", 4), key("Six", "softkey:6-Six", 5)});
}

// Labels of the visible buttons, in button order ("-" for a hidden one).
QStringList row(const CTavoSoftkey* bar)
{
    QStringList labels;
    for (CTavoButton* b : bar->buttons())
        labels << (b->isVisible() ? b->label() : QString("-"));
    return labels;
}

void click(CTavoButton* button)
{
    button->handleEvent(QEvent::MouseButtonPress, button->center());
    button->handleEvent(QEvent::MouseButtonRelease, button->center());
}

const QString kMore = QString::fromLatin1(CTXMLUriLib::uri(TxmlUriMore));
}  // namespace

class TestSoftkey : public QObject
{
    Q_OBJECT

private slots:
    void sixKeysMakeTwoPagesWithMoreAtEachPageEnd()
    {
        Host host("put-more-sk-at-page-end: true;");
        host.deliver(sixKeys());
        QVERIFY(host.bar->isVisible());
        QCOMPARE(row(host.bar), QStringList({"One", "Two", "Three", "More", "Four", "Five", "Six", "More"}));
        QCOMPARE(host.bar->button(3)->url(), kMore);
        QCOMPARE(host.bar->pageView()->pageCount(), 2);
        QCOMPARE(host.bar->pageView()->currentPage(), 0);
        // The second page's keys stand where the first page's stood, one page further on.
        QCOMPARE(host.bar->button(4)->left(), host.bar->button(0)->left() + 800);
        QCOMPARE(host.bar->button(0)->left(), 4);
        QCOMPARE(host.bar->button(1)->left(), 202);

        // More turns to page 2 and tells the core; on the last page it goes back to page 0.
        QSignalSpy signal(host.bar, &CTavoLayoutWidget::layoutWidgetSignal);
        click(host.bar->button(3));
        QCOMPARE(host.bar->pageView()->currentPage(), 1);
        click(host.bar->button(7));
        QCOMPARE(host.bar->pageView()->currentPage(), 0);
        const QString pageUri = QString::fromLatin1(CTXMLUriLib::uri(TxmlUriSoftkeyPage));
        QCOMPARE(signal.size(), 2);
        QCOMPARE(signal.at(0).at(0).toString(), pageUri);
        QCOMPARE(signal.at(0).at(1).toString(), QString("1"));
        QCOMPARE(signal.at(1).at(1).toString(), QString("0"));
        // Any other key goes to the core with its URL.
        click(host.bar->button(1));
        QCOMPARE(signal.size(), 3);
        QCOMPARE(signal.at(2).at(0).toString(), QString("softkey:2-Two"));

        // Four keys fit: no More. Buttons are reused, never made again.
        host.deliver(keys({key("A", "a", 0), key("B", "b", 1), key("C", "c", 2), key("D", "d", 3)}));
        QCOMPARE(row(host.bar), QStringList({"A", "B", "C", "D", "-", "-", "-", "-"}));
        QCOMPARE(host.bar->pageView()->currentPage(), 0);
        // Five keys: three, More, then two on the next page with More at its end.
        host.deliver(keys({key("A", "a", 0), key("B", "b", 1), key("C", "c", 2), key("D", "d", 3), key("E", "e", 4)}));
        QCOMPARE(row(host.bar), QStringList({"A", "B", "C", "More", "D", "E", "-", "More"}));
    }

    void withoutMoreKeysPositionsAreCompactedInOrder()
    {
        Host host("render-more-sk: false;");
        host.deliver(keys({key("Nine", "n", 9), key("Zero", "z", 0), key("More", "SoftKey:More", 1)}));
        // Position 9 is beyond a page of four: positions follow the document's order, More is left out.
        QCOMPARE(row(host.bar), QStringList({"Nine", "Zero", "-"}));
        int position = -1;
        QVERIFY(host.bar->getKeyFromUrl("n", position) >= 0);
        QCOMPARE(position, 0);
    }

    void anIdenticalDocumentIsSkippedUnlessForcedOrPermanentKeysExist()
    {
        Host host("");
        const QByteArray doc = keys({key("A", "a", 0), key("B", "b", 1)});
        host.deliver(doc);
        QCOMPARE(row(host.bar), QStringList({"A", "B"}));
        // Marked by hand: an identical document does not touch the buttons.
        host.bar->button(1)->setVisible(false);
        host.deliver(doc);
        QVERIFY(!host.bar->button(1)->isVisible());
        QList<int> excluded;
        host.bar->set(host.bar->getXMLSoftKeyData(), excluded, SoftkeyLayoutDefault, true);
        QVERIFY(host.bar->button(1)->isVisible());
        // Excluding a key is another document.
        excluded << 0;
        host.bar->set(host.bar->getXMLSoftKeyData(), excluded, SoftkeyLayoutDefault, false);
        QCOMPARE(row(host.bar), QStringList({"-", "B"}));

        Host permanent("permanent-softkeys: Settings=settings,Home=home;");
        QCOMPARE(permanent.bar->permanentSoftkeys().size(), 2);
        QCOMPARE(permanent.bar->permanentSoftkeys().at(1), qMakePair(QString("Home"), QString("home")));
        permanent.deliver(doc);
        permanent.bar->button(1)->setVisible(false);
        permanent.deliver(doc);
        QVERIFY(permanent.bar->button(1)->isVisible());
    }

    // The skin's permanent keys share place 0 with the document's key there and
    // open as one flyout under that key's group label; the rules of the phone's
    // state decide the entries each time it opens.
    void permanentKeysBecomeOneFlyoutThatFollowsTheLock()
    {
        Host host("render-more-as-flyout: true;"
                  " permanent-softkeys: Place a call=Action::PlaceaCall,Directory=directory,Emergency=softkey:911-Emergency;");
        host.deliver(keys({key("Full menu", "softkey:542-Menu", 0, "group=\"Menu\""), key("Hold", "softkey:9-Hold", 1),
                           key("Park", "softkey:10-Park", 2)}));
        QCOMPARE(row(host.bar).mid(0, 4), QStringList({"Menu", "Hold", "Park", "-"}));
        auto entries = [&host] {
            QStringList labels;
            for (int i = 0; i < host.flyout->cluster().count(); ++i)
                labels << QString::fromUtf8(host.flyout->cluster()[i].label);
            return labels;
        };
        click(host.bar->button(0));
        QVERIFY(host.flyout->isOpen());
        QCOMPARE(entries(), QStringList({"Place a call", "Directory", "Emergency", "Full menu"}));
        click(host.bar->button(0));
        QVERIFY(!host.flyout->isOpen());

        host.bar->setIsPhoneLocked(true);
        QCOMPARE(row(host.bar).mid(0, 4), QStringList({"Menu", "Hold", "Park", "-"}));
        click(host.bar->button(0));
        QVERIFY(host.flyout->isOpen());
        QCOMPARE(entries(), QStringList({"Place a call", "Emergency", "Full menu"}));
        click(host.bar->button(0));
        host.bar->setIsPhoneLocked(false);
        click(host.bar->button(0));
        QCOMPARE(entries(), QStringList({"Place a call", "Directory", "Emergency", "Full menu"}));
        click(host.bar->button(0));

        // Keys past the page all go to its last place, one flyout under a blank label.
        host.deliver(keys({key("Full menu", "softkey:542-Menu", 0, "group=\"Menu\""), key("B", "b", 1),
                           key("C", "c", 2), key("D", "d", 3), key("E", "e", 4), key("F", "f", 5)}));
        QCOMPARE(row(host.bar).mid(0, 5), QStringList({"Menu", "B", "C", " ", "-"}));
        const CTXMLSoftkey& last = host.bar->softkeys()[host.bar->overlapMap().value(3)];
        QCOMPARE(last.flyout.count(), 3);
        QCOMPARE(QByteArray(last.flyout[2].label), QByteArray("F"));
        QCOMPARE(int(last.flyout[2].icon.id), 312);
    }

    void keysOnOnePlaceOpenAFlyoutAboveTheKey()
    {
        Host host("");
        host.deliver(keys({key("Call", "softkey:1-Call", 0), key("Forward", "softkey:7-Forward", 1, "group=\"Transfer\""),
                           key("Transfer", "softkey:8-Transfer", 1, "group=\"Transfer\""),
                           key("Hold", "softkey:9-Hold", 2)}));
        QCOMPARE(row(host.bar), QStringList({"Call", "Transfer", "Hold", "-"}));
        const CTXMLSoftkey& folded = host.bar->softkeys()[host.bar->overlapMap().value(1)];
        QCOMPARE(folded.flyout.count(), 2);
        QCOMPARE(QByteArray(folded.flyout[0].url), QByteArray("softkey:7-Forward"));
        QCOMPARE(QByteArray(folded.flyout[1].label), QByteArray("Transfer"));
        // The folded key's own URL is only a marker.
        QCOMPARE(host.bar->button(1)->url(), QString("softke"));

        QSignalSpy signal(host.bar, &CTavoLayoutWidget::layoutWidgetSignal);
        click(host.bar->button(1));
        QVERIFY(host.flyout->isOpen());
        QCOMPARE(host.bar->openFlyoutKey(), 1);
        QCOMPARE(host.flyout->cluster().count(), 2);
        QCOMPARE(QByteArray(host.flyout->cluster()[0].data), QByteArray("softkey:7-Forward"));
        QCOMPARE(signal.size(), 0);
        // Above the key, its left edge on the key's (bottom-left corner of the key is the flyout's).
        const QRect keyOnScreen(host.bar->button(1)->topLeft() + host.bar->pos(), host.bar->button(1)->size());
        QCOMPARE(host.flyout->geometry().bottom(), keyOnScreen.top() - 1);
        QCOMPARE(host.flyout->x(), keyOnScreen.left());
        // A second press closes it, and the key no longer looks chosen; another
        // key closes it and goes to the core.
        QVERIFY(host.bar->button(1)->isFocused());
        click(host.bar->button(1));
        QVERIFY(!host.flyout->isOpen());
        QTRY_VERIFY(!host.bar->button(1)->isFocused());
        click(host.bar->button(1));
        QVERIFY(host.flyout->isOpen());
        click(host.bar->button(2));
        QVERIFY(!host.flyout->isOpen());
        QCOMPARE(signal.last().at(0).toString(), QString("softkey:9-Hold"));
    }

    void flyoutsOpenOnTheSideWhereTheyFit_data()
    {
        QTest::addColumn<int>("barY");
        QTest::addColumn<int>("position");
        QTest::addColumn<bool>("above");
        QTest::addColumn<bool>("alignedLeft");
        QTest::newRow("bottom left") << 416 << 0 << true << true;
        QTest::newRow("top right") << 0 << 3 << false << false;
    }

    void flyoutsOpenOnTheSideWhereTheyFit()
    {
        QFETCH(int, barY);
        QFETCH(int, position);
        QFETCH(bool, above);
        QFETCH(bool, alignedLeft);
        Host host(barY == 0 ? "location: 0:0;" : "");
        QByteArray doc = "<Softkeys type=\"1\">";
        for (int i = 0; i < 4; ++i) {
            doc += "<Softkey url=\"k" + QByteArray::number(i) + "\" label=\"K\" position=\"" + QByteArray::number(i)
                + "\"><Item label=\"Directory\" url=\"directory\"/><Item label=\"Hidden\" url=\"softkey:24-x\"/>"
                  "<Item label=\"Hold\" url=\"softkey:539-Hold\" value=\"hold\"/></Softkey>";
        }
        host.deliver(doc + "</Softkeys>");
        CTavoButton* button = host.bar->button(position);
        click(button);
        QVERIFY(host.flyout->isOpen());
        const QRect keyOnScreen(button->topLeft() + host.bar->pos(), button->size());
        const QRect f = host.flyout->geometry();
        if (above)
            QCOMPARE(f.bottom(), keyOnScreen.top() - 1);
        else
            QCOMPARE(f.top(), keyOnScreen.bottom() + 1);
        if (alignedLeft)
            QCOMPARE(f.left(), keyOnScreen.left());
        else
            QCOMPARE(f.right(), keyOnScreen.right());
        // Icons by URL, data from the value or the key's URL, and "softkey:24-" never shown.
        const CTXMLFlyoutCluster& content = host.flyout->cluster();
        QCOMPARE(content.count(), 2);
        QCOMPARE(int(content[0].icon.id), 28);
        QCOMPARE(QByteArray(content[0].data), "k" + QByteArray::number(position));
        QCOMPARE(int(content[1].icon.id), 346);
        QCOMPARE(QByteArray(content[1].data), QByteArray("hold"));
    }

    void choiceKeysGetAFlyoutOfTheirValues()
    {
        Host host("");
        host.deliver(keys({key("Low;Mid;High", "volume", 0, "values=\"1;2;3\" group=\"Volume\" default=\"1\""),
                           key("A;B", "broken", 1, "values=\"1;2;3\" group=\"Broken\""),
                           key("X;Y", "nogroup", 2, "values=\"x;y\"")}));
        // A choice key shows its group label, even an empty one.
        QCOMPARE(row(host.bar), QStringList({"Volume", "Broken", ""}));
        QCOMPARE(host.bar->softkeys()[2].flyout.count(), 2);
        const CTXMLSoftkey& volume = host.bar->softkeys()[0];
        QCOMPARE(volume.flyout.count(), 3);
        QCOMPARE(QByteArray(volume.flyout[2].label), QByteArray("High"));
        QCOMPARE(QByteArray(volume.flyout[2].value), QByteArray("3"));
        QVERIFY(volume.flyout[1].selected);
        // Lists of different lengths add no items.
        QCOMPARE(host.bar->softkeys()[1].flyout.count(), 0);
        // The choice made in the flyout is kept by URL.
        host.bar->onLocalEvent("volume", QString::fromLatin1(CTXMLUriLib::varname(TxmlVarValue)) + "=3");
        QCOMPARE(host.bar->selectedIndices().value("volume"), 2);
        QCOMPARE(host.bar->softkeys()[0].defaultIndex, 2);
    }

    void contextSensitiveKeysComeAndGoAtAFieldsRequest()
    {
        Host host("");
        const QString del = QString::fromLatin1(CTXMLUriLib::uri(TxmlUriBackspace));
        const QString mode = QString::fromLatin1(CTXMLUriLib::uri(TxmlUriToggleEditMode));
        const QByteArray doc = keys({key("Mode", "SoftKey:ToggleEditMode", 0, "type=\"2\""), key("Clear", "clear", 1),
                                     key("Delete", "SoftKey:Backspace", 1, "type=\"2\""), key("Back", "SoftKey:Back", 3)});
        host.deliver(doc);
        // Not asked for: the context keys take no button; the key beneath shows.
        QCOMPARE(row(host.bar), QStringList({"-", "Clear", "-", "Back"}));
        // A real field asks, through the manager's signal as a host connects it.
        QObject::connect(&host, &CTavoLayoutMgr::contextSensitiveSk, host.bar, &CTavoSoftkey::onCtxSensitiveSkReq);
        emit host.contextSensitiveSk(del, QString(), 1);
        QCOMPARE(row(host.bar), QStringList({"-", "Delete", "-", "Back"}));
        QVERIFY(host.bar->ctxKeys().contains(del));
        QVERIFY(host.bar->visibilityTimer().isActive());
        QCOMPARE(host.bar->visibilityTimer().interval(), 50);
        emit host.contextSensitiveSk(mode, QString(), 1);
        QCOMPARE(row(host.bar).first(), QString("Mode"));
        // The keys stay through a new document that still has them.
        host.deliver(keys({key("Mode", "SoftKey:ToggleEditMode", 0, "type=\"2\""), key("Clear", "clear", 1),
                           key("Delete", "SoftKey:Backspace", 1, "type=\"2\""), key("Done", "SoftKey:Back", 3)}));
        QCOMPARE(row(host.bar), QStringList({"Mode", "Delete", "-", "Done"}));
        // Hidden: the ordinary key at that place comes back.
        emit host.contextSensitiveSk(del, QString(), 0);
        QCOMPARE(row(host.bar), QStringList({"Mode", "Clear", "-", "Done"}));
        QVERIFY(!host.bar->ctxKeys().contains(del));
        // A URL no key has changes nothing.
        emit host.contextSensitiveSk("Nobody:Key", QString(), 1);
        QCOMPARE(row(host.bar), QStringList({"Mode", "Clear", "-", "Done"}));
        QVERIFY(!host.bar->ctxKeys().contains("Nobody:Key"));
        // Data with a single entry does not show a key.
        emit host.contextSensitiveSk(del, "only", 1);
        QCOMPARE(row(host.bar).at(1), QString("Clear"));
        // A document without them forgets them.
        host.deliver(keys({key("Back", "SoftKey:Back", 0)}));
        QVERIFY(host.bar->ctxKeys().isEmpty());

        // The validation key is not replayed while the lock screen dims it: the host is asked instead.
        host.setLockScreenDimming(true);
        host.deliver(keys({key("OK", "Softkey:ValidationRequired", 0, "type=\"2\"")}));
        emit host.contextSensitiveSk("Softkey:ValidationRequired", QString(), 1);
        QSignalSpy validate(host.bar, &CTavoSoftkey::validateCtxKeyUpdate);
        host.bar->resyncCtxSensitiveSks();
        QCOMPARE(validate.size(), 1);
    }

    void aRealFieldAsksForItsKeys()
    {
        Host host("");
        host.deliver(keys({key("Mode", "SoftKey:ToggleEditMode", 0, "type=\"2\""),
                           key("Delete", "SoftKey:Backspace", 1, "type=\"2\""), key("Back", "SoftKey:Back", 3)}));
        // The field on a window of its own, as tst_input shows them.
        CTavoLayoutWidget screen;
        screen.resize(400, 120);
        auto* field = new CTavoInput(&screen);
        field->setGeometry(10, 10, 300, 40);
        QObject::connect(field, &CTavoInput::contextSensitiveSk, host.bar, &CTavoSoftkey::onCtxSensitiveSkReq);
        field->set("Abc;abc", QString(), 64, 0, "");
        screen.show();
        QApplication::setActiveWindow(&screen);
        QVERIFY(QTest::qWaitForWindowActive(&screen));
        field->setFocus(Qt::TabFocusReason);
        QTRY_COMPARE(row(host.bar).first(), QString("Mode"));
    }

    void theVoicemailBadgeFollowsThePhonesState()
    {
        Host host("");
        host.deliver(keys({key("Voicemail", "softkey:541-Voicemail", 2)}));
        QVERIFY(!host.bar->badge()->isVisible());
        host.bar->setNumVoicemailMessages(3);
        QVERIFY(host.bar->badge()->isVisible());
        QCOMPARE(host.bar->badge()->text(), QString(" "));
        host.bar->setIsPhoneLocked(true);
        QVERIFY(!host.bar->badge()->isVisible());
        host.bar->setIsPhoneLocked(false);
        host.bar->setVoicemailLocation(3);
        QVERIFY(!host.bar->badge()->isVisible());
        // A software update shows it too, and so does a key "softkey:411-".
        host.bar->setIsSoftwareUpdateAvailable(true);
        QVERIFY(host.bar->badge()->isVisible());
        host.bar->setIsSoftwareUpdateAvailable(false);
        QVERIFY(!host.bar->badge()->isVisible());
        host.deliver(keys({key("Update", "softkey:411-Update", 0)}));
        QVERIFY(host.bar->badge()->isVisible());
        // Unchanged state asks for nothing.
        QSignalSpy changed(host.bar, &CTavoSoftkey::softkeyChanged);
        host.bar->setNumVoicemailMessages(3);
        host.bar->setIsMrPaired(true, 2);
        host.bar->setIsMrPaired(true);
        QCOMPARE(changed.size(), 1);
    }

    void aHeldTalkKeySurvivesANewDocument()
    {
        Host host("");
        host.deliver(keys({key("Talk", "pttsoftkey:Talk:1", 0), key("End", "softkey:14-End", 1)}));
        host.bar->button(0)->setDown(true);
        host.bar->button(1)->setDown(true);
        host.deliver(keys({key("Talk", "pttsoftkey:Talk:1", 0), key("Mute", "softkey:15-Mute", 1)}));
        QVERIFY(host.bar->button(0)->isDown());
        QVERIFY(!host.bar->button(1)->isDown());
    }

    void callStatesColourEveryKeyOnceTheMapIsFilled()
    {
        Host host("");
        QCOMPARE(host.bar->getPseudostateForUrl("softkey:14-End"), QString());
        host.bar->setCallStateColorStyles();
        // The empty alternative of the "green" pattern matches every URL at its start.
        for (const char* url : {"softkey:1-Answer", "softkey:14-End", "anything"})
            QCOMPARE(host.bar->getPseudostateForUrl(url), QString("green"));
        // A More key within the row is coloured like any key; the one ending the last page is not.
        Host paged("put-more-sk-at-page-end: true;");
        paged.bar->setCallStateColorStyles();
        paged.deliver(sixKeys());
        QCOMPARE(paged.bar->button(3)->pseudoState(), QString("green"));
        QCOMPARE(paged.bar->button(7)->pseudoState(), QString());
    }

    void labelsOfARowStayWithinTwoPointsOfTheSmallest()
    {
        Host host("");
        host.deliver(keys({key("A", "a", 0), key("B", "b", 1), key("C", "c", 2)}));
        host.bar->button(1)->labelWidget()->resizeText(12);
        host.bar->button(2)->labelWidget()->resizeText(13);
        QList<int> excluded;
        host.bar->set(host.bar->getXMLSoftKeyData(), excluded, SoftkeyLayoutDefault, true);
        // 18 is 6 above the smallest: it comes down to 14; 13 is near enough.
        QCOMPARE(host.bar->button(0)->labelWidget()->currentPixelSize(), 14);
        QCOMPARE(host.bar->button(1)->labelWidget()->currentPixelSize(), 12);
        QCOMPARE(host.bar->button(2)->labelWidget()->currentPixelSize(), 13);
    }

    void documentsThatAskForTooMuchAreCut()
    {
        Host host("put-more-sk-at-page-end: true;");
        QByteArray doc = "<Softkeys type=\"1\">";
        for (int i = 0; i < 25; ++i)
            doc += key("K", QByteArray("k" + QByteArray::number(i)).constData(), i);
        host.deliver(doc + "</Softkeys>");
        QCOMPARE(host.bar->getXMLSoftKeyData().count, 20);
        QVERIFY(host.bar->buttons().size() <= 20);
        // Positions beyond every button, negative ones and keys without a URL: skipped.
        host.deliver(keys({key("Far", "far", 500), key("None", "none", -1), key("Blank", "", 1)}));
        Host plain("");
        plain.deliver(keys({key("Far", "far", 500), key("None", "none", -1), key("A", "a", 0)}));
        QCOMPARE(row(plain.bar).first(), QString("A"));
        QVERIFY(!row(plain.bar).contains("Far") && !row(plain.bar).contains("None"));
        // Requests for keys past the buttons or before any size: nothing happens.
        CTavoSoftkey sizeless;
        sizeless.onCtxSensitiveSkReq("x", "a;b", 1);
        QList<int> none;
        sizeless.set(CTXMLSoftkeys(), none, SoftkeyLayoutDefault, true);
        QVERIFY(sizeless.buttons().isEmpty());
    }
};

QTEST_MAIN(TestSoftkey)
#include "tst_softkey.moc"
