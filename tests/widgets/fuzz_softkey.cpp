// Softkey documents from an untrusted core, and the presses and context key
// requests that follow. The document goes through the document library into a
// styled bar with a flyout; every visible button is pressed, context keys
// named by the document are asked for, hidden and dimmed. What must hold
// besides surviving: never more than 20 buttons, and the page shown is one of
// the bar's pages.
#include <QApplication>
#include <QWidget>

#include <cstdint>
#include <cstdlib>

#include "CTXMLRoot.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoFlyoutCluster.h"
#include "widgets/CTavoPageView.h"
#include "widgets/CTavoSoftkey.h"

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

struct World
{
    QWidget screen;
    CTavoSoftkey* bar = nullptr;
    CTavoFlyoutCluster* flyout = nullptr;
    CTXMLRoot root;

    World()
    {
        screen.resize(800, 480);
        screen.show();
        bar = new CTavoSoftkey(&screen);
        QByteArray style = "CTavoSoftkey { size: 800x64; location: 0:416; put-more-sk-at-page-end: true; }"
                           " CTavoPageView#softkey-pageview { size: 800x56; location: 0:4; page-layout: 4x1; }"
                           " CTavoButton { size: 196x56; }";
        QByteArray none;
        bar->updateStyle(style.data(), none.data(), true);
        flyout = new CTavoFlyoutCluster(&screen);
        QByteArray flyoutStyle = "CTavoFlyoutCluster { size: 320x300; location: 0:0; items-maximum: 12; }"
                                 " CTavoFlyoutItem { size: 300x30; }";
        flyout->updateStyle(flyoutStyle.data(), none.data(), true);
        flyout->setShowInfoBanner(false);
        bar->setFlyout(flyout);
    }
};

World* world()
{
    static int argc = 1;
    static char name[] = "fuzz_softkey";
    static char* argv[] = {name, nullptr};
    static QApplication* app = nullptr;
    if (!app) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = new QApplication(argc, argv);
    }
    static World* instance = new World;
    return instance;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    World* w = world();
    CTavoSoftkey* bar = w->bar;
    // The last byte chooses the bar's options; the rest is the document.
    const size_t steer = size < 1 ? size : 1;
    const char* bytes = reinterpret_cast<const char*>(data);
    w->root.parse(bytes, size - steer);
    const unsigned char b = steer ? static_cast<unsigned char>(bytes[size - 1]) : 0;
    QList<int> excluded;
    if (b & 1)
        excluded << (b >> 4);
    if (b & 2)
        bar->setCallStateColorStyles();
    bar->setNumVoicemailMessages(b & 4 ? 2 : 0);
    bar->set(w->root.softkeys, excluded, SoftkeyLayoutTypeT(b & 8 ? 1 : 0), (b & 2) != 0);
    check(bar->buttons().size() <= 20);

    const CTXMLSoftkeys& keys = w->root.softkeys;
    for (int i = 0; i < keys.count && i < 20; ++i) {
        const QString url = QString::fromUtf8(keys[i].url);
        const QString values = QString::fromUtf8(keys[i].valueList);
        bar->onCtxSensitiveSkReq(url, values, 1);
        bar->onCtxSensitiveSkReq(url, QString(), (i + b) % 3);
    }
    // Every visible button once, the way a finger presses it.
    for (CTavoButton* button : bar->buttons()) {
        if (!button->isVisible())
            continue;
        button->handleEvent(QEvent::MouseButtonPress, button->center());
        button->handleEvent(QEvent::MouseButtonRelease, button->center());
    }
    // The bar's page stays one of its pages.
    check(bar->pageView()->currentPage() >= 0 && bar->pageView()->currentPage() < qMax(1, bar->pageView()->pageCount()));
    if (w->flyout->isOpen())
        w->flyout->flyIn(false, CTavoFlyoutCluster::FlyinByOwner);
    bar->resyncCtxSensitiveSks();
    return 0;
}
