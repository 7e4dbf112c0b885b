// The package as a host project meets it: this build tree is installed into a
// temporary prefix, the host example is built from there twice, once with
// find_package(TGUILib) and once with pkg-config alone, and both programs run
// a scenario against the installed tgui-core. The compiler and sanitizer flags
// of this tree are handed on, and ccache keeps the rebuilds short.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

namespace {
const QString kSource = qEnvironmentVariable("TGUI_SOURCE_DIR", TGUI_SOURCE_DIR);

struct Run {
    int exitCode = -1;  // -1: crashed or did not end in time
    QString output;     // standard output and error together
};

Run run(const QString& program, const QStringList& args, const QProcessEnvironment& env,
        const QString& dir = QString(), int ms = 240000)
{
    QProcess process;
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::MergedChannels);
    if (!dir.isEmpty())
        process.setWorkingDirectory(dir);
    process.start(program, args);
    Run result;
    if (!process.waitForFinished(ms)) {
        process.kill();
        process.waitForFinished(5000);
        result.output = QString::fromLocal8Bit(process.readAll()) + "\n(killed: no end in time)";
        return result;
    }
    result.output = QString::fromLocal8Bit(process.readAll());
    if (process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    return result;
}
// In a cross tree everything the test installs and builds lies inside the
// sysroot, so that the cross compiler, CMake's re-rooted package search and
// pkg-config's sysroot prefix all find it where the sysroot's own files are.
QString workTemplate()
{
#if TGUI_CROSSCOMPILING
    const QString tmp = QStringLiteral(TGUI_SYSROOT "/tmp");
    QDir().mkpath(tmp);
    return tmp + QStringLiteral("/tst_apps_install-XXXXXX");
#else
    return QDir::tempPath() + QStringLiteral("/tst_apps_install-XXXXXX");
#endif
}
}  // namespace

class TestInstall : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir{workTemplate()};
    QString m_prefix;
    QString m_libDir;
    QProcessEnvironment m_env;

    // A program of the cross tree runs through the emulator, as the tree's own
    // tests start theirs (emulated-bin): a wrapper beside the work files.
    QString runnable(const QString& program)
    {
#if TGUI_CROSSCOMPILING
        QString command;
        for (const QString& word : QStringLiteral(TGUI_EMULATOR).split(QLatin1Char('|'), Qt::SkipEmptyParts))
            command += QLatin1Char('\'') + word + QStringLiteral("' ");
        const QString wrapper = m_dir.filePath(QStringLiteral("emulated-") + QFileInfo(program).fileName());
        QFile file(wrapper);
        if (!file.open(QIODevice::WriteOnly))
            return program;
        file.write(("#!/bin/sh\nexec " + command + "'" + program + "' \"$@\"\n").toUtf8());
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
        return wrapper;
#else
        return program;
#endif
    }

    // Plays the host scenario with the installed tgui-core to `host`, started in
    // a run folder of its own made of the example's files and the core's port.
    void playScenario(const QString& host, const QString& tag)
    {
        QProcess core;
        core.setProcessEnvironment(m_env);
        core.start(runnable(m_prefix + "/bin/tgui-core"), {"--port", "0", "--listen", "127.0.0.1", "--scenario",
                                                 kSource + "/examples/host/host-scenario.txt"});
        QVERIFY(core.waitForStarted());
        QVERIFY2(core.waitForReadyRead(20000), core.readAllStandardError().constData());
        const QByteArray first = core.readLine().trimmed();
        QVERIFY2(first.startsWith("LISTENING "), first.constData());

        const QString runDir = m_dir.filePath("run-" + tag);
        QVERIFY(QDir().mkpath(runDir + "/Skins"));
        QVERIFY(QFile::copy(kSource + "/examples/host/run/qt.conf", runDir + "/qt.conf"));
        QVERIFY(QFile::link(kSource + "/examples/host/run/Skins/host", runDir + "/Skins/host"));
        QFile conf(runDir + "/Skins/host.conf");
        QVERIFY(conf.open(QIODevice::WriteOnly));
        conf.write("[osd]\nSkinFile=Skins/host/host.xml\nComServerIP=127.0.0.1\nComServerPort="
                   + first.mid(10) + "\n");
        conf.close();

        const Run needed = run("readelf", {"-d", host}, m_env);
        QVERIFY2(needed.exitCode == 0, qPrintable(needed.output));
        QVERIFY2(needed.output.contains("[libTGUILib.so." TGUI_SOVERSION "]"), qPrintable(needed.output));
        QVERIFY2(!needed.output.contains("WebKit") && !needed.output.contains("DBus"), qPrintable(needed.output));

        const Run gui = run(runnable(host), {}, m_env, runDir, 60000);
        QVERIFY(core.waitForFinished(20000));
        const QString coreOut = QString::fromUtf8(core.readAll());
        QVERIFY2(gui.exitCode == 0, qPrintable(gui.output + "\n--- core:\n" + coreOut));
        // The click the core asked for came back as the button's event, and
        // the host ended at the core's request with exit code 0.
        QVERIFY2(coreOut.contains("REGISTER osd"), qPrintable(coreOut));
        QVERIFY2(coreOut.contains("EVENT osd type=0 <TXML><Event uri=\"Host:Reply\""), qPrintable(coreOut));
        QCOMPARE(core.exitCode(), 0);
        QVERIFY2(gui.output.contains("host: event Host:Show"), qPrintable(gui.output));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        m_prefix = m_dir.filePath("prefix");
        m_libDir = m_prefix + "/" TGUI_INSTALL_LIBDIR;
        m_env = QProcessEnvironment::systemEnvironment();
        // Paths below the temporary folder become relative for ccache, so a
        // later run finds what this one compiled.
        m_env.insert("CCACHE_BASEDIR", m_dir.path());
        m_env.insert("CCACHE_NOHASHDIR", "1");
        m_env.insert("PKG_CONFIG_PATH", m_libDir + "/pkgconfig");
        // A test run must not meet the system's log queue or segment.
        m_env.insert("TGUI_LOG_QUEUE", QString("tst_install_%1").arg(QCoreApplication::applicationPid()));
        m_env.insert("TGUI_LOG_SHM_KEY",
                     QString::number(0x5C000000 | (QCoreApplication::applicationPid() & 0xFFFFFF)));

        const Run install = run(TGUI_CMAKE_COMMAND, {"--install", TGUI_BINARY_DIR, "--prefix", m_prefix}, m_env);
        QVERIFY2(install.exitCode == 0, qPrintable(install.output));
    }

    void installedLayout()
    {
        const QString inc = m_prefix + "/include/TGUILib/";
        // Both include styles, the export headers, the platform library's headers.
        for (const QString& path :
             {inc + "layout/CTavoLayoutMgr.h", inc + "CTavoLayoutMgr.h", inc + "widgets/CTavoButton.h",
              inc + "CTavoButton.h", inc + "log/GuiLog.h", inc + "tgui_export.h", inc + "txml/CTXMLRoot.h",
              inc + "txml/txml_export.h", inc + "tjdb/CTJDbReq.h", inc + "tjdb/CTJDbResp.h",
              inc + "tjdb/TJDbTypes.h", inc + "tjdb/tjdb_export.h", inc + "pac/pac.h",
              m_libDir + "/cmake/TGUILib/TGUILibConfig.cmake",
              m_libDir + "/cmake/TGUILib/TGUILibConfigVersion.cmake", m_libDir + "/pkgconfig/TGUILib.pc",
              m_libDir + "/libTGUILib.so", m_libDir + "/libtxml.so", m_libDir + "/libtjdb.so",
              m_libDir + "/libpac.so", m_prefix + "/bin/tgui-core", m_prefix + "/bin/tgui-dbs",
              m_prefix + "/bin/tgui-logd", m_prefix + "/bin/tgui-logctl"})
            QVERIFY2(QFile::exists(path), qPrintable(path));
        // Generic names stay in their folder; private headers stay home.
        for (const QString& path : {inc + "GuiLog.h", inc + "Mq.h", inc + "AppDefs.h",
                                    inc + "widgets/KineticScrollPrivate.h", inc + "style/TavoSkinConfig.h",
                                    inc + "tjdb/TJDbText.h", inc + "pac/PacHelpers.h", inc + "pac/PacHeap.h"})
            QVERIFY2(!QFile::exists(path), qPrintable(path));
        // The library file carries its version; the link name and the soname point at it.
        const QString file = m_libDir + "/libTGUILib.so." TGUI_VERSION_STRING;
        QVERIFY(QFileInfo(file).isFile() && !QFileInfo(file).isSymLink());
        QCOMPARE(QFileInfo(m_libDir + "/libTGUILib.so").canonicalFilePath(), file);
        QCOMPARE(QFileInfo(m_libDir + "/libTGUILib.so." TGUI_SOVERSION).canonicalFilePath(), file);

        QFile unit(m_prefix + "/lib/systemd/system/tgui-logd.service");
        QVERIFY(unit.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(unit.readAll());
        QVERIFY2(text.contains("\nExecStart=" + m_prefix + "/bin/tgui-logd\n"), qPrintable(text));
        QVERIFY(text.contains("\nType=simple\n"));
    }

    void exportedSymbols()
    {
        // What the installed libraries offer a host: their API, never a helper of
        // an anonymous namespace, the request library's text functions or the
        // Duktape built into the PAC evaluator.
        const auto exported = [this](const QString& lib) {
            const Run nm = run("nm", {"-D", "--defined-only", "-C", m_libDir + "/" + lib}, m_env);
            return nm.exitCode == 0 ? nm.output.split('\n', Qt::SkipEmptyParts) : QStringList();
        };
        for (const char* lib : {"libTGUILib.so", "libtxml.so", "libtjdb.so", "libpac.so"}) {
            const QStringList symbols = exported(lib);
            QVERIFY2(!symbols.isEmpty(), lib);
            for (const QString& symbol : symbols)
                QVERIFY2(!symbol.contains("(anonymous namespace)"), qPrintable(symbol));
        }
        const QStringList tjdb = exported("libtjdb.so");
        QVERIFY(!tjdb.filter("TJDB::CTJDbInterface::parse(").isEmpty());
        QVERIFY2(tjdb.filter("TJDB::text::").isEmpty(), qPrintable(tjdb.filter("TJDB::text::").join('\n')));
        QStringList pacFunctions;
        for (const QString& symbol : exported("libpac.so"))
            pacFunctions << symbol.section(' ', 2);
        pacFunctions.sort();
        QCOMPARE(pacFunctions, (QStringList{"alloc_ctx", "duk_destroy_heap", "find_proxy", "pac_last_error",
                                            "pac_set_limits", "pac_set_resolver", "pac_set_time", "read_pacfile"}));
        // Classes of the library's own surface are there.
        const QStringList gui = exported("libTGUILib.so");
        for (const char* api : {"CTavoLayoutMgr::initWidgets", "CTavoView::", "CTavoPageView::", "CTavoScrollBar::",
                                "CTavoMagnifyingGlass::", "CTavoKateInput::", "CTavoDbTable::"})
            QVERIFY2(!gui.filter(api).isEmpty(), api);
    }

    void linkLineWithoutWebKitOrDBus()
    {
        // WebKit and D-Bus are the library's own business: neither the package
        // files nor pkg-config hand them to a host.
        QFile targets(m_libDir + "/cmake/TGUILib/TGUILibTargets.cmake");
        QVERIFY(targets.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(targets.readAll());
        const Run libs = run("pkg-config", {"--libs", "--cflags", "TGUILib"}, m_env);
        QVERIFY2(libs.exitCode == 0, qPrintable(libs.output));
        for (const QString& what : {text, libs.output}) {
            QVERIFY2(!what.contains("WebKit", Qt::CaseInsensitive), qPrintable(what));
            QVERIFY2(!what.contains("DBus", Qt::CaseInsensitive), qPrintable(what));
        }
    }

    void everyInstalledHeaderCompiles()
    {
        // One unit that includes each installed header, checked by the compiler
        // with pkg-config's flags alone: nothing may need a header that stayed home.
        QString unit;
        QDirIterator it(m_prefix + "/include/TGUILib", {"*.h"}, QDir::Files, QDirIterator::Subdirectories);
        int count = 0;
        while (it.hasNext()) {
            unit += "#include \"" + it.next() + "\"\n";
            ++count;
        }
        QVERIFY(count > 60);
        QFile file(m_dir.filePath("all-headers.cpp"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(unit.toUtf8());
        file.close();
        const Run cflags = run("pkg-config", {"--cflags", "TGUILib"}, m_env);
        QVERIFY2(cflags.exitCode == 0, qPrintable(cflags.output));
        const Run compile = run(TGUI_CXX_COMPILER,
                                QStringList{"-std=c++17", "-fPIC", "-fsyntax-only", file.fileName()}
                                    + cflags.output.trimmed().split(' ', Qt::SkipEmptyParts),
                                m_env);
        QVERIFY2(compile.exitCode == 0, qPrintable(compile.output));
    }

    void hostBuiltWithFindPackage()
    {
        const QString build = m_dir.filePath("host-cmake");
        const QString cxxFlags = QString::fromLatin1(TGUI_HOST_CXX_FLAGS);
        const QString linkFlags = QString::fromLatin1(TGUI_HOST_LINK_FLAGS);
        QStringList args = {"-S", kSource + "/examples/host", "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                            "-DCMAKE_PREFIX_PATH=" + m_prefix, "-DCMAKE_CXX_COMPILER=" TGUI_CXX_COMPILER,
                            "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache", "-DCMAKE_CXX_FLAGS=" + cxxFlags,
                            "-DCMAKE_EXE_LINKER_FLAGS=" + linkFlags};
#if TGUI_CROSSCOMPILING
        // The tree's own toolchain; the package search is re-rooted in the
        // sysroot, where the prefix lies.
        args << "-DCMAKE_TOOLCHAIN_FILE=" TGUI_TOOLCHAIN_FILE << "-DTGUI_ARMHF_SYSROOT=" TGUI_SYSROOT
             << "-DCMAKE_PREFIX_PATH=" + m_prefix.mid(int(std::strlen(TGUI_SYSROOT)));
#endif
        const Run configure = run(TGUI_CMAKE_COMMAND, args, m_env);
        QVERIFY2(configure.exitCode == 0, qPrintable(configure.output));
        const Run compile = run(TGUI_CMAKE_COMMAND, {"--build", build, "-j", "2"}, m_env);
        QVERIFY2(compile.exitCode == 0, qPrintable(compile.output));
        playScenario(build + "/tgui-host", "cmake");
    }

    void hostBuiltWithPkgConfig()
    {
        const QString build = m_dir.filePath("host-pc");
        QProcessEnvironment env = m_env;
        env.insert("CXX", "ccache " TGUI_CXX_COMPILER);
        env.insert("CXXFLAGS", TGUI_HOST_CXX_FLAGS);
        // Without CMake nothing records where the library lies: the run path does.
        env.insert("LDFLAGS", QString(TGUI_HOST_LINK_FLAGS) + " -Wl,-rpath," + m_libDir);
#if TGUI_CROSSCOMPILING
        // Qt's files come from the sysroot with its prefix; the install lies in
        // the sysroot too, so pkg-config leaves its paths as they are.
        env.insert("CXX", "ccache " TGUI_CXX_COMPILER " --sysroot=" TGUI_SYSROOT);
        env.insert("LDFLAGS", QString(TGUI_HOST_LINK_FLAGS) + " -Wl,-rpath," + m_libDir + " -Wl,-rpath-link," + m_libDir);
        env.insert("MOC", TGUI_HOST_MOC);
        env.insert("PKG_CONFIG_SYSROOT_DIR", TGUI_SYSROOT);
        env.insert("PKG_CONFIG_LIBDIR", TGUI_SYSROOT "/usr/lib/arm-linux-gnueabihf/pkgconfig:" TGUI_SYSROOT
                                        "/usr/share/pkgconfig");
#endif
        const Run compile = run("sh", {kSource + "/examples/host/build-with-pkg-config.sh", build}, env);
        QVERIFY2(compile.exitCode == 0, qPrintable(compile.output));
        playScenario(build + "/tgui-host", "pkgconfig");
    }
};

QTEST_GUILESS_MAIN(TestInstall)
#include "tst_install.moc"
