// Writes this build's wire samples (WireSamples.h) as
// <dir>/<layout>-<architecture>.bin, the golden files of tst_core_wirelayout.
// Run it once per architecture when a layout changes on purpose:
//   build/test/bin/wire_sample_writer tests/core/wire
//   build/armhf/emulated-bin/wire_sample_writer tests/core/wire
#include <QDir>
#include <QFile>
#include <cstdio>

#include "WireSamples.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: wire_sample_writer DIR\n");
        return 2;
    }
    logtest::useRunNames("wiresamples");
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    int status = 0;
    for (const auto& sample : wiresamples::all()) {
        const QString path =
            dir.filePath(sample.first + "-" + wiresamples::architecture() + ".bin");
        QFile file(path);
        if (sample.second.isEmpty() || !file.open(QIODevice::WriteOnly)
            || file.write(sample.second) != sample.second.size()) {
            fprintf(stderr, "wire_sample_writer: %s not written\n", qPrintable(path));
            status = 1;
            continue;
        }
        printf("%s: %d bytes\n", qPrintable(path), int(sample.second.size()));
    }
    return status;
}
