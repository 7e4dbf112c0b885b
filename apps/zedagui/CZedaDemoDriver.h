#pragma once
// Drives zedagui for the demo and for test automation: measures the time from
// process start to the first painted frame, writes a screenshot of the window
// after each document of the core has taken effect and while a scripted press
// holds a button down, presses buttons with synthetic mouse events on request
// of the scenario, and ends the process at the scenario's end.
//
// Screenshots: DIR/NN-<step>.png in the order taken, 00-boot.png for the first
// frame, 99-end.png for the end of the scenario (or of --exit-after).
#include <QElapsedTimer>
#include <QEvent>
#include <QPoint>
#include <QPointer>
#include <QObject>
#include <QString>

class CZedaGui;
class QWidget;

class CZedaDemoDriver : public QObject
{
    Q_OBJECT
public:
    // shotDir empty: no screenshots. quitOnEnd: the scenario's end ends the process.
    CZedaDemoDriver(CZedaGui* gui, const QString& shotDir, bool quitOnEnd);

    // Ends the process with exit code 4 if the scenario has not ended by then.
    void setDeadline(int ms);
    // Takes the final screenshot and ends the process with exit code 0 after ms.
    void setExitAfter(int ms);

    // Milliseconds since the kernel started this process; -1 if unknown.
    static qint64 msSinceProcessStart();
    // Writes the window as DIR/<file>.png; returns the path or "" without a folder.
    QString shoot(const QString& file);
    int shotCount() const { return m_shots; }

public slots:
    // Synthetic press and release at the centre of the visible button named name.
    void press(const QString& name);
    // A finger from one window point to another over ms, as events every 16 ms;
    // the screenshot is taken at the release, or, with holdMs, while the finger
    // rests on the target holdMs before the release.
    void drag(const QPoint& from, const QPoint& to, int ms, const QString& step, int holdMs = 0);
    // Press and release of a key (a Qt key name such as "Up", "2", "#", "Backspace")
    // on the focused widget; keypad adds Qt::KeypadModifier as a dial pad does.
    void key(const QString& name, bool keypad, int holdMs, const QString& step);
    // A screenshot ms from now.
    void wait(int ms, const QString& step);

private slots:
    void onFirstFrame();
    void onDocument(const QString& step);
    void onEnd();
    void takeBootShot();

private:
    QString nextName(const QString& step);
    // The surface under a window point and the point in its coordinates.
    QWidget* surfaceAt(const QPoint& windowPoint, QPoint* local) const;
    void sendMouse(QEvent::Type type, const QPoint& windowPoint, Qt::MouseButtons buttons);
    // Shoots once the pressed look of button has begun to fade in, checking
    // every 16 ms at most tries times: a slow machine may not have run the
    // fade's first step when the timer for the picture fires.
    void shootWhenPressed(const QString& file, QPointer<QObject> button, int tries);

    CZedaGui* m_gui;
    QString m_dir;
    bool m_quitOnEnd;
    bool m_ended = false;
    bool m_bootShotPending = false;
    bool m_bootShotTaken = false;
    int m_shots = 0;
    int m_sequence = 0;
    QPointer<QWidget> m_dragSurface;  // the surface a drag started on keeps it
};
