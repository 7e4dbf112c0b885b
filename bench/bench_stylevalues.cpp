// Parsing declarations of mixed types, and the memory the repository holds for
// the sample skin's pictures against the same pictures kept as ARGB32 pixmaps.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <QTemporaryDir>

#include <cstdio>

#include "style/CTavoResourceRepository.h"
#include "style/CTavoWidgetStyle.h"

namespace {
struct PictureT
{
    QString path;
    QSize size;
};

// The pictures the sample skin names, at the sizes it asks for; generated ones stand in when the run folder lacks them.
QList<PictureT> skinPictures(const QString& scratch)
{
    const QString run = qEnvironmentVariable("TGUI_RUN_DIR", QStringLiteral("run"));
    QList<PictureT> list = {
        {run + "/Skins/default/images/boot-logo.svg", QSize(104, 104)},
        {run + "/Skins/default/images/boot-spinner.svg", QSize(56, 56)},
        {run + "/Skins/default/images/tile-pressed.svg", QSize(148, 124)},
    };
    QDir icons(run + "/Skins/common/icons");
    for (const QString& name : icons.entryList({"*.svg"}, QDir::Files))
        list.append({icons.filePath(name), QSize(56, 56)});
    bool allThere = true;
    for (const PictureT& p : list)
        allThere = allThere && QFile::exists(p.path);
    if (allThere && !list.isEmpty())
        return list;
    list.clear();
    QImage opaque(800, 480, QImage::Format_RGB32);
    opaque.fill(QColor(16, 24, 32));
    opaque.save(scratch + "/background.png");
    list.append({scratch + "/background.png", QSize()});
    for (int i = 0; i < 8; ++i) {
        QImage icon(56, 56, QImage::Format_ARGB32);
        icon.fill(Qt::transparent);
        QPainter p(&icon);
        p.setBrush(QColor(40 * i, 120, 200));
        p.drawEllipse(4, 4, 48, 48);
        p.end();
        const QString path = QString("%1/icon%2.png").arg(scratch).arg(i);
        icon.save(path);
        list.append({path, QSize()});
    }
    return list;
}
} // namespace

int main(int argc, char** argv)
{
    if (qgetenv("QT_QPA_PLATFORM").isEmpty())
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QTemporaryDir scratch;

    // 20,000 declarations of mixed types, as one block per 20 declarations.
    static const char* const kinds[] = {
        "color: rgb(%1, 20, 30)", "font: bold %1px DejaVu Sans", "size: %1x40", "location: %1:20",
        "padding: 4 %1", "border: 1px solid rgb(%1,40,50)", "text-align: hcenter vcenter",
        "background: rgba(%1, 255, 255, 24)", "up-duration: %1", "title-color: #1020%1",
        "margin: %1", "render-quality: highq", "flag: true", "source: url(x%1.png)",
        "shape: 0:0 %1:0 10:10", "x-animation: property=opacity,start=0,end=1,curve=inout-quad,duration=%1",
        "background-focused: lineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #000000, stop: 1 rgb(%1,9,9))",
        "caption-font: %1px", "icon-size: %1x%1", "opacity: 0.%1"};
    const int kindCount = int(sizeof(kinds) / sizeof(kinds[0]));
    const int total = 20000;
    QStringList blocks;
    QString current;
    for (int i = 0; i < total; ++i) {
        QString declaration = QString::fromLatin1(kinds[i % kindCount]);
        if (declaration.contains(QLatin1String("%1")))
            declaration = declaration.arg(10 + i % 80);
        current += declaration + "; ";
        if ((i + 1) % kindCount == 0) {
            blocks.append(current);
            current.clear();
        }
    }
    qint64 best = -1;
    for (int round = 0; round < 5; ++round) {
        StyleResourceContainer.reset();
        QElapsedTimer t;
        t.start();
        CTavoWidgetStyle style;
        for (const QString& b : blocks)
            style.set(b);
        const qint64 ns = t.nsecsElapsed();
        if (best < 0 || ns < best)
            best = ns;
    }
    printf("parse %d declarations of %d kinds (%d blocks): %.3f ms, %.0f ns/declaration (best of 5)\n", total,
           kindCount, int(blocks.size()), best / 1e6, double(best) / total);

    // Memory: the repository's forms against plain ARGB32 pixmaps of the same pictures.
    StyleResourceContainer.reset();
    const QList<PictureT> pictures = skinPictures(scratch.path());
    qint64 argb32 = 0;
    QList<QPixmap> plain;
    for (const PictureT& p : pictures) {
        QImage image;
        if (p.path.endsWith(".svg")) {
            QSvgRenderer renderer(p.path);
            image = QImage(p.size, QImage::Format_ARGB32);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            renderer.render(&painter);
        } else {
            image = QImage(p.path).convertToFormat(QImage::Format_ARGB32);
        }
        plain.append(QPixmap::fromImage(image));
        argb32 += qint64(image.width()) * image.height() * 4;
    }
    for (const PictureT& p : pictures) {
        QMetaType::Type type = QMetaType::UnknownType;
        StyleResourceContainer.registerPixmap(p.path, p.size, type);
    }
    qint64 repository = 0, asStored = 0;
    for (const QImage& image : StyleResourceContainer.images()) {
        repository += image.sizeInBytes();
        asStored += image.sizeInBytes();
    }
    for (const QPixmap& pixmap : StyleResourceContainer.pixmaps()) {
        // Pixels as the repository renders them (16 bits) and as the platform pixmap keeps them.
        repository += qint64(pixmap.width()) * pixmap.height() * 2;
        asStored += qint64(pixmap.width()) * pixmap.height() * pixmap.depth() / 8;
    }
    printf("%d pictures of the sample skin\n", int(pictures.size()));
    printf("  ARGB32 QPixmaps                   %9.1f KiB\n", argb32 / 1024.0);
    printf("  repository, rendered formats      %9.1f KiB  (%.0f%% of ARGB32)\n", repository / 1024.0,
           100.0 * double(repository) / double(argb32));
    printf("  repository, as the pixmaps hold it %8.1f KiB  (%.0f%% of ARGB32; raster QPixmap depth %d)\n",
           asStored / 1024.0, 100.0 * double(asStored) / double(argb32),
           StyleResourceContainer.pixmaps().isEmpty() ? 0 : StyleResourceContainer.pixmaps().first().depth());
    return 0;
}
