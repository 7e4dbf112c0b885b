// Core link throughput and latency: frames per second and the median time from
// a peer's write to the manager's handleTXmlMsg on the GUI thread, for 64-byte
// and 4 KiB frames, next to a bare QTcpSocket reader on the GUI thread that
// only cuts frames. The peer writes from a thread of its own over loopback.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutMgr.h"

namespace {
qint64 nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// Payload of exactly `size` bytes: a TXML event whose data carries the write time.
QByteArray payloadTemplate(int size)
{
    const QByteArray head = "<TXML><Event uri=\"Gui:B\">t=";
    const QByteArray stamp(19, '0');
    const QByteArray mid = ";p=";
    const QByteArray tail = "</Event></TXML>";
    const int pad = size - (head.size() + stamp.size() + mid.size() + tail.size());
    return head + stamp + mid + QByteArray(qMax(0, pad), 'x') + tail;
}
const int kStampAt = 27;  // offset of the 19 digits in the payload

void stamp(char* payload)
{
    char digits[20];
    std::snprintf(digits, sizeof digits, "%019lld", static_cast<long long>(nowNs()));
    std::memcpy(payload + kStampAt, digits, 19);
}

qint64 stampOf(const QByteArray& payload)
{
    if (payload.size() < kStampAt + 19)
        return 0;
    return QByteArray(payload.constData() + kStampAt, 19).toLongLong();
}

// What a receiver records, on the GUI thread.
struct Samples {
    std::atomic<int> handled{0};
    std::atomic<qint64> burstStartNs{0};  // set by the peer before its first write
    std::vector<qint64> latencies;
    int burstCount = 0;
    qint64 burstEndNs = 0;
    void take(const QByteArray& payload)
    {
        const qint64 t = nowNs();
        latencies.push_back(t - stampOf(payload));
        if (int(latencies.size()) == burstCount)
            burstEndNs = t;
        handled.fetch_add(1, std::memory_order_release);
    }
};

// The writing peer: a blocking POSIX socket on a thread of its own.
class Peer
{
public:
    Peer()
    {
        m_listen = ::socket(AF_INET, SOCK_STREAM, 0);
        int one = 1;
        ::setsockopt(m_listen, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
        sockaddr_in addr{};
        addr.sin_family = AF_INET;
        addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(m_listen, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
        ::listen(m_listen, 1);
        socklen_t len = sizeof addr;
        ::getsockname(m_listen, reinterpret_cast<sockaddr*>(&addr), &len);
        port = ntohs(addr.sin_port);
    }
    ~Peer()
    {
        if (m_thread.joinable())
            m_thread.join();
        if (m_fd >= 0)
            ::close(m_fd);
        ::close(m_listen);
    }

    // Phase 1 writes `count` frames back to back; phase 2 writes `pings` frames,
    // each after the previous one was handled.
    void run(int payloadSize, int count, int pings, bool registration, Samples* samples)
    {
        m_thread = std::thread([=] {
            m_fd = ::accept(m_listen, nullptr, nullptr);
            if (registration) {
                char reg[16 + 7];
                readAll(reg, sizeof reg);
            }
            QByteArray frame = QByteArray(16, 0) + payloadTemplate(payloadSize);
            GuiAppsMsgHdrT hdr;
            appDefsAssembleHdr(hdr, GuiAppsTavoapp, GuiAppsZedagui, payloadSize, GuiAppsMsgTxml);
            std::memcpy(frame.data(), &hdr, 16);
            samples->burstStartNs.store(nowNs());
            for (int i = 0; i < count; ++i) {
                stamp(frame.data() + 16);
                writeAll(frame.constData(), frame.size());
            }
            while (samples->handled.load(std::memory_order_acquire) < count)
                std::this_thread::yield();
            for (int i = 0; i < pings; ++i) {
                stamp(frame.data() + 16);
                writeAll(frame.constData(), frame.size());
                while (samples->handled.load(std::memory_order_acquire) < count + i + 1)
                    std::this_thread::yield();
            }
        });
    }
    quint16 port = 0;

private:
    void writeAll(const char* data, int size)
    {
        while (size > 0) {
            const ssize_t n = ::write(m_fd, data, size_t(size));
            if (n <= 0)
                return;
            data += n;
            size -= int(n);
        }
    }
    void readAll(char* data, size_t size)
    {
        while (size > 0) {
            const ssize_t n = ::read(m_fd, data, size);
            if (n <= 0)
                return;
            data += n;
            size -= size_t(n);
        }
    }
    int m_listen = -1;
    int m_fd = -1;
    std::thread m_thread;
};

class BenchMgr : public CTavoLayoutMgr
{
public:
    Samples* samples = nullptr;
    void handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type) override
    {
        samples->take(data);
        CTavoLayoutMgr::handleTXmlMsg(data, source, type);
    }
};

// The alternative: a socket on the GUI thread that only cuts frames.
class BareReader : public QObject
{
public:
    BareReader(quint16 port, Samples* samples) : m_samples(samples)
    {
        connect(&m_socket, &QIODevice::readyRead, this, [this] { read(); });
        m_socket.connectToHost(QHostAddress::LocalHost, port);
    }

private:
    void read()
    {
        for (;;) {
            if (m_expected < 0) {
                if (m_socket.bytesAvailable() < 16)
                    return;
                GuiAppsMsgHdrT hdr;
                m_socket.read(reinterpret_cast<char*>(&hdr), 16);
                m_expected = hdr.length;
            }
            if (m_socket.bytesAvailable() < m_expected)
                return;
            m_samples->take(m_socket.read(m_expected));
            m_expected = -1;
        }
    }
    QTcpSocket m_socket;
    Samples* m_samples;
    int m_expected = -1;
};

struct Result {
    double framesPerSecond;
    double medianUs;
};

// Waits for the pings and takes the median of their latencies.
Result measure(Samples& s, int count, int pings)
{
    QElapsedTimer guard;
    guard.start();
    while (s.handled.load() < count + pings && guard.elapsed() < 120000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    Result r{0, 0};
    if (s.handled.load() < count + pings)
        return r;
    std::vector<qint64> pingLat(s.latencies.begin() + count, s.latencies.end());
    std::sort(pingLat.begin(), pingLat.end());
    r.medianUs = pingLat.empty() ? 0 : pingLat[pingLat.size() / 2] / 1000.0;
    return r;
}
}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("zedagui"));
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    QTemporaryDir dir;
    QDir(dir.path()).mkpath("Skins");
    const QString home = QDir::currentPath();
    QDir::setCurrent(dir.path());

    std::printf("%-8s %-26s %14s %16s\n", "frame", "reader", "frames/s", "median latency");
    const int sizes[] = {64, 4096};
    for (int size : sizes) {
        const int count = size <= 64 ? 100000 : 30000;
        const int pings = 2000;
        Result results[2];
        for (int which = 0; which < 2; ++which) {
            Peer peer;
            Samples samples;
            samples.latencies.reserve(size_t(count + pings));
            samples.burstCount = count;
            BenchMgr* mgr = nullptr;
            std::unique_ptr<BareReader> bare;
            if (which == 0) {
                QFile qt("qt.conf");
                qt.open(QIODevice::WriteOnly);
                qt.write("[Profile]\nActive=bench\n");
                qt.close();
                QFile conf("Skins/bench.conf");
                conf.open(QIODevice::WriteOnly);
                conf.write("[zedagui]\nComServerPort=" + QByteArray::number(peer.port) + "\n");
                conf.close();
                mgr = new BenchMgr;
                mgr->samples = &samples;
            } else {
                bare.reset(new BareReader(peer.port, &samples));
            }
            peer.run(size, count, pings, which == 0, &samples);
            // Wait for the burst to be handled, then for the pings.
            QElapsedTimer guard;
            guard.start();
            while (samples.handled.load() < count && guard.elapsed() < 120000)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            results[which] = measure(samples, count, pings);
            const qint64 burstNs = samples.burstEndNs - samples.burstStartNs.load();
            results[which].framesPerSecond = burstNs > 0 ? count * 1e9 / double(burstNs) : 0;
            if (mgr) {
                CTavoCoreCommunicator* com = mgr->coreCom();
                delete mgr;
                com->shutDown();
                delete com;
            }
            std::printf("%-8s %-26s %14.0f %13.1f us\n", size <= 64 ? "64 B" : "4 KiB",
                        which == 0 ? "CTavoLayoutMgr (full path)" : "bare QTcpSocket reader",
                        results[which].framesPerSecond, results[which].medianUs);
            std::fflush(stdout);
        }
        std::printf("%-8s %-26s %14.2f %13.2f x\n", "", "ratio manager / bare",
                    results[0].framesPerSecond / qMax(1.0, results[1].framesPerSecond),
                    results[0].medianUs / qMax(0.001, results[1].medianUs));
    }
    QDir::setCurrent(home);
    return 0;
}
