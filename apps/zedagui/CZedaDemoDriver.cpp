#include "CZedaDemoDriver.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMouseEvent>
#include <QPixmap>
#include <QRegularExpression>
#include <QTimer>
#include <cstdio>
#include <ctime>
#include <unistd.h>

#include "CZedaGui.h"
#include "layout/CTavoLayoutWidget.h"
#include "log/GuiLog.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoSoftkey.h"
#include "widgets/CTavoView.h"
#include "widgets/CTavoWidget.h"

namespace {
// One line per fact on standard output: the demo script and the tests read it.
void say(const QString& line)
{
    std::fprintf(stdout, "zedagui: %s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

const int kPressHoldMs = 240;
}  // namespace

CZedaDemoDriver::CZedaDemoDriver(CZedaGui* gui, const QString& shotDir, bool quitOnEnd)
    : QObject(gui), m_gui(gui), m_dir(shotDir), m_quitOnEnd(quitOnEnd)
{
    if (!m_dir.isEmpty() && !QDir().mkpath(m_dir)) {
        guiLog(4, "zedagui: cannot create the screenshot folder %s", qPrintable(m_dir));
        m_dir.clear();
    }
    connect(gui, &CZedaGui::firstFramePainted, this, &CZedaDemoDriver::onFirstFrame);
    connect(gui, &CZedaGui::documentHandled, this, &CZedaDemoDriver::onDocument);
    // On a busy machine the core's first documents can come before the first
    // frame: the boot screen is shot before they take effect.
    connect(gui, &CZedaGui::documentArriving, this, [this] {
        m_bootShotPending = true;
        takeBootShot();
    });
    connect(gui, &CZedaGui::pressRequested, this, &CZedaDemoDriver::press);
    connect(gui, &CZedaGui::scenarioEnded, this, &CZedaDemoDriver::onEnd);
    connect(gui, &CZedaGui::dragRequested, this, &CZedaDemoDriver::drag);
    connect(gui, &CZedaGui::keyRequested, this, &CZedaDemoDriver::key);
    connect(gui, &CZedaGui::waitRequested, this, &CZedaDemoDriver::wait);
}

void CZedaDemoDriver::setDeadline(int ms)
{
    QTimer::singleShot(ms, this, [this, ms] {
        if (m_ended)
            return;
        say(QStringLiteral("the scenario did not end within %1 ms").arg(ms));
        QCoreApplication::exit(4);
    });
}

void CZedaDemoDriver::setExitAfter(int ms)
{
    QTimer::singleShot(ms, this, [this] {
        m_ended = true;
        shoot(QStringLiteral("99-end"));
        emit m_gui->shutDown(0);
    });
}

qint64 CZedaDemoDriver::msSinceProcessStart()
{
    // Field 22 of /proc/self/stat: start time in clock ticks after boot.
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    const int close = text.lastIndexOf(')');
    if (close < 0)
        return -1;
    const QList<QByteArray> fields = text.mid(close + 2).split(' ');
    if (fields.size() < 20)
        return -1;
    bool ok = false;
    const qint64 ticks = fields.at(19).toLongLong(&ok);
    const long hz = sysconf(_SC_CLK_TCK);
    timespec now{};
    if (!ok || hz <= 0 || clock_gettime(CLOCK_BOOTTIME, &now) != 0)
        return -1;
    const qint64 nowMs = qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
    return nowMs - ticks * 1000 / hz;
}

QString CZedaDemoDriver::nextName(const QString& step)
{
    QString clean = step;
    clean.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9_-]")), QStringLiteral("-"));
    if (clean.isEmpty())
        clean = QStringLiteral("step");
    // 99 stays for the end. From the 98th on, "98-NNN-" keeps the names in the
    // order taken (sorted by name) and the first 97 as they always were.
    const int n = ++m_sequence;
    if (n < 98)
        return QStringLiteral("%1-%2").arg(n, 2, 10, QLatin1Char('0')).arg(clean.left(40));
    return QStringLiteral("98-%1-%2").arg(qMin(n, 999), 3, 10, QLatin1Char('0')).arg(clean.left(40));
}

QString CZedaDemoDriver::shoot(const QString& file)
{
    if (m_dir.isEmpty())
        return QString();
    const QString path = QDir(m_dir).filePath(file + QStringLiteral(".png"));
    if (!m_gui->grab().save(path, "PNG")) {
        guiLog(4, "zedagui: cannot write the screenshot %s", qPrintable(path));
        return QString();
    }
    ++m_shots;
    say(QStringLiteral("screenshot %1").arg(path));
    // A screen that can tell what it shows (a list's offset, focus, bar) says so.
    if (CTavoLayoutWidget* screen = m_gui->currentScreen()) {
        const QString facts = screen->getContextSensitiveInformation();
        if (!facts.isEmpty())
            say(QStringLiteral("screen %1: %2").arg(screen->objectName(), facts));
    }
    return path;
}

void CZedaDemoDriver::onFirstFrame()
{
    const qint64 ms = msSinceProcessStart();
    say(ms >= 0 ? QStringLiteral("first frame painted %1 ms after process start").arg(ms)
                : QStringLiteral("first frame painted (process start unknown)"));
    // Not from inside the paint event that announced it; a document that comes
    // first takes it before its own.
    m_bootShotPending = true;
    QTimer::singleShot(0, this, &CZedaDemoDriver::takeBootShot);
}

void CZedaDemoDriver::takeBootShot()
{
    if (!m_bootShotPending || m_bootShotTaken)
        return;
    m_bootShotPending = false;
    m_bootShotTaken = true;
    shoot(QStringLiteral("00-boot"));
}

void CZedaDemoDriver::onDocument(const QString& step)
{
    takeBootShot();
    if (!m_ended)
        shoot(nextName(step));
    // On a slow machine the first frame is painted by that very grab; the next
    // document may be waiting already, so the boot screen is taken now.
    takeBootShot();
}

void CZedaDemoDriver::press(const QString& name)
{
    CTavoWidget* target = nullptr;
    // "softkey-N": the bar's N-th button, wherever its page puts it.
    bool isKey = false;
    const int key = name.startsWith(QLatin1String("softkey-")) ? name.mid(8).toInt(&isKey) : 0;
    if (isKey && m_gui->softkeyBar()) {
        CTavoWidget* button = m_gui->softkeyBar()->button(key - 1);
        if (button && button->isVisible() && m_gui->softkeyBar()->isVisible())
            target = button;
    }
    for (CTavoWidget* w : m_gui->findChildren<CTavoWidget*>(name)) {
        if (target)
            break;
        QWidget* surface = w->parentWidget();
        if (w->isVisible() && surface && surface->isVisible()) {
            target = w;
            break;
        }
    }
    if (!target) {
        say(QStringLiteral("no visible button %1 to press").arg(name));
        return;
    }
    QWidget* surface = target->parentWidget();
    // Items of a view lie in its content: the point on the surface is where it shows them.
    QPoint at = target->center();
    if (CTavoView* view = CTavoView::holderOf(target))
        at = view->mapToPointInParent(at);
    const QPoint global = surface->mapToGlobal(at);
    say(QStringLiteral("pressing %1 at %2,%3").arg(name).arg(at.x()).arg(at.y()));
    QMouseEvent down(QEvent::MouseButtonPress, at, global, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(surface, &down);
    // The pressed look fades in: the picture is taken halfway through the hold.
    const QString shot = nextName(QStringLiteral("press-") + name);
    QPointer<QWidget> guard(surface);
    QPointer<QObject> button(target);
    QTimer::singleShot(kPressHoldMs / 2, this, [this, shot, button] { shootWhenPressed(shot, button, 10); });
    QTimer::singleShot(kPressHoldMs, this, [guard, at, global] {
        if (!guard)
            return;
        QMouseEvent up(QEvent::MouseButtonRelease, at, global, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(guard, &up);
    });
}

void CZedaDemoDriver::shootWhenPressed(const QString& file, QPointer<QObject> button, int tries)
{
    if (button && tries > 0 && button->property("pressedBackgroundOpacity").toReal() <= 0.0) {
        QTimer::singleShot(16, this, [this, file, button, tries] { shootWhenPressed(file, button, tries - 1); });
        return;
    }
    shoot(file);
}

void CZedaDemoDriver::onEnd()
{
    if (m_ended)
        return;
    m_ended = true;
    shoot(QStringLiteral("99-end"));
    say(QStringLiteral("scenario ended, %1 screenshots").arg(m_shots));
    if (m_quitOnEnd)
        QTimer::singleShot(0, m_gui, [gui = m_gui] { emit gui->shutDown(0); });
}

QWidget* CZedaDemoDriver::surfaceAt(const QPoint& windowPoint, QPoint* local) const
{
    QWidget* w = m_gui->childAt(windowPoint);
    // The painted objects are not widgets: the deepest widget is their surface.
    if (!w)
        w = m_gui;
    *local = w->mapFrom(m_gui, windowPoint);
    return w;
}

void CZedaDemoDriver::sendMouse(QEvent::Type type, const QPoint& windowPoint, Qt::MouseButtons buttons)
{
    QPoint local;
    QWidget* target = m_dragSurface ? m_dragSurface.data() : surfaceAt(windowPoint, &local);
    if (m_dragSurface)
        local = target->mapFrom(m_gui, windowPoint);
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, local, m_gui->mapToGlobal(windowPoint), button, buttons, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

void CZedaDemoDriver::drag(const QPoint& from, const QPoint& to, int ms, const QString& step, int holdMs)
{
    takeBootShot();
    QPoint local;
    m_dragSurface = surfaceAt(from, &local);
    say(QStringLiteral("dragging from %1,%2 to %3,%4 in %5 ms")
            .arg(from.x()).arg(from.y()).arg(to.x()).arg(to.y()).arg(ms));
    sendMouse(QEvent::MouseButtonPress, from, Qt::LeftButton);
    // Moves at a steady pace, as a finger would; the last one lands on the target.
    const int frameMs = 16;
    const int moves = qMax(1, ms / frameMs);
    for (int i = 1; i <= moves; ++i) {
        const QPoint at = from + (to - from) * i / moves;
        QTimer::singleShot(i * frameMs, this, [this, at] {
            if (m_dragSurface)
                sendMouse(QEvent::MouseMove, at, Qt::LeftButton);
        });
    }
    const QString shot = nextName(step);
    if (holdMs > 0) {
        QTimer::singleShot(moves * frameMs + holdMs, this, [this, shot] {
            if (m_dragSurface && !m_ended)
                shoot(shot);
        });
    }
    QTimer::singleShot(moves * frameMs + 1 + holdMs, this, [this, to, shot, holdMs] {
        if (!m_dragSurface)
            return;
        sendMouse(QEvent::MouseButtonRelease, to, Qt::NoButton);
        m_dragSurface.clear();
        if (!m_ended && holdMs == 0)
            shoot(shot);
    });
}

void CZedaDemoDriver::key(const QString& name, bool keypad, int holdMs, const QString& step)
{
    takeBootShot();
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    const int code = sequence.isEmpty() ? 0 : int(sequence[0] & ~Qt::KeyboardModifierMask);
    if (code == 0 || code == Qt::Key_unknown) {
        say(QStringLiteral("no key %1").arg(name));
        return;
    }
    QWidget* target = QApplication::focusWidget();
    if (!target)
        target = m_gui->currentScreen() ? static_cast<QWidget*>(m_gui->currentScreen()) : m_gui;
    // Printable keys carry their character, as a keyboard driver sends them.
    const QString text = name.size() == 1 ? name : QString();
    const Qt::KeyboardModifiers modifiers = keypad ? Qt::KeypadModifier : Qt::NoModifier;
    say(QStringLiteral("key %1%2").arg(name, keypad ? QStringLiteral(" (keypad)") : QString()));
    QKeyEvent down(QEvent::KeyPress, code, modifiers, text);
    QApplication::sendEvent(target, &down);
    const QString shot = nextName(step);
    QPointer<QWidget> guard(target);
    auto release = [this, guard, code, modifiers, text, shot] {
        if (guard) {
            QKeyEvent up(QEvent::KeyRelease, code, modifiers, text);
            QApplication::sendEvent(guard, &up);
        }
        if (!m_ended)
            shoot(shot);
    };
    // Without a hold the key is released at once: keys that arrive in a burst
    // then still get one screenshot each.
    if (holdMs == 0)
        release();
    else
        QTimer::singleShot(holdMs, this, release);
}

void CZedaDemoDriver::wait(int ms, const QString& step)
{
    takeBootShot();
    const QString shot = nextName(step);
    QTimer::singleShot(ms, this, [this, shot] {
        if (!m_ended)
            shoot(shot);
    });
}
