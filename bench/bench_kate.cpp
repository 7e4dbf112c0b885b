// Multi-tap entry: one tap of a key that is being tapped (the mark steps on and
// the field replaces the candidate before its cursor), and one commit by the
// time-out (the strip goes), with the candidates delivered to a CTavoInput as
// the field has them, and as input method events (preedit, then commit) to a
// QLineEdit. The floor: QLineEdit::insert of the same characters. The strip's
// 64 cells are made once; a tap should allocate little beyond its text.
// Microseconds and heap allocations per tap and per commit.
//
// Allocations are counted by the malloc interposer of BenchSupport; under
// AddressSanitizer they read "n/a".
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>

#include <cstdio>
#include <functional>

#include "BenchSupport.h"

#include "input/CTavoInput.h"
#include "input/CTavoKateInput.h"
#include "layout/CTavoLayoutWidget.h"

namespace {
const int kWarm = 50;
const int kRounds = 4000;

using Figure = BenchStep;

Figure measure(const std::function<void()>& step, const std::function<void()>& undo)
{
    return benchSteps(kWarm, kRounds, step, undo);
}

void row(const char* what, const Figure& f)
{
    if (kBenchCounted)
        std::printf("%-44s %9.2f %8.1f\n", what, f.micros, f.allocations);
    else
        std::printf("%-44s %9.2f %8s\n", what, f.micros, "n/a");
}
}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QFont font = benchFont(20);
    const QString prefill(200, QLatin1Char('x'));

    // A field and its strip, connected as the field connects its own.
    CTavoLayoutWidget surface;
    surface.resize(480, 160);
    CTavoInput* field = new CTavoInput(&surface);
    field->setFont(font);
    field->setGeometry(10, 10, 460, 44);
    field->set("abc", prefill, 512, QLineEdit::Normal, "");
    CTavoKateInput kate(&surface, false, field);
    QObject::connect(&kate, &CTavoKateInput::entered, field, &CTavoInput::onEntered);
    QObject::connect(&kate, &CTavoKateInput::showme, field, &CTavoInput::showKate);
    kate.onEncodingSelected(InputEncodingASCII);
    kate.onModeSelected(InputModeLower);
    surface.show();
    QApplication::setActiveWindow(&surface);
    field->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    field->end(false);

    // Key 7 ("pqrs7") is being tapped: each tap steps the mark and replaces.
    kate.handleKeyEvent(7, true);
    const Figure tap = measure([&] { kate.handleKeyEvent(7, true); }, [] {});
    // The time-out: the letter stands, the strip goes; the next key starts anew.
    const Figure timeout = measure([&] { kate.onTimeout(); },
                                   [&] {
                                       if (field->text().size() > 400) {
                                           field->setText(prefill);
                                           field->end(false);
                                       }
                                       kate.handleKeyEvent(7, true);
                                   });
    // Another key settles the pending letter and starts its own strip.
    int next = 2;
    const Figure otherKey = measure(
        [&] {
            next = next == 2 ? 3 : 2;
            kate.handleKeyEvent(next, true);
        },
        [&] {
            if (field->text().size() > 400) {
                field->setText(prefill);
                field->end(false);
            }
        });
    const bool fieldSane = field->text().toUtf8().size() <= 512 && field->text().startsWith(prefill);

    // The strip alone, its characters going nowhere: what a tap costs the strip.
    CTavoKateInput alone(&surface, false, nullptr);
    QObject::connect(&alone, &CTavoKateInput::showme, [](QWidget* w, bool show) { w->setVisible(show); });
    alone.onModeSelected(InputModeLower);
    alone.handleKeyEvent(7, true);
    const Figure aloneTap = measure([&] { alone.handleKeyEvent(7, true); }, [] {});
    const Figure aloneNewKey = measure([&] { alone.handleKeyEvent(2, true); }, [&] { alone.handleKeyEvent(7, true); });

    // Input method delivery to a plain QLineEdit: preedit per tap, commit per settle.
    QWidget plainSurface;
    plainSurface.resize(480, 80);
    QLineEdit* plain = new QLineEdit(&plainSurface);
    plain->setFont(font);
    plain->setGeometry(10, 10, 460, 44);
    plain->setText(prefill);
    CTavoKateInput ime(&plainSurface, true, plain);
    QObject::connect(&ime, &CTavoKateInput::showme, [](QWidget* w, bool show) { w->setVisible(show); });
    ime.onModeSelected(InputModeLower);
    plainSurface.show();
    QApplication::setActiveWindow(&plainSurface);
    plain->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    plain->end(false);
    ime.handleKeyEvent(7, true);
    const Figure imeTap = measure([&] { ime.handleKeyEvent(7, true); }, [] {});
    const Figure imeCommit = measure([&] { ime.onTimeout(); },
                                     [&] {
                                         if (plain->text().size() > 400) {
                                             plain->setText(prefill);
                                             plain->end(false);
                                         }
                                         ime.handleKeyEvent(7, true);
                                     });

    // The floor: the same characters inserted by QLineEdit itself.
    QLineEdit floor;
    floor.setText(prefill);
    floor.end(false);
    const QString letters = QStringLiteral("pqrs7");
    int at = 0;
    const Figure insert = measure(
        [&] {
            floor.insert(QString(letters.at(at)));
            at = (at + 1) % letters.size();
        },
        [&] { floor.backspace(); });

    std::printf("bench_kate: multi-tap on key 7 (\"pqrs7\") of a 200-character field, %d rounds after %d\n", kRounds,
                kWarm);
    std::printf("%-44s %9s %8s\n", "", "us", "allocs");
    row("tap: mark steps, field replaces (CTavoInput)", tap);
    row("commit by time-out: strip goes", timeout);
    row("another key: settles, new strip (CTavoInput)", otherKey);
    row("tap, the strip alone", aloneTap);
    row("another key, the strip alone", aloneNewKey);
    row("tap as preedit event (QLineEdit)", imeTap);
    row("commit by time-out as commit event", imeCommit);
    row("floor: QLineEdit::insert of one character", insert);
    std::printf("field within its limit and text kept: %s\n", fieldSane ? "yes" : "NO");
    return fieldSane ? 0 : 1;
}
