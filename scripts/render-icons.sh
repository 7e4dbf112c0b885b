#!/usr/bin/env bash
# Renders the drawn sources of the raster icons, run/Skins/common/icons/src/*.svg,
# into run/Skins/common/icons/<name>.png. The icon table names some icons with
# ".png", and the repository loads those as raster files without looking for a
# vector form, so they are shipped rendered. They are rendered the way the
# repository renders a vector icon (QSvgRenderer on a transparent picture), at
# the size the sample skin shows them: the flyout's 28x28 icon cell, so the
# picture is drawn 1:1 and never rescaled. tst_widgets_sampleskin checks that
# each PNG still matches its source.
#
#   bash scripts/render-icons.sh [SIZE]      # SIZE defaults to 28
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
size="${1:-28}"
case "$size" in ''|*[!0-9]*) echo "render-icons: SIZE wants a whole number, not '$size'" >&2; exit 2 ;; esac
icons="$root/run/Skins/common/icons"

work="$(mktemp -d "${TMPDIR:-/tmp}/tgui-icons.XXXXXX")"
trap 'rm -rf "$work"' EXIT
cat >"$work/render.cpp" <<'CPP'
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    if (argc != 4)
        return 2;
    const int size = std::atoi(argv[1]);
    QSvgRenderer renderer{QString::fromLocal8Bit(argv[2])};
    if (size < 1 || !renderer.isValid()) {
        std::fprintf(stderr, "render-icons: cannot render %s\n", argv[2]);
        return 1;
    }
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return image.save(QString::fromLocal8Bit(argv[3]), "PNG") ? 0 : 1;
}
CPP
# shellcheck disable=SC2046
c++ -std=c++17 -fPIC -O1 $(pkg-config --cflags Qt5Svg Qt5Gui) "$work/render.cpp" -o "$work/render" \
    $(pkg-config --libs Qt5Svg Qt5Gui)

for svg in "$icons"/src/*.svg; do
  name="$(basename "$svg" .svg)"
  XDG_RUNTIME_DIR="$work" QT_QPA_PLATFORM=offscreen "$work/render" "$size" "$svg" "$icons/$name.png"
  echo "$icons/$name.png (${size}x${size})"
done
